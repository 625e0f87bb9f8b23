#pragma once

// The lines of a text file that a command is given, one after the other.

#include <fstream>
#include <istream>
#include <string>

namespace orl::tools {

class TextLines {
  public:
    // More than any list's line needs; files without line ends are not read whole.
    static constexpr std::size_t kMaxLineBytes = 65536;

    // Opens the file of that name (UTF-8), or standard input for "-". A failure is told by the
    // first next().
    explicit TextLines(const std::string& name);

    // The next line without its end, "\n" or "\r\n". False at the end of the file, and where a
    // failure ends the reading.
    bool next(std::string& line);

    // The number of the last line, from 1.
    std::size_t number() const { return number_; }

    // Why reading ended before the end of the file; empty when it did not.
    const std::string& failure() const { return failure_; }

    // The file's name for messages.
    const std::string& name() const { return name_; }

  private:
    std::istream& stream();
    bool endedWithFailure();
    bool fail(const std::string& reason);

    std::string name_;
    bool isStandardInput_;
    std::ifstream file_;
    std::size_t number_ = 0;
    std::string failure_;
};

}  // namespace orl::tools
