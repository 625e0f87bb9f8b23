#include "matcher/matching/pair_search.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>

#include "matcher/matching/candidate_index.h"
#include "matcher/matching/kernels/candidate_test.h"

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

// Tests the pairs of triangles that the index found, many at a time: what is decided by chance, so
// that a processor cannot foresee it, is decided by stores that may be overwritten, not by
// branches.
class PairTest {
  public:
    explicit PairTest(MatchContext& context)
        : context_(context),
          test_(fastestCandidateTest()),
          codes_{context.firstCodes.data(),
                 context.second.codes.data(),
                 ordersInAnyCase(context).data()} {}

    // Adds pairs of triangle `first` and those from `offset` on whose bits are set.
    void add(std::size_t first, std::size_t offset, const TriangleBits& found) {
        if (count_ > kCapacity - kTrianglesPerStretch) {
            testAll();
        }
        addWord(first, offset, found[0]);
        addWord(first, offset + kTrianglesPerStretch / 2, found[1]);
    }

    // Appends the pairs that are alike to the context's lists. Throws: std::bad_alloc.
    void testAll() {
        const std::span<Candidate> added = std::span(candidates_).first(count_);
        const std::span<const Candidate> candidates = added.first(test_.dropUnlike(codes_, added));
        count_ = 0;
        test_.rank(codes_, candidates, ranks_.data());
        for (std::size_t m = 0; m < kOrientations; ++m) {
            TrianglePairList& list = context_.trianglePairs[m];
            list.reserveMore(candidates.size());
            for (std::size_t i = 0; i < candidates.size(); ++i) {
                list.appendIfAlike({ranks_[i][m], candidates[i].first, candidates[i].second});
            }
        }
    }

  private:
    static constexpr std::size_t kCapacity = 1024;

    // The quarter turns of an irregular triangle do not resemble each other, so it is ranked under
    // all orders.
    static std::span<const std::uint8_t> ordersInAnyCase(const MatchContext& context) {
        constexpr std::uint8_t kAllOrders = 0b111;
        const std::span<const OrientedTriangle> oriented = context.second.oriented;
        const auto orders = context.memory.scratch.take<std::uint8_t>(oriented.size());
        for (std::size_t u = 0; u < oriented.size(); ++u) {
            orders[u] = oriented[u].isIrregular ? kAllOrders : std::uint8_t{0};
        }
        return orders;
    }

    void addWord(std::size_t first, std::size_t offset, std::uint64_t found) {
        for (; found != 0; found &= found - 1) {
            const std::size_t second = offset + static_cast<std::size_t>(std::countr_zero(found));
            candidates_[count_++] = {
                static_cast<std::uint16_t>(first), static_cast<std::uint16_t>(second), 0};
        }
    }

    MatchContext& context_;
    const CandidateTest& test_;
    CandidateCodes codes_;
    // Left uninitialised on purpose: entries are written before they count.
    std::array<Candidate, kCapacity> candidates_;
    std::array<OrientationRanks, kCapacity> ranks_;
    std::size_t count_ = 0;
};

}  // namespace

void searchTrianglePairs(MatchContext& context) {
    const CandidateIndex index(context.second, context.memory.scratch);
    KeyRange range(context.second.triangles);
    PairTest test(context);
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
            test.add(first,
                     offset,
                     index.find(query,
                                stretch,
                                std::max(range.begin(), offset) - offset,
                                std::min(range.end() - offset, kTrianglesPerStretch)));
        }
    }
    test.testAll();
}

std::int32_t scoreTrianglePair(const TriangleCode& second, const CyclicCodes& firstCodes) {
    constexpr std::uint32_t kAllOrders = 0b111;
    const QuarterTurnCodes seconds = {second, second, second, second};
    const Candidate candidate{0, 0, kAllOrders};
    OrientationRanks ranks;
    fastestCandidateTest().rank({&firstCodes, &seconds, nullptr}, {&candidate, 1}, &ranks);
    return kMaxSimilarity - ranks[0];
}

}  // namespace orl::matcher
