#include "tools/command_line/whole_number.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace orl::tools {
namespace {

// What an option gets for the word; the reason when it is refused.
std::string taken(const CLI::Validator& validator, std::string word) {
    const std::string refusal = validator(word);
    return refusal.empty() ? word : refusal;
}

TEST(WholeNumber, IsDecimalDigitsWithinTheLimits) {
    const CLI::Validator oneToTen = wholeNumber(1, 10);
    EXPECT_EQ(taken(oneToTen, "1"), "1");
    EXPECT_EQ(taken(oneToTen, "10"), "10");
    EXPECT_EQ(taken(oneToTen, "007"), "7");
    for (const char* word : {"", "0", "11", "-1", "+1", " 1", "1 ", "1.0", "0x1", "1e0", "one"}) {
        EXPECT_EQ(taken(oneToTen, word),
                  "'" + std::string(word) + "' is not a whole number from 1 to 10");
    }
}

TEST(WholeNumber, ReachesTheLimitsOfItsTypeAndNoFurther) {
    const CLI::Validator anyInt = wholeNumber<std::int32_t>();
    EXPECT_EQ(taken(anyInt, "-2147483648"), "-2147483648");
    EXPECT_EQ(taken(anyInt, "2147483647"), "2147483647");
    EXPECT_NE(taken(anyInt, "2147483648"), "2147483648");
    EXPECT_NE(taken(anyInt, "-2147483649"), "-2147483649");
    const CLI::Validator anySeed = wholeNumber<std::uint64_t>();
    EXPECT_EQ(taken(anySeed, "18446744073709551615"), "18446744073709551615");
    EXPECT_NE(taken(anySeed, "18446744073709551616"), "18446744073709551616");
    EXPECT_NE(taken(anySeed, "-1"), "-1");
}

}  // namespace
}  // namespace orl::tools
