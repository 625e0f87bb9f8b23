#include "tools/orl_unit/finger_names.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tools/orl_unit/command_error.h"
#include "tools/orl_unit/finger_argument.h"

namespace orl::unit {
namespace {

TEST(FingerNames, GiveTheTenFingersTheFrameworksPositions) {
    const std::pair<const char*, int> fingers[] = {
        {"right-thumb", 1},
        {"right-index", 2},
        {"right-middle", 3},
        {"right-ring", 4},
        {"right-little", 5},
        {"left-thumb", 6},
        {"left-index", 7},
        {"left-middle", 8},
        {"left-ring", 9},
        {"left-little", 10},
    };
    for (const auto& [name, position] : fingers) {
        EXPECT_EQ(subFactorFromName(name), position) << name;
    }
}

TEST(FingerNames, KnowTheCombinedFingersTheUnspecifiedOnesAndAny) {
    EXPECT_EQ(subFactorFromName("right-four-fingers"), 13);
    EXPECT_EQ(subFactorFromName("left-four-fingers"), 14);
    EXPECT_EQ(subFactorFromName("two-thumbs"), 15);
    EXPECT_EQ(subFactorFromName("unspecified-1"), 0xF5);
    EXPECT_EQ(subFactorFromName("unspecified-10"), 0xFE);
    EXPECT_EQ(subFactorFromName("any"), 0xFF);
}

TEST(FingerNames, EveryNamedSubFactorReadsBack) {
    int namedCount = 0;
    for (int subFactor = 0; subFactor <= 0xFF; ++subFactor) {
        const std::string name = subFactorName(static_cast<std::uint8_t>(subFactor));
        if (const auto readBack = subFactorFromName(name)) {
            EXPECT_EQ(*readBack, subFactor) << name;
            EXPECT_NE(knownFingerNames().find(name), std::string::npos) << name;
            ++namedCount;
        } else {
            EXPECT_EQ(name, "sub-factor-" + std::to_string(subFactor));
        }
    }
    EXPECT_EQ(namedCount, 10 + 3 + 10 + 1);
}

TEST(FingerNames, IgnoreTheCaseOfLetters) {
    EXPECT_EQ(subFactorFromName("Right-INDEX"), 2);
}

TEST(FingerNames, RefuseWhatIsNoName) {
    for (const char* name : {"",
                             "right",
                             "right-index ",
                             "right_index",
                             "thumb",
                             "0",
                             "unspecified-0",
                             "unspecified-11"}) {
        EXPECT_EQ(subFactorFromName(name), std::nullopt) << name;
    }
}

TEST(FingerNames, SingleFingersAreThePositionsOneToTen) {
    for (int position = 0; position <= 0xFF; ++position) {
        EXPECT_EQ(isSingleFinger(static_cast<std::uint8_t>(position)),
                  position >= 1 && position <= 10)
            << position;
    }
}

TEST(FingerArgument, NamesTheKnownFingersWhenItIsUnknown) {
    try {
        fingerArgument("pinky");
        FAIL() << "accepted";
    } catch (const CommandError& error) {
        EXPECT_NE(std::string(error.what()).find("unknown finger 'pinky'; known are right-thumb, "),
                  std::string::npos)
            << error.what();
    }
}

TEST(FingerArgument, AnyMayBeAskedForButNotEnrolled) {
    EXPECT_EQ(fingerArgument("any"), 0xFF);
    EXPECT_THROW(enrollableFinger("any"), CommandError);
    EXPECT_EQ(enrollableFinger("left-ring"), 9);
}

}  // namespace
}  // namespace orl::unit
