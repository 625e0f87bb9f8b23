#include "matcher/matching/alignment.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "matcher/features/angles.h"
#include "matcher/features/lookup_tables.h"
#include "matcher/matching/scaled_turns.h"

namespace orl::matcher {
namespace {

constexpr float kMaxResidualSquaredGridUnits = 324.0F;   // 18 grid units; the limit itself agrees
constexpr int kAnchorDirectionRejectedFromSteps = 44;    // axial, after the rotation
constexpr int kRelativeDirectionRejectedFromSteps = 36;  // against the anchor's direction
constexpr int kHalfTurnSteps = 128;                      // 256-step turn
constexpr float kDegreesPerStep = 1.40625F;              // 360 / 256
constexpr float kStepsPerDegree = 0.7111111F;            // 256 / 360
constexpr int kRefineReachDegrees = 24;
constexpr int kRefineStepDegrees = 2;
constexpr std::size_t kHypothesesPerPair = 2;

// A rotation reduced to 0..255, negative ones included: -10 gives 246.
std::uint8_t reducedTurn(int steps) {
    return static_cast<std::uint8_t>(steps);
}

// Bounding box of grid positions.
struct Box {
    int minX;
    int maxX;
    int minY;
    int maxY;

    explicit Box(const TriangleVertex& vertex)
        : minX(vertex.x), maxX(vertex.x), minY(vertex.y), maxY(vertex.y) {}

    void extend(const TriangleVertex& vertex) {
        minX = std::min(minX, int{vertex.x});
        maxX = std::max(maxX, int{vertex.x});
        minY = std::min(minY, int{vertex.y});
        maxY = std::max(maxY, int{vertex.y});
    }

    // In grid units squared; a single position covers 1. At most 65536, so exact as a float.
    float area() const { return static_cast<float>((maxX - minX + 1) * (maxY - minY + 1)); }
};

// The anchor pair with the rotation about it, ready for the tests of the other pairs.
struct Alignment {
    MinutiaPair anchor;
    std::int16_t rotation;
    float cosR;
    float sinR;
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
float median(std::span<float> values) {
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

// The agreeing pairs of one alignment but for its anchor, as far as statistics need them.
struct Agreement {
    Box firstBox;
    Box secondBox;
    std::span<float> distances;  // grid units
    std::span<float> angles;     // degrees
    std::size_t count = 0;

    void add(const MinutiaPair& pair, float squaredDistance, int directionSteps) {
        distances[count] = std::sqrt(squaredDistance);
        angles[count] = static_cast<float>(directionSteps) * kDegreesPerStep;
        ++count;
        firstBox.extend(pair.first);
        secondBox.extend(pair.second);
    }

    // Completes `evaluation`, whose count is final.
    void writeTo(AlignmentEvaluation& evaluation, const AlignmentReference& reference) const {
        const float firstCoverage = coverageOf(firstBox, reference.firstArea);
        const float secondCoverage = coverageOf(secondBox, reference.secondArea);
        const std::uint64_t smallerCount = std::max<std::uint64_t>(
            std::min(reference.firstMinutiaCount, reference.secondMinutiaCount), 1);
        const float ratio = static_cast<float>(evaluation.count) / static_cast<float>(smallerCount);
        evaluation.coverage = (firstCoverage + secondCoverage) * 0.5F;
        evaluation.distanceMedian = median(distances.first(count));
        evaluation.angleMedian = median(angles.first(count));
        evaluation.matchedRatio = std::clamp(ratio, 0.0F, 1.0F);
    }
};

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

// Whether the first comes before the second when counts are ranked, highest first; of equal ones
// the first hypothesis. `order` is the hypothesis's index.
bool ranksBefore(std::int32_t count,
                 std::size_t order,
                 std::int32_t otherCount,
                 std::size_t otherOrder) {
    return count != otherCount ? count > otherCount : order < otherOrder;
}

}  // namespace

AlignmentReference alignmentReference(std::span<const MinutiaPair> pairs,
                                      std::uint64_t firstMinutiaCount,
                                      std::uint64_t secondMinutiaCount) {
    assert(!pairs.empty());
    Box firstBox(pairs.front().first);
    Box secondBox(pairs.front().second);
    for (const MinutiaPair& pair : pairs) {
        firstBox.extend(pair.first);
        secondBox.extend(pair.second);
    }
    return {firstBox.area(), secondBox.area(), firstMinutiaCount, secondMinutiaCount};
}

AlignmentVote::AlignmentVote(std::span<const MinutiaPair> pairs, Scratch& scratch)
    : pairs_(pairs),
      table_(pairs, scratch),
      boundsOf_(fastestAgreementBounds()),
      bounds_(scratch.take<std::uint16_t>(kHypothesesPerPair * pairs.size())),
      distances_(scratch.take<float>(pairs.size())),
      angles_(scratch.take<float>(pairs.size())),
      order_(scratch.take<std::uint32_t>(kHypothesesPerPair * pairs.size())) {
    assert(!pairs.empty());
    const ScaledTurns& turns = ScaledTurns::Table();
    const std::span<BoundTask> tasks = scratch.take<BoundTask>(pairs.size());
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const std::size_t place = table_.placeOf(i);
        tasks[i] = boundTask(place,
                             turns[rotationOf(kHypothesesPerPair * i)],
                             turns[rotationOf(kHypothesesPerPair * i + 1)]);
        anyRotationCountBound_ = std::max(anyRotationCountBound_, std::int32_t{tasks[i].count});
    }
    boundsOf_(table_.positions(), tasks, bounds_);
    countBound_ = *std::max_element(bounds_.begin(), bounds_.end());
}

// The anchor may stand in the second lap of its stretch; the same pair is in both places.
BoundTask AlignmentVote::boundTask(std::size_t place, ScaledTurn turn, ScaledTurn otherTurn) const {
    const PairTable::Stretch alike = table_.alike(place);
    return {static_cast<std::uint16_t>(place), alike.begin, alike.count, {turn, otherTurn}};
}

// Deliberate: a negative first rotation stays negative. The tables hold other values for it than
// for its reduced form, as they have 255 steps a turn.
std::int16_t AlignmentVote::rotationOf(std::size_t hypothesis) const {
    const MinutiaPair& pair = pairs_[hypothesis / kHypothesesPerPair];
    const int rotation = pair.second.angle - pair.first.angle;
    return hypothesis % kHypothesesPerPair == 0 ? static_cast<std::int16_t>(rotation)
                                                : reducedTurn(rotation + kHalfTurnSteps);
}

AlignmentEvaluation AlignmentVote::evaluateAlignment(std::uint32_t anchor,
                                                     std::int16_t rotation,
                                                     const AlignmentReference& reference,
                                                     EvaluationDepth depth) const {
    assert(anchor < pairs_.size());
    const bool withStatistics = depth == EvaluationDepth::kWithStatistics;
    const std::size_t place = table_.placeOf(anchor);
    const Alignment alignment{pairs_[anchor], rotation, Cos(rotation), Sin(rotation)};
    Agreement agreement{
        Box(alignment.anchor.first), Box(alignment.anchor.second), distances_, angles_};
    AlignmentEvaluation evaluation{.count = 1, .anchor = anchor, .rotation = rotation};
    const PairTable::Stretch alike = table_.alike(place);
    for (std::size_t i = alike.begin; i < alike.begin + alike.count; ++i) {
        const MinutiaPair& pair = table_.at(i);
        const float squaredDistance = squaredResidual(alignment, pair);
        if (squaredDistance > kMaxResidualSquaredGridUnits || i == place ||
            i == place + table_.size()) {
            continue;
        }
        const int directionSteps = directionResidual(alignment, pair);
        if (directionSteps >= kAnchorDirectionRejectedFromSteps ||
            relativeDirectionResidual(alignment, pair) >= kRelativeDirectionRejectedFromSteps) {
            continue;
        }
        ++evaluation.count;
        if (withStatistics) {
            agreement.add(pair, squaredDistance, directionSteps);
        }
    }
    if (withStatistics) {
        agreement.writeTo(evaluation, reference);
    }
    return evaluation;
}

AlignmentHypothesis AlignmentVote::counted(std::size_t hypothesis) const {
    const auto anchor = static_cast<std::uint32_t>(hypothesis / kHypothesesPerPair);
    const std::int16_t rotation = rotationOf(hypothesis);
    return {evaluateAlignment(anchor, rotation, {}, EvaluationDepth::kCountOnly).count,
            anchor,
            rotation};
}

AlignmentHypothesis AlignmentVote::findBestAlignment() const {
    // The most promising one sets the mark for the others.
    auto bestIndex = static_cast<std::size_t>(std::max_element(bounds_.begin(), bounds_.end()) -
                                              bounds_.begin());
    AlignmentHypothesis best = counted(bestIndex);
    for (std::size_t hypothesis = 0; hypothesis < bounds_.size(); ++hypothesis) {
        if (hypothesis == bestIndex ||
            !ranksBefore(bounds_[hypothesis], hypothesis, best.count, bestIndex)) {
            continue;
        }
        const AlignmentHypothesis challenger = counted(hypothesis);
        if (ranksBefore(challenger.count, hypothesis, best.count, bestIndex)) {
            best = challenger;
            bestIndex = hypothesis;
        }
    }
    return best;
}

AlignmentVote::Ranking AlignmentVote::rankHypotheses() const {
    // By bound, highest first: once no bound reaches the tenth best count, nothing can change.
    for (std::size_t hypothesis = 0; hypothesis < bounds_.size(); ++hypothesis) {
        order_[hypothesis] = static_cast<std::uint32_t>(hypothesis);
    }
    std::sort(order_.begin(), order_.end(), [this](std::uint32_t left, std::uint32_t right) {
        return ranksBefore(bounds_[left], left, bounds_[right], right);
    });
    Ranking ranking;
    std::array<std::size_t, kRefinedHypotheses> indices{};
    for (const std::uint32_t hypothesis : order_) {
        const bool isFull = ranking.size == kRefinedHypotheses;
        if (isFull && bounds_[hypothesis] < ranking.hypotheses.back().count) {
            break;
        }
        const AlignmentHypothesis challenger = counted(hypothesis);
        std::size_t place = ranking.size;
        while (place > 0 && ranksBefore(challenger.count,
                                        hypothesis,
                                        ranking.hypotheses[place - 1].count,
                                        indices[place - 1])) {
            --place;
        }
        if (place == kRefinedHypotheses) {
            continue;
        }
        ranking.size = isFull ? ranking.size : ranking.size + 1;
        for (std::size_t i = ranking.size - 1; i > place; --i) {
            ranking.hypotheses[i] = ranking.hypotheses[i - 1];
            indices[i] = indices[i - 1];
        }
        ranking.hypotheses[place] = challenger;
        indices[place] = hypothesis;
    }
    return ranking;
}

void AlignmentVote::refineAlignment(AlignmentEvaluation& best,
                                    const AlignmentReference& reference) const {
    const Ranking ranking = rankHypotheses();
    for (std::size_t i = 0; i < ranking.size; ++i) {
        const AlignmentHypothesis& hypothesis = ranking.hypotheses[i];
        const RefinedRotations rotations = refinedRotations(hypothesis.rotation);
        const auto bounds = boundsOfRotations(table_.placeOf(hypothesis.anchor), rotations);
        for (std::size_t step = 0; step < rotations.size(); ++step) {
            if (std::int32_t{bounds[step]} < best.count) {
                continue;
            }
            const AlignmentEvaluation challenger = evaluateAlignment(
                hypothesis.anchor, rotations[step], reference, EvaluationDepth::kWithStatistics);
            if (isBetterEvaluation(challenger, best)) {
                best = challenger;
            }
        }
    }
}

// The rotations of a refinement, in the order in which they are tried.
AlignmentVote::RefinedRotations AlignmentVote::refinedRotations(std::int16_t rotation) {
    RefinedRotations rotations;
    int degrees = -kRefineReachDegrees;
    for (std::int16_t& refined : rotations) {
        const long delta = std::lroundf(static_cast<float>(degrees) * kStepsPerDegree);
        refined = reducedTurn(rotation + static_cast<int>(delta));
        degrees += kRefineStepDegrees;
    }
    return rotations;
}

std::array<std::uint16_t, AlignmentVote::kRefineSteps + 1> AlignmentVote::boundsOfRotations(
    std::size_t place, const RefinedRotations& rotations) const {
    const ScaledTurns& turns = ScaledTurns::Table();
    std::array<BoundTask, (kRefineSteps + 1) / 2> tasks;
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        const std::size_t other = std::min(2 * i + 1, kRefineSteps - 1);
        tasks[i] = boundTask(place, turns[rotations[2 * i]], turns[rotations[other]]);
    }
    std::array<std::uint16_t, kRefineSteps + 1> bounds;
    boundsOf_(table_.positions(), tasks, bounds);
    return bounds;
}

}  // namespace orl::matcher
