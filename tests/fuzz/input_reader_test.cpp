#include "fuzz/input_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orl::fuzz {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint8_t kInput[] = {7, 200, 3, 4, 5};

TEST(InputReader, GivesBytesInOrderAndZerosBehindTheEnd) {
    InputReader input({kInput, 2});
    EXPECT_FALSE(input.AtEnd());
    EXPECT_EQ(input.Byte(), 7);
    EXPECT_EQ(input.Byte(), 200);
    EXPECT_TRUE(input.AtEnd());
    EXPECT_EQ(input.Byte(), 0);
    EXPECT_THAT(input.Bytes(3), IsEmpty());
}

TEST(InputReader, GivesFiguresBelowALimit) {
    InputReader input(kInput);
    EXPECT_EQ(input.Below(4), 3U);     // 7 mod 4
    EXPECT_EQ(input.Below(150), 50U);  // 200 mod 150
    EXPECT_TRUE(input.Once(4));        // 3 is the last of 0 to 3
    EXPECT_FALSE(input.Once(4));       // 4 mod 4 is 0
}

TEST(InputReader, GivesAsManyBytesAsThereAre) {
    InputReader input(kInput);
    EXPECT_THAT(input.Bytes(2), ElementsAre(7, 200));
    EXPECT_THAT(input.Bytes(9), ElementsAre(3, 4, 5));
    EXPECT_TRUE(input.AtEnd());
}

}  // namespace
}  // namespace orl::fuzz
