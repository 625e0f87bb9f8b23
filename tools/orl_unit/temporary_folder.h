#pragma once

// A new folder among the system's temporary files, readable by its owner only; removed at the end.

#include <filesystem>

namespace orl::unit {

class TemporaryFolder {
  public:
    // Throws CommandError when it cannot be made.
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

}  // namespace orl::unit
