// The forms of the smaller kernels of the vote on alignments against plain reckoning: boxes,
// running sums and scaled turns.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/lookup_tables.h"
#include "matcher/matching/kernels/pair_boxes.h"
#include "matcher/matching/kernels/running_sums.h"
#include "matcher/matching/scaled_turns.h"

namespace orl::matcher {
namespace {

template <typename Boxes>
PairBoxAreas AreasOf(const std::vector<MinutiaPair>& pairs) {
    Boxes boxes(pairs.front());
    for (const MinutiaPair& pair : pairs) {
        boxes.extend(pair);
    }
    return boxes.areas();
}

TEST(PairBoxes, SpanBothVerticesInAllForms) {
    std::mt19937 random(11);
    for (int i = 0; i < 200; ++i) {
        std::vector<MinutiaPair> pairs;
        const unsigned extent = i % 2 == 0 ? 256 : 200;
        for (unsigned n = 0; n <= random() % 8; ++n) {
            const auto byte = [&] { return static_cast<std::uint8_t>(random() % extent); };
            pairs.push_back({{byte(), byte(), byte(), byte()}, {byte(), byte(), byte(), byte()}});
        }
        const auto areaOf = [&](auto vertexOf) {
            std::array<int, 4> box = {255, 0, 255, 0};
            for (const MinutiaPair& pair : pairs) {
                const TriangleVertex& vertex = vertexOf(pair);
                box = {std::min<int>(box[0], vertex.x),
                       std::max<int>(box[1], vertex.x),
                       std::min<int>(box[2], vertex.y),
                       std::max<int>(box[3], vertex.y)};
            }
            return static_cast<float>((box[1] - box[0] + 1) * (box[3] - box[2] + 1));
        };
        const PairBoxAreas expected{areaOf([](const MinutiaPair& pair) { return pair.first; }),
                                    areaOf([](const MinutiaPair& pair) { return pair.second; })};
        EXPECT_EQ(AreasOf<plain::PairBoxes>(pairs), expected);
        EXPECT_EQ(AreasOf<PairBoxes>(pairs), expected);
    }
}

TEST(RunningSums, AreTheSameInAllForms) {
    std::mt19937 random(12);
    for (const std::size_t size : {0U, 8U, 64U, 256U}) {
        std::vector<std::uint16_t> counts(size);
        for (std::uint16_t& count : counts) {
            count = static_cast<std::uint16_t>(random() % 256);
        }
        std::vector<std::uint16_t> expected(size);
        std::partial_sum(counts.begin(), counts.end(), expected.begin());
        std::vector<std::uint16_t> plainSums = counts;
        plain::makeRunningSums(plainSums);
        EXPECT_EQ(plainSums, expected);
        makeRunningSums(counts);
        EXPECT_EQ(counts, expected);
    }
    std::vector<std::uint16_t> most(8, 0);
    most[2] = 32767;
    makeRunningSums(most);
    EXPECT_EQ(most, (std::vector<std::uint16_t>{0, 0, 32767, 32767, 32767, 32767, 32767, 32767}));
}

TEST(ScaledTurns, HoldTheTablesCosinesAndSinesIn32767ths) {
    for (int rotation = -255; rotation <= 255; ++rotation) {
        const auto steps = static_cast<std::int16_t>(rotation);
        const ScaledTurn turn = ScaledTurns::Table()[steps];
        EXPECT_NEAR(turn.cosine, 32767.0 * static_cast<double>(Cos(steps)), 0.51) << rotation;
        EXPECT_NEAR(turn.sine, 32767.0 * static_cast<double>(Sin(steps)), 0.51) << rotation;
    }
}

}  // namespace
}  // namespace orl::matcher
