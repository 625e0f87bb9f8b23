#include "tests/answers/answer_comparison.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orl::test {
namespace {

void NoteDifference(AnswerComparison& comparison,
                    const std::string& first,
                    const std::string& second) {
    if (comparison.firstDifference.empty()) {
        comparison.firstDifference = "  first  " + first + "\n  second " + second + "\n";
    }
}

bool AreNear(float first, float second) {
    return ShareOfDifference(first, second) <= kFractionTolerance;
}

// Returns whether all fractions are near enough.
bool CompareFractions(AnswerComparison& comparison, const Answer& first, const Answer& second) {
    const std::vector<float> a = FractionsOf(first);
    const std::vector<float> b = FractionsOf(second);
    bool near = true;
    for (std::size_t i = 0; i < kFractions; ++i) {
        const double share = ShareOfDifference(a[i], b[i]);
        const bool tooFar = share > kFractionTolerance;
        comparison.fractionsUnequal += share > 0 ? 1 : 0;
        comparison.fractionsTooFar += tooFar ? 1 : 0;
        comparison.greatestDifference = std::max(comparison.greatestDifference, share);
        near = near && !tooFar;
    }
    return near;
}

void CompareLines(AnswerComparison& comparison,
                  const std::string& firstLine,
                  const std::string& secondLine) {
    const Answer first = AnswerOfLine(firstLine);
    const Answer second = AnswerOfLine(secondLine);
    const bool isTie = IsTie(first, second);
    comparison.ties += isTie ? 1 : 0;
    comparison.fractionsUnequal += isTie ? 1 : 0;
    const bool near = isTie || CompareFractions(comparison, first, second);
    const bool equal = WholeTextOf(first) == WholeTextOf(second);
    comparison.wholeDifferences += equal ? 0 : 1;
    if (!near || !equal) {
        NoteDifference(comparison, firstLine, secondLine);
    }
    comparison.digest.Add(second);
}

}  // namespace

bool IsTie(const Answer& first, const Answer& second) {
    const matcher::TemplateMatchResult& a = first.result;
    const matcher::TemplateMatchResult& b = second.result;
    return a.refined != 0 && b.refined != 0 && a.rotationDegrees != b.rotationDegrees &&
           a.matchedCount == b.matchedCount && AreNear(a.matchedRatio, b.matchedRatio) &&
           AreNear(a.coverage, b.coverage) && AreNear(a.distanceMedian, b.distanceMedian);
}

double ShareOfDifference(float first, float second) {
    if (first == second) {
        return 0;
    }
    const double a = first;
    const double b = second;
    const double share = std::abs(a - b) / std::max(std::abs(a), std::abs(b));
    return std::isnan(share) ? std::numeric_limits<double>::infinity() : share;
}

AnswerComparison CompareAnswers(std::istream& first, std::istream& second) {
    AnswerComparison comparison;
    std::string firstLine;
    std::string secondLine;
    bool more = true;
    while (more) {
        const bool hasFirst = static_cast<bool>(std::getline(first, firstLine));
        const bool hasSecond = static_cast<bool>(std::getline(second, secondLine));
        more = hasFirst || hasSecond;
        if (hasFirst && hasSecond) {
            CompareLines(comparison, firstLine, secondLine);
        } else if (more) {
            ++comparison.wholeDifferences;
            NoteDifference(
                comparison, hasFirst ? firstLine : "ended", hasSecond ? secondLine : "ended");
        }
    }
    if (comparison.digest.Answers() == 0) {
        ++comparison.wholeDifferences;
        NoteDifference(comparison, "no answer", "no answer");
    }
    return comparison;
}

}  // namespace orl::test
