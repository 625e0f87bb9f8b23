#include "matcher/matching/alignment.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <vector>

#include "matcher/features/angles.h"
#include "matcher/features/lookup_tables.h"

namespace orl::matcher {
namespace {

constexpr float kMaxResidualSquaredGridUnits = 324.0F;   // 18 grid units; the limit itself agrees
constexpr int kAnchorDirectionRejectedFromSteps = 44;    // axial, after the rotation
constexpr int kRelativeDirectionRejectedFromSteps = 36;  // against the anchor's direction
constexpr int kHalfTurnSteps = 128;                      // 256-step turn
constexpr float kDegreesPerStep = 1.40625F;              // 360 / 256
constexpr float kStepsPerDegree = 0.7111111F;            // 256 / 360
constexpr std::size_t kRefinedHypotheses = 10;
constexpr int kRefineReachDegrees = 24;
constexpr int kRefineStepDegrees = 2;

// A rotation reduced to 0..255, negative ones included: -10 gives 246.
std::uint8_t reducedTurn(int steps) {
    return static_cast<std::uint8_t>(steps);
}

// Bounding box of grid positions.
struct Box {
    float minX;
    float maxX;
    float minY;
    float maxY;

    explicit Box(const TriangleVertex& vertex)
        : minX(vertex.x), maxX(vertex.x), minY(vertex.y), maxY(vertex.y) {}

    void extend(const TriangleVertex& vertex) {
        minX = std::min(minX, static_cast<float>(vertex.x));
        maxX = std::max(maxX, static_cast<float>(vertex.x));
        minY = std::min(minY, static_cast<float>(vertex.y));
        maxY = std::max(maxY, static_cast<float>(vertex.y));
    }

    // In grid units squared; a single position covers 1.
    float area() const {
        return std::max(maxX - minX + 1.0F, 1.0F) * std::max(maxY - minY + 1.0F, 1.0F);
    }
};

// The anchor pair with the rotation about it, ready for the tests of the other pairs.
struct Alignment {
    MinutiaPair anchor;
    std::int16_t rotation = 0;
    float cosR = 1.0F;
    float sinR = 0.0F;
};

// Squared distance between a pair's second vertex and where the alignment puts its first one.
float squaredResidual(const Alignment& alignment, const MinutiaPair& pair) {
    const TriangleVertex& from = alignment.anchor.first;
    const TriangleVertex& onto = alignment.anchor.second;
    const auto dx = static_cast<float>(pair.first.x - from.x);
    const auto dy = static_cast<float>(pair.first.y - from.y);
    const float x = (static_cast<float>(onto.x) + dx * alignment.cosR) - dy * alignment.sinR;
    const float y = (static_cast<float>(onto.y) + dx * alignment.sinR) + dy * alignment.cosR;
    const float errorX = x - static_cast<float>(pair.second.x);
    const float errorY = y - static_cast<float>(pair.second.y);
    return errorX * errorX + errorY * errorY;
}

// Angle between the pair's directions, as undirected lines, once the first one is turned; steps.
int directionResidual(const Alignment& alignment, const MinutiaPair& pair) {
    const std::uint8_t expected = reducedTurn(pair.first.angle + alignment.rotation);
    return AxialDifference(pair.second.angle, expected);
}

// Difference between the two fingers' turns from the anchor's direction to the pair's; steps.
int relativeDirectionResidual(const Alignment& alignment, const MinutiaPair& pair) {
    const std::int16_t first = ForwardDifference(alignment.anchor.first.angle, pair.first.angle);
    const std::int16_t second = ForwardDifference(alignment.anchor.second.angle, pair.second.angle);
    return CircularDifference(first, second);
}

// Rank n/2 of the values in ascending order; of an even number the mean with the one below it.
float median(std::vector<float> values) {
    if (values.empty()) {
        return 0.0F;
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 != 0) {
        return *middle;
    }
    return (*std::max_element(values.begin(), middle) + *middle) * 0.5F;
}

float coverageOf(const Box& agreeing, float referenceArea) {
    return referenceArea > 0.0F ? std::clamp(agreeing.area() / referenceArea, 0.0F, 1.0F) : 0.0F;
}

// The agreeing pairs of one alignment, as far as statistics need them.
class AgreementStatistics {
  public:
    explicit AgreementStatistics(const MinutiaPair& anchor)
        : firstBox_(anchor.first), secondBox_(anchor.second) {}

    void add(const MinutiaPair& pair, float squaredDistance, int directionSteps) {
        distances_.push_back(std::sqrt(squaredDistance));
        angles_.push_back(static_cast<float>(directionSteps) * kDegreesPerStep);
        firstBox_.extend(pair.first);
        secondBox_.extend(pair.second);
    }

    // Completes `evaluation`, whose count is final.
    void writeTo(AlignmentEvaluation& evaluation, const AlignmentReference& reference) const {
        const float firstCoverage = coverageOf(firstBox_, reference.firstArea);
        const float secondCoverage = coverageOf(secondBox_, reference.secondArea);
        const std::uint64_t smallerCount = std::max<std::uint64_t>(
            std::min(reference.firstMinutiaCount, reference.secondMinutiaCount), 1);
        const float ratio = static_cast<float>(evaluation.count) / static_cast<float>(smallerCount);
        evaluation.coverage = (firstCoverage + secondCoverage) * 0.5F;
        evaluation.distanceMedian = median(distances_);
        evaluation.angleMedian = median(angles_);
        evaluation.matchedRatio = std::clamp(ratio, 0.0F, 1.0F);
    }

  private:
    Box firstBox_;
    Box secondBox_;
    std::vector<float> distances_;  // grid units
    std::vector<float> angles_;     // degrees
};

void measureReferenceAreas(MatchContext& context) {
    Box firstBox(context.minutiaPairs.front().first);
    Box secondBox(context.minutiaPairs.front().second);
    for (const MinutiaPair& pair : context.minutiaPairs) {
        firstBox.extend(pair.first);
        secondBox.extend(pair.second);
    }
    context.reference.firstArea = firstBox.area();
    context.reference.secondArea = secondBox.area();
}

void addHypothesis(MatchContext& context, std::uint32_t anchor, std::int16_t rotation) {
    const AlignmentEvaluation evaluation = evaluateAlignment(
        context.minutiaPairs, anchor, rotation, context.reference, EvaluationDepth::kCountOnly);
    context.hypotheses.push_back({evaluation.count, anchor, rotation});
}

bool isBetterEvaluation(const AlignmentEvaluation& challenger, const AlignmentEvaluation& best) {
    if (challenger.count != best.count) {
        return challenger.count > best.count;
    }
    if (challenger.matchedRatio != best.matchedRatio) {
        return challenger.matchedRatio > best.matchedRatio;
    }
    if (challenger.coverage != best.coverage) {
        return challenger.coverage > best.coverage;
    }
    if (challenger.distanceMedian != best.distanceMedian) {
        return challenger.distanceMedian < best.distanceMedian;
    }
    return challenger.angleMedian < best.angleMedian;
}

}  // namespace

AlignmentEvaluation evaluateAlignment(std::span<const MinutiaPair> pairs,
                                      std::uint32_t anchor,
                                      std::int16_t rotation,
                                      const AlignmentReference& reference,
                                      EvaluationDepth depth) {
    assert(anchor < pairs.size());
    const Alignment alignment{pairs[anchor], rotation, Cos(rotation), Sin(rotation)};
    const bool withStatistics = depth == EvaluationDepth::kWithStatistics;
    AgreementStatistics statistics(pairs[anchor]);
    AlignmentEvaluation evaluation{.count = 1, .anchor = anchor, .rotation = rotation};
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        if (i == anchor) {
            continue;
        }
        const float squaredDistance = squaredResidual(alignment, pairs[i]);
        if (squaredDistance > kMaxResidualSquaredGridUnits) {
            continue;
        }
        const int directionSteps = directionResidual(alignment, pairs[i]);
        if (directionSteps >= kAnchorDirectionRejectedFromSteps ||
            relativeDirectionResidual(alignment, pairs[i]) >= kRelativeDirectionRejectedFromSteps) {
            continue;
        }
        ++evaluation.count;
        if (withStatistics) {
            statistics.add(pairs[i], squaredDistance, directionSteps);
        }
    }
    if (withStatistics) {
        statistics.writeTo(evaluation, reference);
    }
    return evaluation;
}

AlignmentEvaluation findBestAlignment(MatchContext& context) {
    assert(!context.minutiaPairs.empty());
    measureReferenceAreas(context);
    context.hypotheses.clear();
    context.hypotheses.reserve(context.minutiaPairs.size() * 2);
    for (std::uint32_t anchor = 0; anchor < context.minutiaPairs.size(); ++anchor) {
        const MinutiaPair& pair = context.minutiaPairs[anchor];
        // Deliberate: a negative rotation stays negative. The tables hold other values for it than
        // for its reduced form, as they have 255 steps a turn.
        const int rotation = pair.second.angle - pair.first.angle;
        addHypothesis(context, anchor, static_cast<std::int16_t>(rotation));
        addHypothesis(context, anchor, reducedTurn(rotation + kHalfTurnSteps));
    }
    std::stable_sort(context.hypotheses.begin(),
                     context.hypotheses.end(),
                     [](const AlignmentHypothesis& left, const AlignmentHypothesis& right) {
                         return left.count > right.count;
                     });
    const AlignmentHypothesis& best = context.hypotheses.front();
    const auto depth = best.count < kMinAgreeingPairs ? EvaluationDepth::kCountOnly
                                                      : EvaluationDepth::kWithStatistics;
    return evaluateAlignment(
        context.minutiaPairs, best.anchor, best.rotation, context.reference, depth);
}

void refineAlignment(const MatchContext& context, AlignmentEvaluation& best) {
    const std::size_t tried = std::min(kRefinedHypotheses, context.hypotheses.size());
    for (std::size_t i = 0; i < tried; ++i) {
        const AlignmentHypothesis& hypothesis = context.hypotheses[i];
        for (int degrees = -kRefineReachDegrees; degrees <= kRefineReachDegrees;
             degrees += kRefineStepDegrees) {
            const long delta = std::lroundf(static_cast<float>(degrees) * kStepsPerDegree);
            const std::uint8_t rotation =
                reducedTurn(hypothesis.rotation + static_cast<int>(delta));
            const AlignmentEvaluation challenger =
                evaluateAlignment(context.minutiaPairs,
                                  hypothesis.anchor,
                                  rotation,
                                  context.reference,
                                  EvaluationDepth::kWithStatistics);
            if (isBetterEvaluation(challenger, best)) {
                best = challenger;
            }
        }
    }
}

}  // namespace orl::matcher
