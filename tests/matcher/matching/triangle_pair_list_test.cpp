#include "matcher/matching/triangle_pair_list.h"

#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

using PairLists = std::array<TrianglePairList, kOrientations>;
using PlainPair = std::tuple<int, int, int>;  // rank, first, second

PairLists EmptyLists(std::size_t capacity, Scratch& scratch) {
    return {TrianglePairList(capacity, scratch),
            TrianglePairList(capacity, scratch),
            TrianglePairList(capacity, scratch),
            TrianglePairList(capacity, scratch)};
}

std::vector<PlainPair> AsPlain(const TrianglePairList& list) {
    std::vector<PlainPair> plain;
    for (const TrianglePair& pair : list.pairs()) {
        plain.emplace_back(pair.rank, pair.first, pair.second);
    }
    return plain;
}

TEST(AppendAlike, PutsAPairIntoTheListsOfTheOrientationsInWhichItIsAlike) {
    const auto scratch = std::make_unique<Scratch>();
    PairLists lists = EmptyLists(4, *scratch);
    const std::array<Candidate, 2> candidates = {{{65535, 1, 7}, {2, 65534, 1}}};
    const std::array<OrientationRanks, 2> ranks = {
        {{0, kNotAlike, 1023, kNotAlike}, {kNotAlike, kNotAlike, 5, 1023}}};
    appendAlike(lists, candidates, ranks.data());
    EXPECT_EQ(AsPlain(lists[0]), (std::vector<PlainPair>{{0, 65535, 1}}));
    EXPECT_TRUE(AsPlain(lists[1]).empty());
    EXPECT_EQ(AsPlain(lists[2]), (std::vector<PlainPair>{{1023, 65535, 1}, {5, 2, 65534}}));
    EXPECT_EQ(AsPlain(lists[3]), (std::vector<PlainPair>{{1023, 2, 65534}}));
}

TEST(AppendAlike, OfNoCandidatesChangesNothing) {
    const auto scratch = std::make_unique<Scratch>();
    PairLists lists = EmptyLists(0, *scratch);
    appendAlike(lists, {}, nullptr);
    EXPECT_TRUE(AsPlain(lists[0]).empty());
}

// Batch after batch, against vectors; the lists begin small and grow.
TEST(AppendAlike, KeepsTheOrderOfManyBatches) {
    for (const std::size_t capacity : {0U, 1U, 100U, 5000U}) {
        std::mt19937 random(static_cast<std::uint32_t>(capacity));
        const auto scratch = std::make_unique<Scratch>();
        PairLists lists = EmptyLists(capacity, *scratch);
        std::array<std::vector<PlainPair>, kOrientations> expected;
        for (int batch = 0; batch < 30; ++batch) {
            std::vector<Candidate> candidates(random() % 90);
            std::vector<OrientationRanks> ranks(candidates.size());
            for (std::size_t i = 0; i < candidates.size(); ++i) {
                candidates[i] = {
                    static_cast<std::uint16_t>(random()), static_cast<std::uint16_t>(random()), 1};
                for (std::size_t m = 0; m < kOrientations; ++m) {
                    const bool isAlike = random() % 3 != 0;
                    ranks[i][m] = isAlike ? static_cast<PairRank>(random() % 1024) : kNotAlike;
                    if (isAlike) {
                        expected[m].emplace_back(
                            ranks[i][m], candidates[i].first, candidates[i].second);
                    }
                }
            }
            appendAlike(lists, candidates, ranks.data());
        }
        for (std::size_t m = 0; m < kOrientations; ++m) {
            ASSERT_EQ(AsPlain(lists[m]), expected[m]) << capacity;
        }
    }
}

}  // namespace
}  // namespace orl::matcher
