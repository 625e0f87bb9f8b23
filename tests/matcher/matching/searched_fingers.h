#pragma once

// Two fingers on their way through a match, with everything that the stages need kept alive.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "matcher/features/finger_model.h"
#include "matcher/matching/match_context.h"
#include "matcher/matching/pair_search.h"
#include "tests/support/naive_matching.h"

namespace orl::test {

using TrianglePairs = std::vector<matcher::TrianglePair>;

// What the plain matcher found, without the similarities.
inline TrianglePairs RankedPairs(const std::vector<naive::TrianglePair>& found) {
    TrianglePairs pairs;
    for (const naive::TrianglePair& pair : naive::Ranked(found)) {
        pairs.push_back({static_cast<std::uint16_t>(pair.a), static_cast<std::uint16_t>(pair.b)});
    }
    return pairs;
}

class FingersInMatch {
  public:
    FingersInMatch(matcher::FingerFeatures first, matcher::FingerFeatures second)
        : first_(std::move(first)),
          second_(std::move(second)),
          memory_(new matcher::MatchMemory),
          context_(new matcher::MatchContext(first_, second_, *memory_)) {}

    matcher::MatchContext& context() { return *context_; }
    matcher::Scratch& scratch() { return memory_->scratch; }
    const matcher::FingerFeatures& first() const { return first_; }
    const matcher::FingerFeatures& second() const { return second_; }

    // The pairs found in an orientation, ranked.
    TrianglePairs pairs(std::size_t orientation) const {
        const auto pairs = context_->trianglePairs[orientation];
        return {pairs.begin(), pairs.end()};
    }

    // As if these pairs had been found in that orientation.
    void setPairs(std::size_t orientation, std::span<const naive::TrianglePair> pairs) {
        std::vector<matcher::Candidate> candidates;
        std::vector<matcher::OrientationRanks> ranks;
        for (const naive::TrianglePair& pair : pairs) {
            candidates.push_back(
                {static_cast<std::uint16_t>(pair.a), static_cast<std::uint16_t>(pair.b), 1});
            ranks.emplace_back().fill(matcher::kNotAlike);
            ranks.back()[orientation] =
                static_cast<matcher::PairRank>(matcher::kMaxSimilarity - pair.similarity);
        }
        context_->trianglePairs = matcher::rankedPairs(candidates, ranks, memory_->scratch);
    }

  private:
    matcher::FingerFeatures first_;
    matcher::FingerFeatures second_;
    std::unique_ptr<matcher::MatchMemory> memory_;
    std::unique_ptr<matcher::MatchContext> context_;  // goes before the memory it uses
};

// The same, searched.
inline FingersInMatch SearchedFingers(matcher::FingerFeatures first,
                                      matcher::FingerFeatures second) {
    FingersInMatch fingers(std::move(first), std::move(second));
    matcher::searchTrianglePairs(fingers.context());
    return fingers;
}

inline std::vector<matcher::MinutiaPair> Copied(std::span<const matcher::MinutiaPair> pairs) {
    return {pairs.begin(), pairs.end()};
}

inline std::vector<naive::MinutiaPair> AsPlain(std::span<const matcher::MinutiaPair> pairs) {
    std::vector<naive::MinutiaPair> plain;
    plain.reserve(pairs.size());
    for (const matcher::MinutiaPair& pair : pairs) {
        plain.emplace_back(pair.first, pair.second);
    }
    return plain;
}

}  // namespace orl::test
