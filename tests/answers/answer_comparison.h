#pragma once

// Two builds' answers to the same pairs, held against each other.

#include <cstddef>
#include <istream>
#include <string>

#include "tests/answers/answer_digest.h"

namespace orl::test {

// Fractions may differ by this share of their size: the cosine and sine tables hold what the
// platform's library gives, which differs in the last bit of a few entries.
inline constexpr double kFractionTolerance = 1e-5;

struct AnswerComparison {
    AnswerDigest digest;               // of the second build's answers
    std::size_t wholeDifferences = 0;  // answers that differ in anything but fractions
    std::size_t fractionsTooFar = 0;   // fractions that differ by more than the tolerance
    std::size_t fractionsUnequal = 0;  // fractions that differ at all
    double greatestDifference = 0;     // of two fractions, as a share of their size; not of ties
    std::size_t ties = 0;              // see IsTie
    std::string firstDifference;       // the two lines of the first pair that is not the same

    bool Same() const { return wholeDifferences == 0 && fractionsTooFar == 0; }
    bool SameBits() const { return wholeDifferences == 0 && fractionsUnequal == 0; }
};

// Reads lines of answers (answer.h) from both until both end. An answer that one lacks is a
// difference, and so is an empty set of answers.
// Throws: std::runtime_error for a line that is no answer.
AnswerComparison CompareAnswers(std::istream& first, std::istream& second);

// Whether two answers take two refined alignments that are alike, within the tolerance, in all that
// decides between them before the angle: which one wins hangs on the last bits of the distances.
// Their rotations and angle medians have nothing to do with each other then.
bool IsTie(const Answer& first, const Answer& second);

// The difference of two fractions as a share of the greater one's size; 0 for equal ones, infinite
// where one is not a number.
double ShareOfDifference(float first, float second);

}  // namespace orl::test
