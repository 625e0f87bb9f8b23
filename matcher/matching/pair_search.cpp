#include "matcher/matching/pair_search.h"

#include <algorithm>
#include <span>

#include "matcher/matching/candidate_index.h"
#include "matcher/matching/candidate_list.h"
#include "matcher/matching/kernels/candidate_ranks.h"

namespace orl::matcher {
namespace {

constexpr int kKeyReachGridUnits = 18;  // half the width of the key range

std::int8_t searchKey(const TriangleFeature& triangle) {
    return static_cast<std::int8_t>(triangle.sides[0]);
}

// The triangles of a sorted list whose key lies within reach of a key that only grows from call to
// call.
class KeyRange {
  public:
    explicit KeyRange(std::span<const TriangleFeature> sorted) : sorted_(sorted) {}

    // Moves on to `key`; false when no triangle is in reach.
    //
    // Deliberate: the limits wrap in 8 bits. A key within reach of either end of the signed range
    // gets an upper limit below its lower one, and so an empty range.
    bool moveTo(std::int8_t key) {
        const auto lowest = static_cast<std::int8_t>(key - kKeyReachGridUnits);
        const auto highest = static_cast<std::int8_t>(key + kKeyReachGridUnits);
        if (lowest > highest) {
            return false;
        }
        while (begin_ < sorted_.size() && searchKey(sorted_[begin_]) < lowest) {
            ++begin_;
        }
        end_ = std::max(end_, begin_);
        while (end_ < sorted_.size() && searchKey(sorted_[end_]) <= highest) {
            ++end_;
        }
        return begin_ < end_;
    }

    std::size_t begin() const { return begin_; }
    std::size_t end() const { return end_; }

  private:
    std::span<const TriangleFeature> sorted_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};

}  // namespace

void searchTrianglePairs(MatchContext& context) {
    const CandidateIndex index(context.second, context.memory.scratch);
    KeyRange range(context.second.triangles);
    CandidateList list(context.memory.scratch);
    for (std::size_t first = 0; first < context.firstTriangles.size(); ++first) {
        if (!range.moveTo(searchKey(context.firstTriangles[first]))) {
            continue;
        }
        const CandidateIndex::Query query(context.firstCodes[first][0]);
        const std::size_t endStretch =
            (range.end() + kTrianglesPerStretch - 1) / kTrianglesPerStretch;
        for (std::size_t stretch = range.begin() / kTrianglesPerStretch; stretch < endStretch;
             ++stretch) {
            const std::size_t offset = stretch * kTrianglesPerStretch;
            list.add(first,
                     offset,
                     index.find(query,
                                stretch,
                                std::max(range.begin(), offset) - offset,
                                std::min(range.end() - offset, kTrianglesPerStretch)));
        }
    }
    const std::span<const Candidate> candidates = list.candidates();
    const auto ranks = context.memory.scratch.take<OrientationRanks>(candidates.size());
    fastestRankCandidates()(
        {context.firstCodes.data(), context.second.codes.data()}, candidates, ranks.data());
    context.trianglePairs = rankedPairs(candidates, ranks, context.memory.scratch);
}

std::int32_t scoreTrianglePair(const TriangleCode& second, const CyclicCodes& firstCodes) {
    constexpr std::uint32_t kAllOrders = 0b111;
    const QuarterTurnCodes seconds = {second, second, second, second};
    const Candidate candidate{0, 0, kAllOrders};
    OrientationRanks ranks;
    fastestRankCandidates()({&firstCodes, &seconds}, {&candidate, 1}, &ranks);
    return kMaxSimilarity - ranks[0];
}

}  // namespace orl::matcher
