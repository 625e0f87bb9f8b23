#include "tools/orl_finger/json_line.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace orl::tools {
namespace {

std::string printed(float value) {
    return JsonLine().number(value).str();
}

TEST(JsonLine, PrintsTheFewestDigitsThatReadBackAsTheSameFloat) {
    const struct {
        float value;
        const char* text;
    } cases[] = {
        {0.0F, "0"},
        {1.0F, "1"},
        {-4.21875F, "-4.21875"},          // exact in binary
        {0.1F, "0.1"},                    // not exact, yet one digit suffices
        {31.0F / 43.0F, "0.7209302"},     // 0.72093023...: 7 digits tell its neighbours apart
        {std::sqrt(13.0F), "3.6055512"},  // 3.6055512...
        {16777216.0F, "16777216"},        // 2^24
        {1.0F / 3.0F, "0.33333334"},      // the nearest float lies above a third
        {std::numeric_limits<float>::max(), "3.4028235e+38"},
        {std::numeric_limits<float>::denorm_min(), "1e-45"},
    };
    for (const auto& testCase : cases) {
        EXPECT_EQ(printed(testCase.value), testCase.text);
    }
}

// How many digits a number has, not counting zeros at its ends.
std::size_t significantDigits(const std::string& text) {
    std::string digits;
    for (const char letter : text.substr(0, text.find('e'))) {
        if (letter >= '0' && letter <= '9') {
            digits += letter;
        }
    }
    const std::size_t first = digits.find_first_not_of('0');
    const std::size_t last = digits.find_last_not_of('0');
    return first == std::string::npos ? 0 : last - first + 1;
}

bool readsBackWith(float value, std::size_t digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*e", static_cast<int>(digits) - 1, double{value});
    return std::strtof(text, nullptr) == value;
}

// From here on every float is a whole number, and may be printed in full where that is shorter than
// an exponent.
constexpr float kWholeFrom = 16777216.0F;  // 2^24

TEST(JsonLine, ReadsBackAnyFloatAndNoFewerDigitsWould) {
    constexpr unsigned kSeedOfBits = 20240607;
    std::mt19937 bits(kSeedOfBits);
    for (int i = 0; i < 20000; ++i) {
        const float value = std::bit_cast<float>(static_cast<std::uint32_t>(bits()));
        if (!std::isfinite(value) || value == 0.0F) {
            continue;
        }
        const std::string text = printed(value);
        ASSERT_EQ(std::strtof(text.c_str(), nullptr), value) << text << ", seed " << kSeedOfBits;
        if (std::abs(value) >= kWholeFrom) {
            continue;
        }
        const std::size_t digits = significantDigits(text);
        ASSERT_TRUE(digits <= 1 || !readsBackWith(value, digits - 1))
            << text << ", seed " << kSeedOfBits;
    }
}

TEST(JsonLine, ShowsWhatIsNoNumberAsNull) {
    EXPECT_EQ(printed(std::numeric_limits<float>::quiet_NaN()), "null");
    EXPECT_EQ(printed(std::numeric_limits<float>::infinity()), "null");
}

TEST(JsonLine, PrintsTheWholeRangeOfIntegers) {
    EXPECT_EQ(JsonLine().number(std::numeric_limits<std::int64_t>::min()).str(),
              "-9223372036854775808");
    EXPECT_EQ(JsonLine().number(std::numeric_limits<std::int64_t>::max()).str(),
              "9223372036854775807");
}

TEST(JsonLine, KeepsTheOrderOfKeysAndSeparatesWithCommas) {
    JsonLine line;
    line.beginObject().key("z").number(std::int64_t{1}).key("a").beginArray();
    line.number(std::int64_t{2}).boolean(true).beginObject().endObject().beginArray().endArray();
    line.endArray().key("e").boolean(false).endObject();
    EXPECT_EQ(line.str(), R"({"z":1,"a":[2,true,{},[]],"e":false})");
}

TEST(JsonLine, EscapesWhatJsonForbidsInText) {
    EXPECT_EQ(JsonLine().text("a\"b\\c\n\t\x01/").str(), R"("a\"b\\c\n\t\u0001/")");
    EXPECT_EQ(JsonLine().text("\xC3\xBC").str(), "\"\xC3\xBC\"");  // UTF-8 stays
}

TEST(JsonLine, ShowsBytesThatAreNotUtf8AsTheReplacementCharacter) {
    EXPECT_EQ(JsonLine().text("a\xFFz").str(), "\"a\xEF\xBF\xBDz\"");
}

}  // namespace
}  // namespace orl::tools
