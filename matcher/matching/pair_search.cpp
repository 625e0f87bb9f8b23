#include "matcher/matching/pair_search.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>

#include "matcher/matching/candidate_index.h"
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

// Ranks the pairs of triangles that the index found, many at a time: what is decided by chance, so
// that a processor cannot foresee it, is decided by stores that may be overwritten, not by
// branches.
class PairRanking {
  public:
    explicit PairRanking(MatchContext& context) : context_(context) {}

    // Adds pairs of triangle `first` and those from `offset` on that were found for a cyclic order.
    void add(std::size_t first,
             std::size_t offset,
             const std::array<TriangleBits, kCorners>& found) {
        constexpr std::size_t kWordBits = 64;
        if (count_ > kCapacity - kTrianglesPerStretch) {
            rankAll();
        }
        for (std::size_t word = 0; word < kTrianglesPerStretch / kWordBits; ++word) {
            addWord(
                first, offset + word * kWordBits, {found[0][word], found[1][word], found[2][word]});
        }
    }

    // Appends the pairs that are alike to the context's lists. Throws: std::bad_alloc.
    void rankAll() {
        const std::span<const Candidate> candidates = std::span(candidates_).first(count_);
        count_ = 0;
        rank_(
            {context_.firstCodes.data(), context_.second.codes.data()}, candidates, ranks_.data());
        appendAlike(context_.trianglePairs, candidates, ranks_.data());
    }

  private:
    static constexpr std::size_t kCapacity = 1024;

    void addWord(std::size_t first,
                 std::size_t offset,
                 const std::array<std::uint64_t, kCorners>& found) {
        Candidate* next = candidates_.data() + count_;
        for (std::uint64_t left = found[0] | found[1] | found[2]; left != 0; left &= left - 1) {
            const auto bit = static_cast<unsigned>(std::countr_zero(left));
            const std::uint64_t orders = (found[0] >> bit & 1U) | (found[1] >> bit & 1U) << 1U |
                                         (found[2] >> bit & 1U) << 2U;
            *next++ = {static_cast<std::uint16_t>(first),
                       static_cast<std::uint16_t>(offset + bit),
                       static_cast<std::uint32_t>(orders)};
        }
        count_ = static_cast<std::size_t>(next - candidates_.data());
    }

    MatchContext& context_;
    RankCandidates rank_ = fastestRankCandidates();
    // Left uninitialised on purpose: entries are written before they count.
    std::array<Candidate, kCapacity> candidates_;
    std::array<OrientationRanks, kCapacity> ranks_;
    std::size_t count_ = 0;
};

}  // namespace

void searchTrianglePairs(MatchContext& context) {
    const CandidateIndex index(context.second, context.memory.scratch);
    KeyRange range(context.second.triangles);
    PairRanking ranking(context);
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
            ranking.add(first,
                        offset,
                        index.find(query,
                                   stretch,
                                   std::max(range.begin(), offset) - offset,
                                   std::min(range.end() - offset, kTrianglesPerStretch)));
        }
    }
    ranking.rankAll();
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
