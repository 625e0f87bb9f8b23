#pragma once

// Real fingerprint records, which the project does not ship. Tests that want them find them through
// the environment and skip without it.

#include <cstdint>
#include <filesystem>
#include <vector>

namespace orl::test {

// All *.fmr files below the folder that the environment variable ORL_RECORDS names, in path order;
// none when it is not set.
std::vector<std::filesystem::path> RealRecordFiles();

// The bytes of a file. Throws: std::runtime_error naming the file when it cannot be read.
std::vector<std::uint8_t> ReadWholeFile(const std::filesystem::path& path);

}  // namespace orl::test
