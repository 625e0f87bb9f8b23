// What the matcher answers to some 40,000 pairs of records, against the digests kept in
// tests/golden. A change in any figure shows here, and the records' own digests tell whether the
// pairs have moved or the answers. tests/golden/rewrite.sh writes the lines anew when it is meant.

#include <gtest/gtest.h>

#include "tests/answers/answer_digest.h"
#include "tests/answers/record_pairs.h"
#include "tests/support/golden_lines.h"

namespace orl::test {
namespace {

TEST(AnswersGolden, AnswersToGeneratedAndHostilePairsAreAsKept) {
    std::vector<std::string> lines = DigestLines(GeneratedPairs());
    const std::vector<std::string> hostile = DigestLines(HostilePairs());
    lines.insert(lines.end(), hostile.begin(), hostile.end());
    EXPECT_EQ(DifferencesFromGolden(lines, "tests/golden/answers.jsonl"), "");
}

}  // namespace
}  // namespace orl::test
