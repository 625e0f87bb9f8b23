#pragma once

// Sets or unsets an environment variable of this process for as long as the object lives. Not for
// use while other threads read the environment.

#include <optional>
#include <string>

namespace orl::test {

class EnvironmentVariable {
  public:
    // `value` is UTF-8; none unsets the variable.
    EnvironmentVariable(std::string name, const std::optional<std::string>& value);
    ~EnvironmentVariable();
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

  private:
    std::string name_;
    std::optional<std::string> former_;
};

}  // namespace orl::test
