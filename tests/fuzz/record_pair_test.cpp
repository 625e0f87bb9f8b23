#include "fuzz/record_pair.h"

#include <numeric>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orl::fuzz {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(RecordPair, IsSplitAsItWasJoined) {
    std::vector<std::uint8_t> probe(300);
    std::iota(probe.begin(), probe.end(), std::uint8_t{0});
    const std::vector<std::uint8_t> candidate = {9, 8, 7};
    const auto input = JoinPair(probe, candidate);
    ASSERT_EQ(input.size(), 305U);
    EXPECT_EQ(input[0], 1);  // 300 = 1 * 256 + 44
    EXPECT_EQ(input[1], 44);
    const RecordPair pair = SplitPair(input);
    EXPECT_TRUE(std::ranges::equal(pair.probe, probe));
    EXPECT_TRUE(std::ranges::equal(pair.candidate, candidate));
}

TEST(RecordPair, TakesAllForTheFirstWhenTheSizeIsTooLarge) {
    const std::vector<std::uint8_t> input = {0, 4, 1, 2, 3};
    EXPECT_THAT(SplitPair(input).probe, ElementsAre(1, 2, 3));
    EXPECT_THAT(SplitPair(input).candidate, IsEmpty());
}

TEST(RecordPair, OfAnInputWithoutASizeIsEmpty) {
    const std::vector<std::uint8_t> input = {5};
    EXPECT_THAT(SplitPair(input).probe, IsEmpty());
    EXPECT_THAT(SplitPair(input).candidate, IsEmpty());
}

}  // namespace
}  // namespace orl::fuzz
