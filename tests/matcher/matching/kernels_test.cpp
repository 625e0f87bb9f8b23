// The forms of each kernel against each other: what differs by processor must not differ in result.

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
#include "matcher/matching/kernels/agreement_bound.h"
#include "matcher/matching/kernels/candidate_ranks.h"
#include "matcher/matching/kernels/pair_test.h"
#include "matcher/matching/kernels/triangle_code_kernels.h"
#include "matcher/matching/pair_table.h"
#include "matcher/matching/scaled_turns.h"
#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

std::uint8_t RandomByte(std::mt19937& random) {
    return static_cast<std::uint8_t>(random());
}

TriangleCode RandomCode(std::mt19937& random) {
    TriangleCode code{};
    for (const std::size_t group : {kTurnGroup, kNextEdgeGroup, kPreviousEdgeGroup, kSideGroup}) {
        for (std::size_t j = 0; j < kCorners; ++j) {
            code.bytes[group + j] = RandomByte(random);
        }
    }
    return code;
}

// The code with each byte moved by up to `reach` either way, on the ring of bytes.
TriangleCode CodeNear(std::mt19937& random, const TriangleCode& code, int reach) {
    TriangleCode near{};
    for (std::size_t i = 0; i < code.bytes.size(); ++i) {
        const auto width = static_cast<unsigned>(2 * reach + 1);
        const int moved = code.bytes[i] + static_cast<int>(random() % width) - reach;
        near.bytes[i] = i % 4 == 3 ? std::uint8_t{0} : static_cast<std::uint8_t>(moved);
    }
    return near;
}

#if defined(__SSE2__)

QuarterTurnStarts RandomStarts(std::mt19937& random) {
    QuarterTurnStarts starts{};
    for (std::uint8_t& start : starts) {
        start = static_cast<std::uint8_t>(random() % kCorners);
    }
    return starts;
}

void ExpectTheSameCodes(const TriangleFeature& triangle, const QuarterTurnStarts& starts) {
    const QuarterTurnBearings& bearings = QuarterTurnBearings::Table();
    QuarterTurnCodes plainCodes;
    QuarterTurnCodes codes;
    plain::codesOfQuarterTurns(triangle, starts, bearings, plainCodes);
    sse2::codesOfQuarterTurns(triangle, starts, bearings, codes);
    ASSERT_EQ(codes, plainCodes);
    ASSERT_EQ(sse2::codeOf(triangle, bearings), plain::codeOf(triangle, bearings));
}

// Whether the first vertices can be told.
bool ExpectTheSameStarts(const TriangleFeature& triangle) {
    QuarterTurnStarts plainStarts{};
    QuarterTurnStarts starts{};
    const bool isTold = plain::startsOfQuarterTurns(triangle, plainStarts);
    EXPECT_EQ(sse2::startsOfQuarterTurns(triangle, starts), isTold);
    if (isTold) {
        EXPECT_EQ(starts, plainStarts);
    }
    return isTold;
}

TEST(TriangleCodeKernels, MakeTheSameCodesOfQuarterTurns) {
    for (const unsigned extent : {256U, 30U, 3U, 1U}) {
        std::mt19937 random(extent);
        for (TriangleFeature triangle : test::RandomTriangles(random, 3000, extent)) {
            if (random() % 4 == 0) {
                triangle.vertices[1].angle = triangle.vertices[0].angle;
            }
            ExpectTheSameCodes(triangle, RandomStarts(random));
        }
    }
}

TEST(TriangleCodeKernels, MakeTheSameCodesOfTheGridsCorners) {
    constexpr std::array<std::uint8_t, 4> kBytes = {0, 127, 128, 255};
    for (unsigned i = 0; i < (1U << 18U); i += 5) {
        const auto byte = [&](unsigned n) { return kBytes[i >> 2 * n & 3U]; };
        const TriangleFeature triangle{.vertices = {{byte(0), byte(1), byte(2), 0},
                                                    {byte(3), byte(4), byte(5), 1},
                                                    {byte(6), byte(7), byte(8), 2}},
                                       .sides = {byte(0), byte(4), byte(8), byte(2)}};
        ExpectTheSameCodes(triangle, {0, 1, 2, static_cast<std::uint8_t>(i % kCorners)});
        ExpectTheSameStarts(triangle);
    }
}

TEST(TriangleCodeKernels, TellTheFirstVerticesOfTheSameTriangles) {
    for (const unsigned extent : {256U, 60U, 12U, 4U, 1U}) {
        std::mt19937 random(extent);
        int told = 0;
        for (const TriangleFeature& triangle : test::RandomTriangles(random, 4000, extent)) {
            told += ExpectTheSameStarts(triangle) ? 1 : 0;
        }
        EXPECT_GT(told, extent == 256 ? 3000 : -1);
        EXPECT_LT(told, extent == 1 ? 1 : 4000);
    }
}

TEST(TriangleCodeKernels, TurnCodesAlike) {
    std::mt19937 random(11);
    for (int i = 0; i < 2000; ++i) {
        const TriangleCode code = RandomCode(random);
        for (std::size_t start = 0; start < kCorners; ++start) {
            ASSERT_EQ(sse2::turnedCode(code, start), plain::turnedCode(code, start));
        }
    }
}

TEST(PairTestKernels, RankAlikeWhateverOrientationsAgree) {
    std::mt19937 random(12);
    std::array<int, 16> met{};  // by which of the four agree
    for (int i = 0; i < 40000; ++i) {
        const TriangleCode first = RandomCode(random);
        QuarterTurnCodes second;
        for (TriangleCode& code : second) {
            code = CodeNear(random, first, 17 + static_cast<int>(random() % 10));
            for (std::size_t j = 0; j < kCorners; ++j) {
                // Sides do not wrap.
                code.bytes[kSideGroup + j] = static_cast<std::uint8_t>(std::clamp(
                    first.bytes[kSideGroup + j] + static_cast<int>(random() % 41) - 20, 0, 255));
            }
        }
        const OrientationRanks expected = plain::ranksOf(second, first);
        ASSERT_EQ(sse2::ranksOf(second, first), expected);
        std::size_t which = 0;
        for (std::size_t m = 0; m < kOrientations; ++m) {
            which |= std::size_t{expected[m] != kNotAlike} << m;
        }
        ++met[which];
    }
    for (std::size_t which = 0; which < met.size(); ++which) {
        EXPECT_GT(met[which], 100) << which;
    }
}

// Every pair of bytes in one place, all others equal.
TEST(PairTestKernels, RankAlikeWhateverTwoBytesMeet) {
    for (const std::size_t place : {0U, 2U, 4U, 6U, 8U, 10U, 12U, 14U}) {
        for (unsigned a = 0; a < 256; ++a) {
            for (unsigned b = 0; b < 256; ++b) {
                TriangleCode first{};
                TriangleCode second{};
                for (const std::size_t group : {kTurnGroup, kNextEdgeGroup, kSideGroup}) {
                    second.bytes[group + 1] = 9;  // so that no factor of the cost is nothing
                }
                first.bytes[place] = static_cast<std::uint8_t>(a);
                second.bytes[place] = static_cast<std::uint8_t>(b);
                const QuarterTurnCodes all = {second, first, first, second};
                ASSERT_EQ(sse2::ranksOf(all, first), plain::ranksOf(all, first))
                    << a << " and " << b << " in byte " << place;
            }
        }
    }
}

TEST(PairTestKernels, FindTheSameSidesNearInAnyBlocks) {
    std::mt19937 random(15);
    for (int i = 0; i < 3000; ++i) {
        const auto firstSides = static_cast<std::uint32_t>(random());
        alignas(16) std::array<std::uint32_t, kTrianglesPerStretch> sides;
        for (std::uint32_t& word : sides) {
            word = static_cast<std::uint32_t>(random());
            for (unsigned shift = 0; shift < 24 && random() % 8 != 0; shift += 8) {
                const auto byte =
                    static_cast<std::uint8_t>((firstSides >> shift) + random() % 37 - 18);
                word = (word & ~(0xFFU << shift)) | std::uint32_t{byte} << shift;
            }
        }
        const std::size_t begin = random() % 9;
        const std::size_t end = begin + random() % (9 - begin);
        const TriangleBits bits = sse2::nearSides(sides, begin, end, firstSides);
        const TriangleBits expected = plain::nearSides(sides, begin, end, firstSides);
        ASSERT_EQ(bits[0], expected[0]);
        ASSERT_EQ(bits[1], expected[1]);
    }
}

#endif

std::vector<std::pair<std::string, RankCandidates>> AllCandidateRankings() {
    std::vector<std::pair<std::string, RankCandidates>> forms = {
        {"plain", plain::rankCandidates}, {"fastest", fastestRankCandidates()}};
#if defined(__SSE2__)
    forms.emplace_back("sse2", sse2::rankCandidates);
#endif
#if defined(__SSE2__) && defined(__linux__)
    if (__builtin_cpu_supports("avx2") != 0) {
        forms.emplace_back("avx2", avx2::rankCandidates);
    }
#endif
    return forms;
}

// Triangles of two fingers whose codes resemble each other under some orders, and all pairs of
// them.
struct CandidateSet {
    explicit CandidateSet(std::mt19937& random) : first(40), second(30) {
        for (QuarterTurnCodes& codes : second) {
            const TriangleCode code = RandomCode(random);
            for (TriangleCode& turned : codes) {
                turned = CodeNear(random, code, 2);
            }
        }
        for (std::size_t t = 0; t < first.size(); ++t) {
            const auto reach = 20 + static_cast<int>(random() % 30);
            const TriangleCode code = CodeNear(random, second[t % second.size()][0], reach);
            for (std::size_t order = 0; order < kCorners; ++order) {
                first[t][order] = plain::turnedCode(code, (order + t) % kCorners);
            }
        }
        for (std::uint16_t t = 0; t < first.size(); ++t) {
            for (std::uint16_t u = 0; u < second.size(); ++u) {
                candidates.push_back({t, u, 1 + static_cast<std::uint32_t>(random() % 7)});
            }
        }
    }

    std::vector<OrientationRanks> ranked(RankCandidates form) const {
        std::vector<OrientationRanks> ranks(candidates.size());
        form({first.data(), second.data()}, candidates, ranks.data());
        return ranks;
    }

    std::vector<CyclicCodes> first;
    std::vector<QuarterTurnCodes> second;
    std::vector<Candidate> candidates;
};

TEST(CandidateRanks, AreTheSameInAllForms) {
    std::size_t alike = 0;
    for (std::uint32_t seed = 0; seed < 40; ++seed) {
        std::mt19937 random(seed);
        const CandidateSet set(random);
        const auto expected = set.ranked(plain::rankCandidates);
        for (const auto& [name, form] : AllCandidateRankings()) {
            ASSERT_EQ(set.ranked(form), expected) << name << ", seed " << seed;
        }
        for (const OrientationRanks& ranks : expected) {
            alike += ranks[0] != kNotAlike ? 1 : 0;
        }
    }
    EXPECT_GT(alike, 100U);
}

TEST(CandidateRanks, AreTheBestOfAllOrders) {
    TriangleCode near{};
    near.bytes = {20, 10, 10, 0, 10, 10, 10, 0, 10, 10, 10, 0, 10, 10, 10, 0};
    TriangleCode nearer{};
    nearer.bytes = {10, 10, 10, 0, 10, 10, 10, 0, 10, 10, 10, 0, 10, 10, 10, 0};
    const TriangleCode farther{};
    TriangleCode base{};
    base.bytes = {11, 10, 10, 0, 20, 10, 10, 0, 10, 10, 10, 0, 12, 10, 10, 0};
    const CyclicCodes first = {near, nearer, farther};
    const QuarterTurnCodes second = {base, base, base, base};
    // Turn 1, edge 10, side 2: 29 * 292 * 113 = 956884, below 2^20. Turn 9: 263 * 292 * 113 =
    // 8677948, 8 * 2^20 and some. Turn 11, edge 20, side 12: 321 * 585 * 682 = 128069370, 122 *
    // 2^20 and some.
    for (const auto& [orders, rank] :
         {std::pair{1U, 8}, {2U, 0}, {3U, 0}, {4U, 122}, {5U, 8}, {6U, 0}, {7U, 0}}) {
        for (const auto& [name, form] : AllCandidateRankings()) {
            const Candidate candidate{0, 0, orders};
            OrientationRanks ranks{};
            form({&first, &second}, {&candidate, 1}, &ranks);
            EXPECT_EQ(ranks[0], rank) << name << ", orders " << orders;
            EXPECT_EQ(ranks[3], rank) << name << ", orders " << orders;
        }
    }
}

TEST(PairTestKernels, RankAsTheFormulaSays) {
    // 34816 / 35 = 994, 17408 / 18 = 967.
    EXPECT_EQ(costFactor(34, kMaxTurnDifferenceSteps), 994);
    EXPECT_EQ(costFactor(34, kMaxEdgeDifferenceSteps), 994);
    EXPECT_EQ(costFactor(17, kMaxSideDifferenceGridUnits), 967);
    EXPECT_EQ(costFactor(10, kMaxEdgeDifferenceSteps), 292);
    EXPECT_EQ(costFactor(9, kMaxSideDifferenceGridUnits), 512);
    EXPECT_EQ(rankOfFactors(994, 994, 967), 911);  // 955430812 / 2^20 = 911.2
    EXPECT_EQ(rankOfFactors(292, 292, 512), 41);   // 43655168 / 2^20 = 41.6
    EXPECT_EQ(rankOfFactors(0, 994, 967), 0);
    EXPECT_EQ(rankOfFactors(994, 0, 967), 0);
    EXPECT_EQ(rankOfFactors(994, 994, 0), 0);
}

std::vector<std::pair<std::string, AgreementBounds>> AllForms() {
    std::vector<std::pair<std::string, AgreementBounds>> forms = {
        {"plain", plain::agreementBounds}, {"fastest", fastestAgreementBounds()}};
#if defined(__SSE2__)
    forms.emplace_back("sse2", sse2::agreementBounds);
#endif
#if defined(__SSE2__) && defined(__linux__)
    if (__builtin_cpu_supports("avx2") != 0) {
        forms.emplace_back("avx2", avx2::agreementBounds);
    }
#endif
    return forms;
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
                                 {RandomTurn(random), RandomTurn(random)}});
            }
        }
        const auto expected = BoundsOf(plain::agreementBounds, positions.view(), tasks);
        for (const auto& [name, form] : AllForms()) {
            EXPECT_EQ(BoundsOf(form, positions.view(), tasks), expected)
                << name << ", extent " << extent;
        }
    }
}

TEST(AgreementBounds, CountEveryPairAtOneSpotWhateverTheTurn) {
    std::mt19937 random(1);
    const Positions positions(random, 40, 1);
    for (const auto& [name, form] : AllForms()) {
        for (std::uint16_t count = 0; count <= 40; ++count) {
            const std::array<BoundTask, 1> task = {
                {{3, 0, count, {RandomTurn(random), RandomTurn(random)}}}};
            EXPECT_EQ(BoundsOf(form, positions.view(), task), (std::vector{count, count})) << name;
        }
    }
}

TEST(AgreementBounds, WriteNothingWithoutTasks) {
    std::mt19937 random(2);
    const Positions positions(random, 4, 256);
    for (const auto& [name, form] : AllForms()) {
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
        tasks.push_back({static_cast<std::uint16_t>(random() % 64), 0, 64, {turn, turn}});
    }
    const auto expected = BoundsOf(plain::agreementBounds, positions.view(), tasks);
    for (const auto& [name, form] : AllForms()) {
        EXPECT_EQ(BoundsOf(form, positions.view(), tasks), expected) << name;
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
    for (int rotation = -255; rotation <= 255; ++rotation) {
        std::mt19937 random(static_cast<std::uint32_t>(rotation + 255));
        scratch->release();
        const auto pairs = PairsAtTheLimit(random, 60, rotation);
        const PairTable table(pairs, *scratch);
        const AlignmentVote vote(pairs, *scratch);
        for (const std::uint32_t anchor : {0U, 7U}) {
            const auto steps = static_cast<std::int16_t>(rotation);
            const std::size_t place = table.placeOf(anchor);
            const ScaledTurn turn = ScaledTurns::Table()[steps];
            const std::array<BoundTask, 1> task = {{{static_cast<std::uint16_t>(place),
                                                     table.alike(place).begin,
                                                     table.alike(place).count,
                                                     {turn, turn}}}};
            const int count =
                vote.evaluateAlignment(anchor, steps, {}, EvaluationDepth::kCountOnly).count;
            for (const auto& [name, form] : AllForms()) {
                ASSERT_GE(BoundsOf(form, table.positions(), task)[0], count)
                    << name << ", rotation " << rotation << ", anchor " << anchor;
            }
            counted += count;
            bounded += BoundsOf(plain::agreementBounds, table.positions(), task)[0];
        }
    }
    EXPECT_GT(counted, 511 * 10);
    // A bound of use: not far above what it bounds, though half of these pairs lie at the limit.
    EXPECT_LT(bounded, 2 * counted);
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
                                            {{60, 60, 50, 0}, {75, 75, 50, 0}}};  // 21.2 off
    const auto scratch = std::make_unique<Scratch>();
    const PairTable table(pairs, *scratch);
    const ScaledTurn none = ScaledTurns::Table()[0];
    const std::array<BoundTask, 1> task = {
        {{static_cast<std::uint16_t>(table.placeOf(0)), 0, 8, {none, none}}}};
    for (const auto& [name, form] : AllForms()) {
        EXPECT_EQ(BoundsOf(form, table.positions(), task)[0], 6) << name;
    }
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
