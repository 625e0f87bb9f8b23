// The forms of each kernel of the vote on alignments against each other: what differs by processor
// must not differ in result.

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <numeric>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/lookup_tables.h"
#include "matcher/matching/alignment.h"
#include "matcher/matching/kernels/agreement_bound.h"
#include "matcher/matching/kernels/near_pairs.h"
#include "matcher/matching/kernels/pair_boxes.h"
#include "matcher/matching/kernels/running_sums.h"
#include "matcher/matching/pair_table.h"
#include "matcher/matching/scaled_turns.h"

namespace orl::matcher {
namespace {

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

// Positions in the bounds' scales with the entries behind them that a wide read may touch; those
// agree with everything, so that one counted by mistake shows.
class Positions {
  public:
    Positions(std::mt19937& random, std::size_t count, unsigned extent) {
        for (auto* values : {&firstX_, &firstY_, &secondX_, &secondY_}) {
            values->assign(count + kBoundLanes, 0);
        }
        for (std::size_t i = 0; i < count; ++i) {
            const auto coordinate = [&] {
                const bool isExtreme = extent == 0;
                return static_cast<int>(isExtreme ? 255 * (random() % 2) : random() % extent);
            };
            firstX_[i] = static_cast<std::int16_t>(64 * coordinate());
            firstY_[i] = static_cast<std::int16_t>(64 * coordinate());
            secondX_[i] = static_cast<std::int16_t>(32 * coordinate());
            secondY_[i] = static_cast<std::int16_t>(32 * coordinate());
        }
        for (std::size_t i = count; i < count + kBoundLanes; ++i) {
            firstX_[i] = firstX_[0];
            firstY_[i] = firstY_[0];
            secondX_[i] = secondX_[0];
            secondY_[i] = secondY_[0];
        }
    }

    BoundPositions view() const {
        return {firstX_.data(), firstY_.data(), secondX_.data(), secondY_.data()};
    }

  private:
    std::vector<std::int16_t> firstX_, firstY_, secondX_, secondY_;
};

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

std::vector<std::pair<std::string, NearPairs>> AllNearPairsForms() {
    std::vector<std::pair<std::string, NearPairs>> forms = {{"plain", plain::nearPairs},
                                                            {"fastest", fastestNearPairs()}};
#if defined(__SSE2__)
    forms.emplace_back("sse2", sse2::nearPairs);
#endif
#if defined(__SSE2__) && defined(__linux__)
    if (__builtin_cpu_supports("avx2")) {
        forms.emplace_back("avx2", avx2::nearPairs);
    }
#endif
    return forms;
}

struct NearPairsResult {
    std::vector<float> squaredResiduals;
    std::vector<std::uint64_t> near;
    friend bool operator==(const NearPairsResult&, const NearPairsResult&) = default;
};

// Checks on the way that nothing is written behind the room that a form may use.
NearPairsResult NearPairsOf(NearPairs form, const BoundPositions& positions, NearPairsTask task) {
    constexpr float kUnwritten = -7.0F;
    constexpr std::uint64_t kUnwrittenBits = 0xABCDEF;
    const std::size_t room = (task.count + kNearPairsLanes - 1) / kNearPairsLanes * kNearPairsLanes;
    const std::size_t words = (task.count + kNearPairsWordBits - 1) / kNearPairsWordBits;
    NearPairsResult result{std::vector<float>(room + 1, kUnwritten),
                           std::vector<std::uint64_t>(words + 1, kUnwrittenBits)};
    form(positions,
         task,
         std::span(result.squaredResiduals).first(room),
         std::span(result.near).first(words));
    EXPECT_EQ(result.squaredResiduals.back(), kUnwritten);
    EXPECT_EQ(result.near.back(), kUnwrittenBits);
    result.squaredResiduals.resize(task.count);
    result.near.pop_back();
    return result;
}

int MarkedIn(const NearPairsResult& result) {
    int marked = 0;
    for (const std::uint64_t word : result.near) {
        marked += std::popcount(word);
    }
    return marked;
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
