#include "matcher/matching/pair_table.h"

#include <algorithm>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/matching/scratch.h"

namespace orl::matcher {
namespace {

std::vector<MinutiaPair> RandomPairs(std::mt19937& random, std::size_t count, unsigned turns) {
    const auto byte = [&](unsigned limit) { return static_cast<std::uint8_t>(random() % limit); };
    std::vector<MinutiaPair> pairs;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t direction = byte(256);
        pairs.push_back(
            {{byte(256), byte(256), direction, byte(4)},
             {byte(256), byte(256), static_cast<std::uint8_t>(direction + byte(turns)), byte(4)}});
    }
    return pairs;
}

int TurnOf(const MinutiaPair& pair) {
    return (pair.second.angle - pair.first.angle + 256) % 256;
}

int TurnsApart(const MinutiaPair& a, const MinutiaPair& b) {
    const int apart = (TurnOf(a) - TurnOf(b) + 256) % 256;
    return std::min(apart, 256 - apart);
}

TEST(PairTable, HoldsEveryPairOnceALapWithItsPositions) {
    std::mt19937 random(1);
    const auto pairs = RandomPairs(random, 200, 256);
    const auto scratch = std::make_unique<Scratch>();
    const PairTable table(pairs, *scratch);
    ASSERT_EQ(table.size(), pairs.size());
    std::set<std::size_t> places;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const std::size_t place = table.placeOf(i);
        places.insert(place);
        ASSERT_LT(place, pairs.size());
        for (const std::size_t lap : {place, place + pairs.size()}) {
            EXPECT_EQ(table.at(lap), pairs[i]);
            EXPECT_EQ(table.positions().firstX64[lap], 64 * pairs[i].first.x);
            EXPECT_EQ(table.positions().firstY64[lap], 64 * pairs[i].first.y);
            EXPECT_EQ(table.positions().secondX32[lap], 32 * pairs[i].second.x);
            EXPECT_EQ(table.positions().secondY32[lap], 32 * pairs[i].second.y);
        }
    }
    EXPECT_EQ(places.size(), pairs.size());
}

TEST(PairTable, KeepsTheOrderOfPairsOfEqualTurn) {
    std::mt19937 random(2);
    const auto pairs = RandomPairs(random, 50, 1);
    const auto scratch = std::make_unique<Scratch>();
    const PairTable table(pairs, *scratch);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        EXPECT_EQ(table.placeOf(i), i);
    }
}

TEST(PairTable, FindsEveryPairWithin37TurnsOnceAndNoneBeyond43) {
    for (const unsigned turns : {256U, 60U, 3U}) {
        for (const std::size_t count : {1U, 2U, 3U, 40U, 300U}) {
            SCOPED_TRACE(testing::Message() << count << " pairs, " << turns << " turns");
            std::mt19937 random(turns);
            const auto pairs = RandomPairs(random, count, turns);
            const auto scratch = std::make_unique<Scratch>();
            const PairTable table(pairs, *scratch);
            for (std::size_t anchor = 0; anchor < count; ++anchor) {
                const PairTable::Stretch stretch = table.alike(table.placeOf(anchor));
                ASSERT_LE(stretch.begin + std::size_t{stretch.count}, 2 * count);
                std::vector<int> timesMet(count, 0);
                for (std::size_t i = 0; i < stretch.count; ++i) {
                    ++timesMet[(stretch.begin + i) % count];
                }
                for (std::size_t other = 0; other < count; ++other) {
                    const int apart = TurnsApart(pairs[anchor], pairs[other]);
                    const int times = timesMet[table.placeOf(other)];
                    ASSERT_LE(times, 1);
                    ASSERT_TRUE(apart > 37 || times == 1) << apart;
                    // Ten bins of four turns either way, from any turn within a bin.
                    ASSERT_TRUE(apart <= 43 || times == 0) << apart;
                }
            }
        }
    }
}

TEST(PairTable, LaysOutAsManyPairsAsTheLargestFingersCanYield) {
    // 3 corners of at most 2 * 256 triangles each keep a pair.
    std::mt19937 random(3);
    const auto pairs = RandomPairs(random, 1536, 256);
    const auto scratch = std::make_unique<Scratch>();
    const PairTable table(pairs, *scratch);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        ASSERT_EQ(table.at(table.placeOf(i) + pairs.size()), pairs[i]);
    }
}

}  // namespace
}  // namespace orl::matcher
