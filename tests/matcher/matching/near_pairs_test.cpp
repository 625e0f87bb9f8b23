// The forms of the kernel that finds near pairs against each other: what differs by processor must
// not differ in result.

#include "matcher/matching/kernels/near_pairs.h"

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/lookup_tables.h"
#include "matcher/matching/pair_table.h"
#include "matcher/matching/scratch.h"
#include "tests/matcher/matching/bound_position_lists.h"
#include "tests/matcher/matching/near_pairs_forms.h"

namespace orl::matcher {
namespace {

using test::AllNearPairsForms;
using test::MarkedIn;
using test::NearPairsOf;
using test::NearPairsResult;
using test::Positions;

TEST(NearPairs, AreTheSameToTheLastBitInAllFormsForEveryCountAndRotation) {
    for (const unsigned extent : {256U, 60U, 8U, 1U, 0U}) {
        std::mt19937 random(extent);
        const Positions positions(random, 200, extent);
        for (int rotation = -255; rotation <= 255; ++rotation) {
            const auto steps = static_cast<std::int16_t>(rotation);
            const auto count = static_cast<std::uint16_t>((rotation + 255) % 150);
            const NearPairsTask task{static_cast<std::uint16_t>(random() % 200),
                                     static_cast<std::uint16_t>(random() % (200U - count)),
                                     count,
                                     Cos(steps),
                                     Sin(steps)};
            const auto expected = NearPairsOf(plain::nearPairs, positions.view(), task);
            for (const auto& [name, form] : AllNearPairsForms()) {
                ASSERT_EQ(NearPairsOf(form, positions.view(), task), expected)
                    << name << ", extent " << extent << ", rotation " << rotation;
            }
        }
    }
}

TEST(NearPairs, MarkAResidualOfExactly18GridUnitsAndNoMore) {
    const std::vector<MinutiaPair> pairs = {{{100, 100, 50, 0}, {100, 100, 50, 0}},
                                            {{30, 200, 50, 0}, {48, 200, 50, 0}},  // 18
                                            {{255, 0, 50, 0}, {255, 18, 50, 0}},   // 18
                                            {{60, 60, 50, 0}, {78, 61, 50, 0}},    // 324 + 1
                                            {{60, 60, 50, 0}, {72, 73, 50, 0}},    // 144 + 169
                                            {{60, 60, 50, 0}, {73, 73, 50, 0}},    // 169 + 169
                                            {{0, 255, 50, 0}, {0, 236, 50, 0}}};   // 19
    const auto scratch = std::make_unique<Scratch>();
    const PairTable table(pairs, *scratch);
    for (const auto& [name, form] : AllNearPairsForms()) {
        const NearPairsResult result =
            NearPairsOf(form, table.positions(), {0, 0, 7, Cos(0), Sin(0)});
        EXPECT_EQ(result.near, (std::vector<std::uint64_t>{0b0010111})) << name;
        EXPECT_EQ(result.squaredResiduals,
                  (std::vector<float>{0.0F, 324.0F, 324.0F, 325.0F, 313.0F, 338.0F, 361.0F}))
            << name;
    }
}

TEST(NearPairs, MarkEveryPairAtOneSpotOfAnyNumber) {
    std::mt19937 random(1);
    const Positions positions(random, 300, 1);
    for (const auto& [name, form] : AllNearPairsForms()) {
        for (std::uint16_t count = 0; count <= 300; ++count) {
            const NearPairsResult result =
                NearPairsOf(form, positions.view(), {3, 0, count, Cos(40), Sin(40)});
            ASSERT_EQ(MarkedIn(result), int{count}) << name;
            // The lowest bits first: full words, then the rest.
            ASSERT_TRUE(count == 0 ||
                        result.near.back() == ~std::uint64_t{0} >> ((64U - count % 64U) % 64U))
                << name << ", " << count;
        }
    }
}

}  // namespace
}  // namespace orl::matcher
