// The forms of both bounds on agreement against each other, since what differs by processor must
// not differ in result, and against what they bound.

#include "matcher/matching/kernels/agreement_bound.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/lookup_tables.h"
#include "matcher/matching/alignment.h"
#include "matcher/matching/pair_table.h"
#include "matcher/matching/scaled_turns.h"
#include "tests/matcher/matching/bound_position_lists.h"
#include "tests/matcher/matching/near_pairs_forms.h"

namespace orl::matcher {
namespace {

using test::MarkedIn;
using test::NearPairsOf;
using test::Positions;

std::uint8_t RandomByte(std::mt19937& random) {
    return static_cast<std::uint8_t>(random());
}

using BoundForms = std::vector<std::pair<std::string, AgreementBounds>>;

// All forms of both bounds, each group with its plain one first.
std::vector<BoundForms> AllForms() {
    BoundForms square = {{"plain", plain::agreementBounds}, {"fastest", fastestAgreementBounds()}};
    BoundForms tight = {{"plain tight", plain::tightAgreementBounds},
                        {"fastest tight", fastestTightAgreementBounds()}};
#if defined(__SSE2__)
    square.emplace_back("sse2", sse2::agreementBounds);
    tight.emplace_back("sse2 tight", sse2::tightAgreementBounds);
#endif
#if defined(__SSE2__) && defined(__linux__)
    if (__builtin_cpu_supports("avx2") != 0) {
        square.emplace_back("avx2", avx2::agreementBounds);
        tight.emplace_back("avx2 tight", avx2::tightAgreementBounds);
    }
#endif
    return {square, tight};
}

BoundForms EachForm() {
    BoundForms all;
    for (const BoundForms& forms : AllForms()) {
        all.insert(all.end(), forms.begin(), forms.end());
    }
    return all;
}

std::vector<std::uint16_t> BoundsOf(AgreementBounds form,
                                    const BoundPositions& positions,
                                    std::span<const BoundTask> tasks) {
    constexpr std::uint16_t kUnwritten = 0xABCD;
    std::vector<std::uint16_t> bounds(2 * tasks.size() + 1, kUnwritten);
    form(positions, tasks, std::span(bounds).first(2 * tasks.size()));
    EXPECT_EQ(bounds.back(), kUnwritten);
    bounds.pop_back();
    return bounds;
}

ScaledTurn RandomTurn(std::mt19937& random) {
    return ScaledTurns::Table()[static_cast<std::int16_t>(static_cast<int>(random() % 511) - 255)];
}

TEST(AgreementBounds, AreTheSameInAllFormsForEveryCount) {
    constexpr std::array<std::uint16_t, 15> kCounts = {
        0, 1, 2, 7, 8, 9, 15, 16, 17, 31, 32, 33, 47, 64, 100};
    for (const unsigned extent : {256U, 60U, 8U, 1U, 0U}) {
        std::mt19937 random(extent);
        const Positions positions(random, 200, extent);
        std::vector<BoundTask> tasks;
        for (const std::uint16_t count : kCounts) {
            for (const int begin : {0, 1, 5, 8, 13, 99, 200 - count}) {
                tasks.push_back({static_cast<std::uint16_t>(random() % 200),
                                 static_cast<std::uint16_t>(begin),
                                 static_cast<std::uint16_t>(std::min<int>(count, 200 - begin)),
                                 0,
                                 {RandomTurn(random), RandomTurn(random)}});
            }
        }
        for (const BoundForms& forms : AllForms()) {
            const auto expected = BoundsOf(forms.front().second, positions.view(), tasks);
            for (const auto& [name, form] : forms) {
                EXPECT_EQ(BoundsOf(form, positions.view(), tasks), expected)
                    << name << ", extent " << extent;
            }
        }
    }
}

TEST(AgreementBounds, CountEveryPairAtOneSpotWhateverTheTurn) {
    std::mt19937 random(1);
    const Positions positions(random, 40, 1);
    for (const auto& [name, form] : EachForm()) {
        for (std::uint16_t count = 0; count <= 40; ++count) {
            const std::array<BoundTask, 1> task = {
                {{3, 0, count, 0, {RandomTurn(random), RandomTurn(random)}}}};
            EXPECT_EQ(BoundsOf(form, positions.view(), task), (std::vector{count, count})) << name;
        }
    }
}

TEST(AgreementBounds, CountThousandsOfPairs) {
    std::mt19937 random(9);
    constexpr std::uint16_t kCount = 9000;
    const Positions positions(random, kCount, 1);
    const ScaledTurn turn = ScaledTurns::Table()[40];
    const std::array<BoundTask, 1> task = {{{8000, 0, kCount, 0, {turn, turn}}}};
    for (const auto& [name, form] : EachForm()) {
        EXPECT_EQ(BoundsOf(form, positions.view(), task), (std::vector{kCount, kCount})) << name;
    }
}

TEST(AgreementBounds, WriteNothingWithoutTasks) {
    std::mt19937 random(2);
    const Positions positions(random, 4, 256);
    for (const auto& [name, form] : EachForm()) {
        EXPECT_TRUE(BoundsOf(form, positions.view(), {}).empty()) << name;
    }
}

// Offsets of the two fingers are as large as they get, under turns that add them up.
TEST(AgreementBounds, AreTheSameInAllFormsForTheLargestOffsets) {
    std::mt19937 random(3);
    const Positions positions(random, 64, 0);
    std::vector<BoundTask> tasks;
    for (int rotation = -255; rotation <= 255; ++rotation) {
        const ScaledTurn turn = ScaledTurns::Table()[static_cast<std::int16_t>(rotation)];
        tasks.push_back({static_cast<std::uint16_t>(random() % 64), 0, 64, 0, {turn, turn}});
    }
    for (const BoundForms& forms : AllForms()) {
        const auto expected = BoundsOf(forms.front().second, positions.view(), tasks);
        for (const auto& [name, form] : forms) {
            EXPECT_EQ(BoundsOf(form, positions.view(), tasks), expected) << name;
        }
    }
}

// Pairs of one turn, so that position alone decides. Half of them lie at the limit: where the
// alignment about pair 0 puts them, moved by 18 grid units or a little less.
std::vector<MinutiaPair> PairsAtTheLimit(std::mt19937& random, std::size_t count, int rotation) {
    std::vector<MinutiaPair> pairs = {{{128, 128, 50, 0}, {120, 130, 50, 0}}};
    const double angle = rotation * 2 * 3.14159265358979323846 / 255;
    while (pairs.size() < count) {
        const MinutiaPair pair = {{RandomByte(random), RandomByte(random), 50, 0},
                                  {RandomByte(random), RandomByte(random), 50, 0}};
        const double dx = pair.first.x - 128.0;
        const double dy = pair.first.y - 128.0;
        const double way = static_cast<double>(random() % 628) / 100;
        const double length = 17.2 + static_cast<double>(random() % 90) / 100;
        const long x =
            std::lround(120 + dx * std::cos(angle) - dy * std::sin(angle) + length * std::cos(way));
        const long y =
            std::lround(130 + dx * std::sin(angle) + dy * std::cos(angle) + length * std::sin(way));
        const bool isInGrid = x >= 0 && x <= 255 && y >= 0 && y <= 255;
        pairs.push_back(
            isInGrid && random() % 8 != 0
                ? MinutiaPair{pair.first,
                              {static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y), 50, 0}}
                : pair);
    }
    return pairs;
}

TEST(AgreementBounds, AreNeverBelowTheCountOfAnyAlignment) {
    const auto scratch = std::make_unique<Scratch>();
    int counted = 0;
    int bounded = 0;
    int tightlyBounded = 0;
    int near = 0;
    for (int rotation = -255; rotation <= 255; ++rotation) {
        std::mt19937 random(static_cast<std::uint32_t>(rotation + 255));
        scratch->release();
        const auto pairs = PairsAtTheLimit(random, 60, rotation);
        const PairTable table(pairs, *scratch);
        const AlignmentVote vote(pairs, *scratch);
        for (const std::uint32_t anchor : {0U, 7U}) {
            const auto steps = static_cast<std::int16_t>(rotation);
            const ScaledTurn turn = ScaledTurns::Table()[steps];
            std::array<BoundTask, 1> task = {table.anchors()[anchor]};
            task[0].turns = {turn, turn};
            const int count =
                vote.evaluateAlignment(anchor, steps, {}, EvaluationDepth::kCountOnly).count;
            for (const auto& [name, form] : EachForm()) {
                ASSERT_GE(BoundsOf(form, table.positions(), task)[0], count)
                    << name << ", rotation " << rotation << ", anchor " << anchor;
            }
            counted += count;
            bounded += BoundsOf(plain::agreementBounds, table.positions(), task)[0];
            const NearPairsTask nearTask{
                task[0].anchor, task[0].begin, task[0].count, Cos(steps), Sin(steps)};
            near += MarkedIn(NearPairsOf(plain::nearPairs, table.positions(), nearTask));
            tightlyBounded += BoundsOf(plain::tightAgreementBounds, table.positions(), task)[0];
        }
    }
    EXPECT_GT(counted, 511 * 10);
    // A bound of use: not far above what it bounds, though half of these pairs lie at the limit.
    EXPECT_LT(bounded, 2 * counted);
    // The tight one is hardly ever above the number of pairs that are near enough.
    EXPECT_LT(100 * tightlyBounded, 115 * near);
    EXPECT_LT(100 * tightlyBounded, 95 * bounded);
}

TEST(AgreementBounds, CountAResidualOfExactly18GridUnits) {
    // About an anchor at the origin without a rotation: (18, 0) and the like, and no more.
    const std::vector<MinutiaPair> pairs = {{{100, 100, 50, 0}, {100, 100, 50, 0}},
                                            {{30, 200, 50, 0}, {48, 200, 50, 0}},
                                            {{30, 200, 50, 0}, {12, 200, 50, 0}},
                                            {{255, 0, 50, 0}, {255, 18, 50, 0}},
                                            {{0, 255, 50, 0}, {0, 237, 50, 0}},
                                            {{60, 60, 50, 0}, {72, 73, 50, 0}},   // 144 + 169 = 313
                                            {{60, 60, 50, 0}, {80, 60, 50, 0}},   // 20 off
                                            {{60, 60, 50, 0}, {79, 79, 50, 0}}};  // 26.9 off
    const auto scratch = std::make_unique<Scratch>();
    const PairTable table(pairs, *scratch);
    const ScaledTurn none = ScaledTurns::Table()[0];
    std::array<BoundTask, 1> task = {table.anchors()[0]};
    ASSERT_EQ(task[0].count, 8);
    task[0].turns = {none, none};
    for (const auto& [name, form] : EachForm()) {
        EXPECT_EQ(BoundsOf(form, table.positions(), task)[0], 6) << name;
    }
}

}  // namespace
}  // namespace orl::matcher
