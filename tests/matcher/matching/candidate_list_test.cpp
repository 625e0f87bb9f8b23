#include "matcher/matching/candidate_list.h"

#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

using PlainCandidate = std::tuple<unsigned, unsigned, unsigned>;  // first, second, orders

std::vector<PlainCandidate> AsPlain(const CandidateList& list) {
    std::vector<PlainCandidate> plain;
    for (const Candidate& candidate : list.candidates()) {
        plain.emplace_back(candidate.first, candidate.second, candidate.orders);
    }
    return plain;
}

TEST(CandidateList, IsEmptyAtFirst) {
    const auto scratch = std::make_unique<Scratch>();
    EXPECT_TRUE(CandidateList(*scratch).candidates().empty());
}

TEST(CandidateList, HoldsATriangleOnceWithTheOrdersUnderWhichItWasFound) {
    const auto scratch = std::make_unique<Scratch>();
    CandidateList list(*scratch);
    constexpr std::uint64_t kHighest = std::uint64_t{1} << 63U;
    list.add(
        7,
        128,
        {TriangleBits{0b001, kHighest}, TriangleBits{0b101, 0}, TriangleBits{0b100, kHighest}});
    EXPECT_EQ(
        AsPlain(list),
        (std::vector<PlainCandidate>{{7, 128, 0b011}, {7, 130, 0b110}, {7, 128 + 64 + 63, 0b101}}));
}

TEST(CandidateList, KeepsTheOrderInWhichPairsWereAddedAsItGrows) {
    std::mt19937_64 random(1);
    const auto scratch = std::make_unique<Scratch>();
    CandidateList list(*scratch);
    std::vector<PlainCandidate> expected;
    for (unsigned first = 0; first < 251; ++first) {
        std::array<TriangleBits, kCorners> found{};
        for (TriangleBits& bits : found) {
            bits = TriangleBits{random() & random(), random() & random()};
        }
        list.add(first, 128, found);
        for (unsigned i = 0; i < 128; ++i) {
            unsigned orders = 0;
            for (unsigned q = 0; q < kCorners; ++q) {
                orders |= static_cast<unsigned>(found[q][i / 64] >> i % 64 & 1U) << q;
            }
            if (orders != 0) {
                expected.emplace_back(first, 128 + i, orders);
            }
        }
    }
    ASSERT_GT(expected.size(), 10000U);
    EXPECT_EQ(AsPlain(list), expected);
}

}  // namespace
}  // namespace orl::matcher
