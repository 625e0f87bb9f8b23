#include "matcher/matching/alignment.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>

#include "matcher/features/lookup_tables.h"
#include "matcher/matching/kernels/pair_boxes.h"
#include "matcher/matching/scaled_turns.h"

namespace orl::matcher {
namespace {

constexpr float kStepsPerDegree = 0.7111111F;  // 256 / 360
constexpr std::size_t kHypothesesPerPair = 2;
constexpr std::size_t kAlignmentsPerTask = 2;

// The refinement's turns, -24 to 24 degrees in steps of 2, in direction steps rounded to nearest.
// The last one stands there twice, to make up two alignments a task; as the later of equal ones it
// changes nothing.
constexpr std::size_t kRefinedSlots = 26;
constexpr std::array<int, kRefinedSlots> kRefinedSteps = [] {
    constexpr int kReachDegrees = 24;
    constexpr int kStepDegrees = 2;
    std::array<int, kRefinedSlots> steps{};
    int degrees = -kReachDegrees;
    for (int& step : steps) {
        const float exact = static_cast<float>(degrees) * kStepsPerDegree;
        step = static_cast<int>(exact < 0 ? exact - 0.5F : exact + 0.5F);
        degrees = std::min(degrees + kStepDegrees, kReachDegrees);
    }
    return steps;
}();

// How many bits are set.
std::int32_t bitsIn(std::span<const std::uint64_t> words) {
    int bits = 0;
    for (const std::uint64_t word : words) {
        bits += std::popcount(word);
    }
    return bits;
}

// Calls the function with the number of each bit that is set, in ascending order.
template <typename Function>
void forEachBit(std::span<const std::uint64_t> words, Function function) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        for (std::uint64_t word = words[i]; word != 0; word &= word - 1) {
            function(i * kNearPairsWordBits + static_cast<std::size_t>(std::countr_zero(word)));
        }
    }
}

// The first index from `index` on with a bound of at least `least`, or the number of bounds.
// REQUIRES: least and all bounds are in 0..32768.
std::size_t nextReaching(std::span<const std::uint16_t> bounds,
                         std::size_t index,
                         std::int32_t least) {
    // Four at a time: adding what `least` is short of 32768 brings those that reach it, and only
    // those, to the highest bit of theirs.
    constexpr std::uint64_t kOnes = 0x0001000100010001;
    constexpr std::uint64_t kHighest = 0x8000;
    constexpr std::size_t kAtOnce = sizeof(kOnes) / sizeof(bounds[0]);
    const std::uint64_t missing = (kHighest - static_cast<std::uint64_t>(least)) * kOnes;
    for (; index + kAtOnce <= bounds.size(); index += kAtOnce) {
        std::uint64_t four = 0;
        std::memcpy(&four, &bounds[index], sizeof(four));
        if (((four + missing) & (kHighest * kOnes)) != 0) {
            break;
        }
    }
    while (index < bounds.size() && std::int32_t{bounds[index]} < least) {
        ++index;
    }
    return index;
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

AlignmentVote::AlignmentVote(std::span<const MinutiaPair> pairs,
                             Scratch& scratch,
                             std::int32_t leastCount)
    : pairs_(pairs),
      scratch_(scratch),
      table_(pairs, scratch),
      nearPairsOf_(fastestNearPairs()),
      tasks_(tasksReaching(leastCount)),
      bounds_(scratch.take<std::uint16_t>(kHypothesesPerPair * tasks_.size())),
      squaredResiduals_(scratch.take<float>(pairs.size() + kNearPairsLanes)),
      near_(scratch.take<std::uint64_t>(pairs.size() / kNearPairsWordBits + 1)),
      agreeingSquaredResiduals_(scratch.take<float>(pairs.size())) {
    assert(!pairs.empty());
    fastestAgreementBounds()(table_.positions(), tasks_, bounds_);
    // As signed numbers, which are compared quicker; see kMaxPairs.
    std::int16_t most = 0;
    for (const std::uint16_t bound : bounds_) {
        most = std::max(most, static_cast<std::int16_t>(bound));
    }
    countBound_ = most;
}

// No count is greater than the number of pairs that pass the relative direction test.
std::span<const BoundTask> AlignmentVote::tasksReaching(std::int32_t leastCount) const {
    const std::span<const BoundTask> anchors = table_.anchors();
    if (leastCount <= std::int32_t{table_.shortestStretch()}) {
        return anchors;
    }
    const std::span<BoundTask> tasks = scratch_.take<BoundTask>(anchors.size());
    std::size_t kept = 0;
    for (const BoundTask& anchor : anchors) {
        tasks[kept] = anchor;
        kept += std::int32_t{anchor.count} >= leastCount ? 1 : 0;
    }
    return tasks.first(kept);
}

// Which pairs of the anchor's stretch lie within the limit of where the alignment puts them. They
// pass the relative direction test.
std::span<std::uint64_t> AlignmentVote::nearPairs(const BoundTask& anchor,
                                                  std::int16_t rotation) const {
    nearPairsOf_(table_.positions(),
                 {anchor.anchor, anchor.begin, anchor.count, Cos(rotation), Sin(rotation)},
                 squaredResiduals_,
                 near_);
    return near_.first((anchor.count + kNearPairsWordBits - 1) / kNearPairsWordBits);
}

// Takes out the anchor and what fails the direction test. Returns how many agree, the anchor
// included.
std::int32_t AlignmentVote::keepAgreeing(const BoundTask& anchor,
                                         std::int16_t rotation,
                                         std::span<std::uint64_t> near) const {
    forEachBit(near, [&](std::size_t bit) {
        const bool isRejected = isDirectionRejected(rotation, table_.at(anchor.begin + bit));
        near[bit / kNearPairsWordBits] ^= std::uint64_t{isRejected} << (bit % kNearPairsWordBits);
    });
    // The anchor may stand in its stretch with the turns behind the last.
    const std::size_t place =
        anchor.anchor < anchor.begin ? anchor.anchor + table_.size() : anchor.anchor;
    const std::size_t self = place - anchor.begin;
    near[self / kNearPairsWordBits] &= ~(std::uint64_t{1} << (self % kNearPairsWordBits));
    return 1 + bitsIn(near);
}

float AlignmentVote::coverage(const BoundTask& anchor,
                              std::span<const std::uint64_t> agreeing,
                              const AlignmentReference& reference) const {
    PairBoxes boxes(pairs_[anchor.pair]);
    forEachBit(agreeing, [&](std::size_t bit) { boxes.extend(table_.at(anchor.begin + bit)); });
    const PairBoxAreas areas = boxes.areas();
    return (overlap(areas.first, reference.firstArea) +
            overlap(areas.second, reference.secondArea)) *
           0.5F;
}

// Reads the residuals that nearPairs has left.
float AlignmentVote::distanceMedian(std::span<const std::uint64_t> agreeing) const {
    std::size_t size = 0;
    forEachBit(agreeing, [&](std::size_t bit) {
        agreeingSquaredResiduals_[size++] = squaredResiduals_[bit];
    });
    return medianResidual(agreeingSquaredResiduals_.first(size));
}

float AlignmentVote::angleMedian(const BoundTask& anchor,
                                 std::int16_t rotation,
                                 std::span<const std::uint64_t> agreeing) const {
    DirectionResiduals directions;
    forEachBit(agreeing, [&](std::size_t bit) {
        directions.add(directionResidual(rotation, table_.at(anchor.begin + bit)));
    });
    return directions.median();
}

AlignmentEvaluation AlignmentVote::evaluateAlignment(std::uint32_t anchor,
                                                     std::int16_t rotation,
                                                     const AlignmentReference& reference,
                                                     EvaluationDepth depth) const {
    assert(anchor < pairs_.size());
    const BoundTask& task = table_.anchors()[anchor];
    const std::span<std::uint64_t> near = nearPairs(task, rotation);
    AlignmentEvaluation evaluation{
        .count = keepAgreeing(task, rotation, near), .anchor = anchor, .rotation = rotation};
    if (depth == EvaluationDepth::kWithStatistics) {
        evaluation.coverage = coverage(task, near, reference);
        evaluation.matchedRatio = matchedRatio(evaluation.count, reference);
        evaluation.distanceMedian = distanceMedian(near);
        evaluation.angleMedian = angleMedian(task, rotation, near);
    }
    return evaluation;
}

// Turns at most 35 steps apart on a circle of 255 are at most 37 apart on one of 256, and leave
// directions at most 38 apart as lines: whatever passes the relative direction test with a
// hypothesis passes the direction test too. The anchor is near itself.
AlignmentHypothesis AlignmentVote::counted(std::span<const BoundTask> tasks,
                                           std::size_t index) const {
    const BoundTask& anchor = tasks[index / kHypothesesPerPair];
    const MinutiaPair& pair = pairs_[anchor.pair];
    const int straight = pair.second.angle - pair.first.angle;
    const std::int16_t rotation = index % kHypothesesPerPair == 0
                                      ? static_cast<std::int16_t>(straight)
                                      : oppositeRotation(straight);
    return {bitsIn(nearPairs(anchor, rotation)), anchor.pair, rotation};
}

AlignmentHypothesis AlignmentVote::findBestAlignment() const {
    if (bounds_.empty()) {
        return {};
    }
    // The most promising one sets the mark for the others.
    std::size_t bestIndex = nextReaching(bounds_, 0, countBound_);
    AlignmentHypothesis best = counted(tasks_, bestIndex);
    for (std::size_t index = nextReaching(bounds_, 0, best.count); index < bounds_.size();
         index = nextReaching(bounds_, index + 1, best.count)) {
        if (index == bestIndex || !ranksBefore(bounds_[index], index, best.count, bestIndex)) {
            continue;
        }
        const AlignmentHypothesis challenger = counted(tasks_, index);
        if (ranksBefore(challenger.count, index, best.count, bestIndex)) {
            best = challenger;
            bestIndex = index;
        }
    }
    return best;
}

// Those of the anchors left out before are bounded now.
std::span<const std::uint16_t> AlignmentVote::boundsOfAll() const {
    const std::span<const BoundTask> anchors = table_.anchors();
    if (tasks_.size() == anchors.size()) {
        return bounds_;
    }
    const auto bounds = scratch_.take<std::uint16_t>(kHypothesesPerPair * anchors.size());
    fastestAgreementBounds()(table_.positions(), anchors, bounds);
    return bounds;
}

// The hypotheses' indices by bound, highest first, equal ones in their order.
std::span<const std::uint32_t> AlignmentVote::byBound(std::span<const std::uint16_t> bounds) const {
    const std::size_t most = table_.longestStretch();
    const auto next = scratch_.take<std::uint32_t>(most + 2);
    std::fill(next.begin(), next.end(), 0U);
    for (const std::uint16_t bound : bounds) {
        ++next[most - bound + 1];
    }
    for (std::size_t i = 1; i <= most; ++i) {
        next[i] += next[i - 1];
    }
    const auto order = scratch_.take<std::uint32_t>(bounds.size());
    for (std::size_t index = 0; index < bounds.size(); ++index) {
        order[next[most - bounds[index]]++] = static_cast<std::uint32_t>(index);
    }
    return order;
}

// REQUIRES: not full, or the challenger ranks before the last.
void AlignmentVote::Ranking::insert(const AlignmentHypothesis& challenger, std::size_t index) {
    std::size_t place = isFull() ? size - 1 : size++;
    for (; place > 0 &&
           ranksBefore(challenger.count, index, hypotheses[place - 1].count, indices[place - 1]);
         --place) {
        hypotheses[place] = hypotheses[place - 1];
        indices[place] = indices[place - 1];
    }
    hypotheses[place] = challenger;
    indices[place] = index;
}

AlignmentVote::Ranking AlignmentVote::rankHypotheses() const {
    // By bound, highest first: once no bound reaches the tenth best count, nothing can change.
    const std::span<const std::uint16_t> bounds = boundsOfAll();
    Ranking ranking;
    for (const std::uint32_t index : byBound(bounds)) {
        if (ranking.isFull() && bounds[index] < ranking.hypotheses.back().count) {
            break;
        }
        const AlignmentHypothesis challenger = counted(table_.anchors(), index);
        if (!ranking.isFull() ||
            ranksBefore(
                challenger.count, index, ranking.hypotheses.back().count, ranking.indices.back())) {
            ranking.insert(challenger, index);
        }
    }
    return ranking;
}

// Evaluates an alignment as far as it takes to tell whether it is better than the leader.
void AlignmentVote::challenge(Leader& leader,
                              const Refined& refined,
                              std::size_t order,
                              const AlignmentReference& reference) const {
    const BoundTask& task = table_.anchors()[refined.anchor];
    const std::span<std::uint64_t> near = nearPairs(task, refined.rotation);
    if (bitsIn(near) < leader.evaluation.count) {
        return;
    }
    Leader challenger{{.anchor = refined.anchor, .rotation = refined.rotation}, order, false};
    AlignmentEvaluation& evaluation = challenger.evaluation;
    evaluation.count = keepAgreeing(task, refined.rotation, near);
    if (evaluation.count < leader.evaluation.count) {
        return;
    }
    evaluation.coverage = coverage(task, near, reference);
    evaluation.matchedRatio = matchedRatio(evaluation.count, reference);
    if (evaluation.count == leader.evaluation.count &&
        evaluation.coverage == leader.evaluation.coverage) {
        evaluation.distanceMedian = distanceMedian(near);
        complete(leader, reference);
        if (evaluation.distanceMedian == leader.evaluation.distanceMedian) {
            complete(challenger, reference);
        }
    }
    const bool isBetter = isBetterEvaluation(evaluation, leader.evaluation);
    const bool isTie = !isBetter && !isBetterEvaluation(leader.evaluation, evaluation);
    if (isBetter || (isTie && order < leader.order)) {
        leader = challenger;
    }
}

void AlignmentVote::complete(Leader& leader, const AlignmentReference& reference) const {
    if (!leader.hasMedians) {
        leader.evaluation = evaluateAlignment(leader.evaluation.anchor,
                                              leader.evaluation.rotation,
                                              reference,
                                              EvaluationDepth::kWithStatistics);
        leader.hasMedians = true;
    }
}

void AlignmentVote::refineAlignment(AlignmentEvaluation& best,
                                    const AlignmentReference& reference) const {
    const Ranking ranking = rankHypotheses();
    const auto refined = scratch_.take<Refined>(kRefinedSlots * ranking.size);
    auto next = refined.begin();
    for (std::size_t i = 0; i < ranking.size; ++i) {
        for (const int steps : kRefinedSteps) {
            const AlignmentHypothesis& hypothesis = ranking.hypotheses[i];
            *next++ = {hypothesis.anchor, reducedTurn(hypothesis.rotation + steps)};
        }
    }
    const std::span<const std::uint16_t> bounds = boundsOf(refined);
    Leader leader{best, 0, true};
    // The most promising one sets the mark for the others.
    const auto first =
        static_cast<std::size_t>(std::max_element(bounds.begin(), bounds.end()) - bounds.begin());
    challenge(leader, refined[first], first + 1, reference);
    for (std::size_t i = nextReaching(bounds, 0, leader.evaluation.count); i < refined.size();
         i = nextReaching(bounds, i + 1, leader.evaluation.count)) {
        if (i != first) {
            challenge(leader, refined[i], i + 1, reference);
        }
    }
    complete(leader, reference);
    best = leader.evaluation;
}

std::span<const std::uint16_t> AlignmentVote::boundsOf(std::span<const Refined> refined) const {
    const ScaledTurns& turns = ScaledTurns::Table();
    const auto tasks = scratch_.take<BoundTask>(refined.size() / kAlignmentsPerTask);
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        const Refined& one = refined[kAlignmentsPerTask * i];
        const Refined& other = refined[kAlignmentsPerTask * i + 1];
        tasks[i] = table_.anchors()[one.anchor];
        tasks[i].turns = {turns[one.rotation], turns[other.rotation]};
    }
    const auto bounds = scratch_.take<std::uint16_t>(refined.size());
    fastestTightAgreementBounds()(table_.positions(), tasks, bounds);
    return bounds;
}

}  // namespace orl::matcher
