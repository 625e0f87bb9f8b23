#include "matcher/matching/pair_table.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/matching/scaled_turns.h"
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

// What the relative direction test says of the pairs' directions.
bool PassTheRelativeTest(const MinutiaPair& anchor, const MinutiaPair& pair) {
    const auto fold = [](int x, int y) { return x > y ? x - y : x - y + 255; };
    const int apart = std::abs(fold(pair.first.angle, anchor.first.angle) -
                               fold(pair.second.angle, anchor.second.angle));
    return std::min(255 - apart, apart) < 36;
}

// How often each pair, by its index, stands in the stretch of the pair of that index.
std::vector<int> TimesMet(const PairTable& table, std::size_t anchor) {
    const BoundTask& task = table.anchors()[anchor];
    std::vector<int> times(table.size(), 0);
    for (std::size_t i = 0; i < table.size(); ++i) {
        const std::size_t place = table.anchors()[i].anchor;
        for (const std::size_t stand : {place, place + table.size()}) {
            times[i] += stand >= task.begin && stand < task.begin + std::size_t{task.count} ? 1 : 0;
        }
    }
    return times;
}

TEST(PairTable, GivesEveryPairAPlaceWithItsPositions) {
    std::mt19937 random(1);
    const auto pairs = RandomPairs(random, 200, 256);
    const auto scratch = std::make_unique<Scratch>();
    const PairTable table(pairs, *scratch);
    ASSERT_EQ(table.size(), pairs.size());
    std::set<std::size_t> places;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const BoundTask& anchor = table.anchors()[i];
        EXPECT_EQ(anchor.pair, i);
        const std::size_t place = anchor.anchor;
        places.insert(place);
        ASSERT_LT(place, pairs.size());
        EXPECT_EQ(table.at(place), pairs[i]);
        EXPECT_EQ(table.positions().firstX64[place], 64 * pairs[i].first.x);
        EXPECT_EQ(table.positions().firstY64[place], 64 * pairs[i].first.y);
        EXPECT_EQ(table.positions().secondX32[place], 32 * pairs[i].second.x);
        EXPECT_EQ(table.positions().secondY32[place], 32 * pairs[i].second.y);
    }
    EXPECT_EQ(places.size(), pairs.size());
}

TEST(PairTable, RepeatsTheFirstPairsBehindTheLastAsFarAsStretchesReach) {
    for (const unsigned turns : {256U, 120U, 40U}) {
        std::mt19937 random(turns);
        const auto pairs = RandomPairs(random, 200, turns);
        const auto scratch = std::make_unique<Scratch>();
        const PairTable table(pairs, *scratch);
        for (const BoundTask& anchor : table.anchors()) {
            for (std::size_t i = anchor.begin; i < std::size_t{anchor.begin} + anchor.count; ++i) {
                const std::size_t place = i % pairs.size();
                ASSERT_EQ(table.at(i), table.at(place));
                ASSERT_EQ(table.positions().firstX64[i], table.positions().firstX64[place]);
                ASSERT_EQ(table.positions().firstY64[i], table.positions().firstY64[place]);
                ASSERT_EQ(table.positions().secondX32[i], table.positions().secondX32[place]);
                ASSERT_EQ(table.positions().secondY32[i], table.positions().secondY32[place]);
            }
        }
    }
}

TEST(PairTable, KeepsTheOrderOfPairsOfEqualTurn) {
    std::mt19937 random(2);
    const auto pairs = RandomPairs(random, 50, 1);
    const auto scratch = std::make_unique<Scratch>();
    const PairTable table(pairs, *scratch);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        EXPECT_EQ(table.anchors()[i].anchor, i);
    }
}

TEST(PairTable, HoldsInAStretchWhatPassesTheRelativeDirectionTestAndNothingElse) {
    for (const unsigned turns : {256U, 60U, 3U}) {
        for (const std::size_t count : {1U, 2U, 3U, 40U, 300U}) {
            SCOPED_TRACE(testing::Message() << count << " pairs, " << turns << " turns");
            std::mt19937 random(turns);
            const auto pairs = RandomPairs(random, count, turns);
            const auto scratch = std::make_unique<Scratch>();
            const PairTable table(pairs, *scratch);
            std::uint16_t longest = 0;
            std::uint16_t shortest = 0xFFFF;
            for (std::size_t anchor = 0; anchor < count; ++anchor) {
                const std::vector<int> times = TimesMet(table, anchor);
                for (std::size_t other = 0; other < count; ++other) {
                    ASSERT_EQ(times[other],
                              PassTheRelativeTest(pairs[anchor], pairs[other]) ? 1 : 0);
                }
                longest = std::max(longest, table.anchors()[anchor].count);
                shortest = std::min(shortest, table.anchors()[anchor].count);
            }
            EXPECT_EQ(table.longestStretch(), longest);
            EXPECT_EQ(table.shortestStretch(), shortest);
        }
    }
}

// Every turn against every other, the ends of the direction byte among them: 65536 pairs of
// directions in lists of 1024, each with all first directions and four second ones.
TEST(PairTable, HoldsThatForAllDirections) {
    for (int second = 0; second < 256; second += 4) {
        std::vector<MinutiaPair> pairs;
        for (int first = 0; first < 256; ++first) {
            for (int more = 0; more < 4; ++more) {
                pairs.push_back({{1, 2, static_cast<std::uint8_t>(first), 0},
                                 {3, 4, static_cast<std::uint8_t>(second + more), 0}});
            }
        }
        const auto scratch = std::make_unique<Scratch>();
        const PairTable table(pairs, *scratch);
        for (std::size_t anchor = 0; anchor < pairs.size(); anchor += 61) {
            const std::vector<int> times = TimesMet(table, anchor);
            for (std::size_t other = 0; other < pairs.size(); ++other) {
                ASSERT_EQ(times[other], PassTheRelativeTest(pairs[anchor], pairs[other]) ? 1 : 0)
                    << second << ", " << anchor << " and " << other;
            }
        }
    }
}

TEST(PairTable, KnowsTheTurnsOfBothHypothesesOfAPair) {
    std::mt19937 random(5);
    const auto pairs = RandomPairs(random, 300, 256);
    const auto scratch = std::make_unique<Scratch>();
    const PairTable table(pairs, *scratch);
    const ScaledTurns& turns = ScaledTurns::Table();
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const int rotation = pairs[i].second.angle - pairs[i].first.angle;
        const std::array<int, 2> rotations = {rotation, (rotation + 128 + 256) % 256};
        for (std::size_t h = 0; h < 2; ++h) {
            EXPECT_EQ(table.anchors()[i].turns[h].cosine, turns[rotations[h]].cosine);
            EXPECT_EQ(table.anchors()[i].turns[h].sine, turns[rotations[h]].sine);
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
        ASSERT_EQ(table.at(table.anchors()[i].anchor), pairs[i]);
    }
}

}  // namespace
}  // namespace orl::matcher
