#include "matcher/matching/alignment_measures.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "matcher/matching/kernels/pair_boxes.h"

namespace orl::matcher {

AlignmentReference alignmentReference(std::span<const MinutiaPair> pairs,
                                      std::uint64_t firstMinutiaCount,
                                      std::uint64_t secondMinutiaCount) {
    assert(!pairs.empty());
    PairBoxes boxes(pairs.front());
    for (const MinutiaPair& pair : pairs) {
        boxes.extend(pair);
    }
    const PairBoxAreas areas = boxes.areas();
    return {areas.first, areas.second, firstMinutiaCount, secondMinutiaCount};
}

float DirectionResiduals::median() const {
    if (size_ == 0) {
        return 0.0F;
    }
    const float middle = degreesOfRank(size_ / 2);
    return size_ % 2 != 0 ? middle : (degreesOfRank(size_ / 2 - 1) + middle) * 0.5F;
}

float DirectionResiduals::degreesOfRank(std::size_t rank) const {
    constexpr float kDegreesPerStep = 1.40625F;  // 360 / 256
    std::size_t steps = 0;
    for (std::size_t upTo = counts_[0]; upTo <= rank; upTo += counts_[steps]) {
        ++steps;
    }
    return static_cast<float>(steps) * kDegreesPerStep;
}

// Square roots keep the order of what they are taken of.
float medianResidual(std::span<float> squared) {
    if (squared.empty()) {
        return 0.0F;
    }
    const auto middle = squared.begin() + static_cast<std::ptrdiff_t>(squared.size() / 2);
    std::nth_element(squared.begin(), middle, squared.end());
    if (squared.size() % 2 != 0) {
        return std::sqrt(*middle);
    }
    return (std::sqrt(*std::max_element(squared.begin(), middle)) + std::sqrt(*middle)) * 0.5F;
}

float overlap(float area, float referenceArea) {
    return referenceArea > 0.0F ? std::clamp(area / referenceArea, 0.0F, 1.0F) : 0.0F;
}

float matchedRatio(std::int32_t count, const AlignmentReference& reference) {
    const std::uint64_t smallerCount = std::max<std::uint64_t>(
        std::min(reference.firstMinutiaCount, reference.secondMinutiaCount), 1);
    const float ratio = static_cast<float>(count) / static_cast<float>(smallerCount);
    return std::clamp(ratio, 0.0F, 1.0F);
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

}  // namespace orl::matcher
