#include "matcher/matching/ranked_pairs.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

using Pairs = std::vector<TrianglePair>;

class RankedPairsTest : public testing::Test {
  protected:
    std::array<Pairs, kOrientations> ranked(const std::vector<Candidate>& candidates,
                                            const std::vector<OrientationRanks>& ranks) {
        scratch_->release();
        const RankedPairs ranked = rankedPairs(candidates, ranks, *scratch_);
        std::array<Pairs, kOrientations> pairs;
        for (std::size_t m = 0; m < kOrientations; ++m) {
            pairs[m].assign(ranked[m].begin(), ranked[m].end());
        }
        return pairs;
    }

  private:
    std::unique_ptr<Scratch> scratch_ = std::make_unique<Scratch>();
};

TEST_F(RankedPairsTest, HoldAPairInTheOrientationsInWhichItIsAlike) {
    const auto pairs = ranked({{65535, 1, 7}, {2, 65534, 1}},
                              {{0, kNotAlike, 1023, kNotAlike}, {kNotAlike, kNotAlike, 5, 1023}});
    EXPECT_EQ(pairs[0], (Pairs{{65535, 1}}));
    EXPECT_TRUE(pairs[1].empty());
    EXPECT_EQ(pairs[2], (Pairs{{2, 65534}, {65535, 1}}));
    EXPECT_EQ(pairs[3], (Pairs{{2, 65534}}));
}

TEST_F(RankedPairsTest, AreNoneWithoutCandidates) {
    for (const Pairs& pairs : ranked({}, {})) {
        EXPECT_TRUE(pairs.empty());
    }
}

TEST_F(RankedPairsTest, AreNoneWhenNothingIsAlike) {
    const OrientationRanks none = {kNotAlike, kNotAlike, kNotAlike, kNotAlike};
    for (const Pairs& pairs : ranked({{1, 2, 1}, {3, 4, 1}}, {none, none})) {
        EXPECT_TRUE(pairs.empty());
    }
}

TEST_F(RankedPairsTest, KeepTheOrderOfEqualRanks) {
    std::vector<Candidate> candidates;
    std::vector<OrientationRanks> ranks;
    for (std::uint16_t i = 0; i < 300; ++i) {
        candidates.push_back({i, 0, 1});
        const auto rank = static_cast<PairRank>(i % 2 == 0 ? 700 : 600);
        ranks.push_back({rank, 0, 1023, kNotAlike});
    }
    const auto pairs = ranked(candidates, ranks);
    for (std::uint16_t place = 0; place < 300; ++place) {
        // The 150 odd ones first, then the even ones.
        const int expected = place < 150 ? 2 * place + 1 : 2 * (place - 150);
        EXPECT_EQ(pairs[0][place].first, expected);
        EXPECT_EQ(pairs[1][place].first, place);
        EXPECT_EQ(pairs[2][place].first, place);
    }
    EXPECT_TRUE(pairs[3].empty());
}

TEST_F(RankedPairsTest, AreThoseOfAStableSort) {
    for (const std::size_t size : {1U, 2U, 100U, 5000U, 63001U}) {
        std::mt19937 random(static_cast<std::uint32_t>(size));
        std::vector<Candidate> candidates(size);
        std::vector<OrientationRanks> ranks(size);
        for (std::size_t i = 0; i < size; ++i) {
            candidates[i] = {
                static_cast<std::uint16_t>(random()), static_cast<std::uint16_t>(random()), 1};
            for (PairRank& rank : ranks[i]) {
                rank = random() % 3 != 0 ? static_cast<PairRank>(random() % 1024) : kNotAlike;
            }
        }
        const auto pairs = ranked(candidates, ranks);
        for (std::size_t m = 0; m < kOrientations; ++m) {
            std::vector<std::size_t> order;
            for (std::size_t i = 0; i < size; ++i) {
                if (ranks[i][m] != kNotAlike) {
                    order.push_back(i);
                }
            }
            std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
                return ranks[a][m] < ranks[b][m];
            });
            Pairs expected;
            for (const std::size_t i : order) {
                expected.push_back({candidates[i].first, candidates[i].second});
            }
            ASSERT_EQ(pairs[m], expected) << size << ", orientation " << m;
        }
    }
}

}  // namespace
}  // namespace orl::matcher
