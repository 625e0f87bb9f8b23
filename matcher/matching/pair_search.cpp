#include "matcher/matching/pair_search.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>

#include "matcher/matching/candidate_index.h"
#include "matcher/matching/candidate_list.h"
#include "matcher/matching/kernels/candidate_ranks.h"
#include "matcher/matching/kernels/running_sums.h"

namespace orl::matcher {
namespace {

constexpr int kKeyReachGridUnits = 18;  // half the width of the key range

std::int8_t searchKey(const TriangleFeature& triangle) {
    return static_cast<std::int8_t>(triangle.sides[0]);
}

// Where the triangles of each search key begin in a sorted list.
class KeyPlaces {
  public:
    struct Range {
        std::size_t begin;
        std::size_t end;
    };

    explicit KeyPlaces(std::span<const TriangleFeature> sorted) {
        for (const TriangleFeature& triangle : sorted) {
            ++begins_[indexOf(searchKey(triangle)) + 1];
        }
        makeRunningSums(begins_);
    }

    // The triangles whose key lies within reach of `key`.
    //
    // Deliberate: the limits wrap in 8 bits. A key within reach of either end of the signed range
    // gets an upper limit below its lower one, and so an empty range.
    Range near(std::int8_t key) const {
        const auto lowest = static_cast<std::int8_t>(key - kKeyReachGridUnits);
        const auto highest = static_cast<std::int8_t>(key + kKeyReachGridUnits);
        if (lowest > highest) {
            return {0, 0};
        }
        return {begins_[indexOf(lowest)], begins_[indexOf(highest) + 1]};
    }

  private:
    static constexpr std::size_t kKeys = 256;

    static std::size_t indexOf(std::int8_t key) {
        return static_cast<std::size_t>(key - std::numeric_limits<std::int8_t>::min());
    }

    // The end of the last key besides, filled up to what running sums are made of.
    static_assert(kKeys % kRunningSumsLanes == 0);
    std::array<std::uint16_t, kKeys + kRunningSumsLanes> begins_{};
};

}  // namespace

void searchTrianglePairs(MatchContext& context) {
    const CandidateIndex index(context.second, context.memory.scratch);
    const KeyPlaces keys(context.second.triangles);
    CandidateList list(context.memory.scratch);
    for (std::size_t first = 0; first < context.firstTriangles.size(); ++first) {
        const auto [begin, end] = keys.near(searchKey(context.firstTriangles[first]));
        if (begin == end) {
            continue;
        }
        const CandidateIndex::Query query(context.firstCodes[first][0]);
        const std::size_t endStretch = (end + kTrianglesPerStretch - 1) / kTrianglesPerStretch;
        for (std::size_t stretch = begin / kTrianglesPerStretch; stretch < endStretch; ++stretch) {
            const std::size_t offset = stretch * kTrianglesPerStretch;
            list.add(first,
                     offset,
                     index.find(query,
                                stretch,
                                std::max(begin, offset) - offset,
                                std::min(end - offset, kTrianglesPerStretch)));
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
