#pragma once

// A new, empty folder for one test's files, removed with everything in it at the object's end.

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace orl::test {

class ScratchFolder {
  public:
    // Throws: std::filesystem::filesystem_error when no folder can be made.
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    // The path, in UTF-8, that a file of that name (UTF-8) has in the folder.
    std::string PathOf(const std::string& name) const;

    // Writes a file and returns its path in UTF-8. Throws: std::runtime_error.
    std::string Write(const std::string& name, std::span<const std::uint8_t> bytes) const;

  private:
    std::filesystem::path folder_;
};

}  // namespace orl::test
