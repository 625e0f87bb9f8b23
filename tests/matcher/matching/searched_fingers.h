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

    // The pairs found in an orientation, the way the plain matcher gives them.
    std::vector<naive::TrianglePair> pairs(std::size_t orientation) const {
        std::vector<naive::TrianglePair> pairs;
        for (const matcher::TrianglePair& pair : context_->trianglePairs[orientation].pairs()) {
            pairs.push_back({matcher::kMaxSimilarity - pair.rank, pair.first, pair.second});
        }
        return pairs;
    }

    // As if these pairs had been found.
    void setPairs(std::size_t orientation, std::span<const matcher::TrianglePair> pairs) {
        matcher::TrianglePairList& list = context_->trianglePairs[orientation];
        list = matcher::TrianglePairList(pairs.size(), memory_->scratch);
        list.reserveMore(pairs.size());
        list.growTo(std::copy(pairs.begin(), pairs.end(), list.end()));
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
