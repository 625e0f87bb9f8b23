#include "tools/orl_finger/impression.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

namespace orl::tools {
namespace {

constexpr std::uint64_t kSeed = 2024;
constexpr std::uint64_t kFingers = 40;
constexpr std::uint64_t kImpressions = 4;

std::vector<FingerRecord> drawRecords() {
    std::vector<FingerRecord> records;
    for (std::uint64_t number = 1; number <= kFingers; ++number) {
        RandomStream ofFinger = RandomStream::forPart(kSeed, number, 0);
        const MasterFinger finger = drawFinger(ofFinger);
        for (std::uint64_t impression = 1; impression <= kImpressions; ++impression) {
            RandomStream random = RandomStream::forPart(kSeed, number, impression);
            records.push_back(drawImpression(finger, random));
        }
    }
    return records;
}

TEST(Impression, LooksLikeARecordFromTheField) {
    for (const FingerRecord& record : drawRecords()) {
        EXPECT_EQ(record.width, 388);
        EXPECT_EQ(record.height, 374);
        EXPECT_EQ(record.pixelsPerCm, 197);
        EXPECT_GE(record.quality, 1);
        EXPECT_LE(record.quality, 100);
        EXPECT_GE(record.minutiae.size(), kFewestDetected);
        EXPECT_LE(record.minutiae.size(), 128U);
        for (const RecordMinutia& minutia : record.minutiae) {
            EXPECT_TRUE(minutia.type == 1 || minutia.type == 2);
            EXPECT_LT(minutia.x, record.width);
            EXPECT_LT(minutia.y, record.height);
            EXPECT_GE(minutia.quality, 1);
            EXPECT_LE(minutia.quality, 100);
        }
    }
}

TEST(Impression, HasTwentyFiveToSeventyMinutiaeAsARule) {
    std::size_t typical = 0;
    const std::vector<FingerRecord> records = drawRecords();
    for (const FingerRecord& record : records) {
        typical += record.minutiae.size() >= 25 && record.minutiae.size() <= 70 ? 1 : 0;
    }
    EXPECT_GE(typical * 100, records.size() * 90);
}

TEST(Impression, ListsMinutiaeFromTopToBottom) {
    for (const FingerRecord& record : drawRecords()) {
        EXPECT_TRUE(std::is_sorted(
            record.minutiae.begin(), record.minutiae.end(), [](const auto& a, const auto& b) {
                return a.y != b.y ? a.y < b.y : a.x < b.x;
            }));
    }
}

// Half of the minutiae have their nearest neighbour 12 to 32 pixels away, hardly any within half a
// ridge period: the spacing of real records (median 19 to 20 pixels).
TEST(Impression, SpacesMinutiaeLikeRidges) {
    std::vector<double> nearest;
    for (const FingerRecord& record : drawRecords()) {
        for (const RecordMinutia& a : record.minutiae) {
            double best = 1e9;
            for (const RecordMinutia& b : record.minutiae) {
                const double distance = std::hypot(a.x - b.x, a.y - b.y);
                best = &a != &b && distance < best ? distance : best;
            }
            nearest.push_back(best);
        }
    }
    std::sort(nearest.begin(), nearest.end());
    EXPECT_GT(nearest[nearest.size() / 2], 12.0);
    EXPECT_LT(nearest[nearest.size() / 2], 32.0);
    EXPECT_GT(nearest[nearest.size() / 100], 9.5 / 2);
}

TEST(Impression, DiffersFromTheNextOfTheSameFinger) {
    const std::vector<FingerRecord> records = drawRecords();
    for (std::size_t i = 1; i < records.size(); ++i) {
        EXPECT_NE(records[i].minutiae, records[i - 1].minutiae);
    }
}

// A finger with nothing on it cannot give the fewest minutiae; the drawing ends all the same.
TEST(Impression, EndsForAFingerWithoutMinutiae) {
    RandomStream random(kSeed);
    MasterFinger finger = drawFinger(random);
    finger.minutiae.clear();
    EXPECT_TRUE(drawImpression(finger, random).minutiae.empty());
}

}  // namespace
}  // namespace orl::tools
