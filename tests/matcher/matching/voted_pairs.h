#pragma once

// Minutia pairs under a vote on their alignment, with all that the vote reads kept alive.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "matcher/matching/alignment.h"
#include "matcher/matching/match_context.h"
#include "matcher/matching/scratch.h"

namespace orl::test {

// A vote with all that it reads.
class Vote {
  public:
    explicit Vote(std::vector<matcher::MinutiaPair> pairs, std::int32_t leastCount = 0)
        : pairs_(std::move(pairs)),
          scratch_(new matcher::Scratch),
          vote_(pairs_, *scratch_, leastCount) {}

    const matcher::AlignmentVote* operator->() const { return &vote_; }
    const std::vector<matcher::MinutiaPair>& pairs() const { return pairs_; }

    // Measured against the box of all pairs, for fingers of 10 and 20 minutiae.
    matcher::AlignmentReference reference() const {
        return matcher::alignmentReference(pairs_, 10, 20);
    }

    matcher::AlignmentEvaluation evaluated(std::size_t anchor, int rotation) const {
        return vote_.evaluateAlignment(static_cast<std::uint32_t>(anchor),
                                       static_cast<std::int16_t>(rotation),
                                       reference(),
                                       matcher::EvaluationDepth::kWithStatistics);
    }

    // The best hypothesis with its statistics.
    matcher::AlignmentEvaluation best() const {
        const matcher::AlignmentHypothesis hypothesis = vote_.findBestAlignment();
        return evaluated(hypothesis.anchor, hypothesis.rotation);
    }

    matcher::AlignmentEvaluation refined() const {
        matcher::AlignmentEvaluation evaluation = best();
        vote_.refineAlignment(evaluation, reference());
        return evaluation;
    }

  private:
    std::vector<matcher::MinutiaPair> pairs_;
    std::unique_ptr<matcher::Scratch> scratch_;
    matcher::AlignmentVote vote_;
};

// A pair whose second vertex lies (dx, dy) off the first one, both with direction 50.
inline matcher::MinutiaPair Displaced(int x, int y, int dx, int dy) {
    return {{static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y), 50, 0},
            {static_cast<std::uint8_t>(x + dx), static_cast<std::uint8_t>(y + dy), 50, 0}};
}

}  // namespace orl::test
