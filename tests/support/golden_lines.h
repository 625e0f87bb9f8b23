#pragma once

// Lines of JSON that a program says, against lines kept in a golden file.

#include <string>
#include <vector>

namespace orl::test {

// Whether two lines of JSON say the same: fractional numbers to within 1e-5 of their size, all else
// equal. Cosine and sine tables hold what the platform's library gives, which differs in the last
// bit of a few entries, and the fractions with it.
// Throws: an exception of the JSON library for a line that is not JSON.
bool LinesAgree(const std::string& said, const std::string& kept);

// What tells the lines from the golden file's; empty when nothing does. On Linux, where the golden
// files were written, lines are the same when all bytes are, on Windows when they agree.
// Throws: std::runtime_error when the file cannot be read.
std::string DifferencesFromGolden(const std::vector<std::string>& said,
                                  const std::string& goldenFile);

}  // namespace orl::test
