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
#include "matcher/matching/kernels/candidate_ranks.h"
#include "matcher/matching/kernels/pair_test.h"
#include "matcher/matching/kernels/triangle_code_kernels.h"
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
    // Of triangles on a wide square nearly all can be told, of those on a small one some.
    constexpr int kTriangles = 4000;
    for (const auto& [extent, fewestTold] :
         {std::pair{256U, 3000}, {60U, 3000}, {12U, 1500}, {4U, 100}}) {
        std::mt19937 random(extent);
        int told = 0;
        for (const TriangleFeature& triangle : test::RandomTriangles(random, kTriangles, extent)) {
            told += ExpectTheSameStarts(triangle) ? 1 : 0;
        }
        EXPECT_GT(told, fewestTold) << extent;
        EXPECT_LT(told, kTriangles) << extent;
    }
    EXPECT_FALSE(ExpectTheSameStarts(TriangleFeature{}));  // all at one spot
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

}  // namespace
}  // namespace orl::matcher
