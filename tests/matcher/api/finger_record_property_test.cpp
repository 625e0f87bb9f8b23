// Broken, cut and random records: the parse and the scan agree with a plain second reading and read
// nothing behind the last byte, which lies at the end of a readable page.

#include <algorithm>
#include <random>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "matcher/api/finger_record.h"
#include "tests/matcher/api/slow_record_parse.h"
#include "tests/support/guarded_buffer.h"
#include "tests/support/record_builder.h"

namespace orl::matcher {
namespace {

using orl::test::BuildRecord;
using orl::test::GuardedBuffer;
using orl::test::MendLengthField;
using orl::test::RandomMinutiae;
using orl::test::RecordContent;
using orl::test::RecordMinutia;
using orl::test::RecordView;
using Bytes = std::vector<std::uint8_t>;

enum class Outcome { kParsed, kFailed, kNotTriangulated };

Outcome ParseGuarded(const Bytes& record, FullLoadedTemplate& loaded) {
    const GuardedBuffer buffer(record);
    try {
        return parseFingerRecord(loaded, buffer.data(), buffer.size()) ? Outcome::kParsed
                                                                       : Outcome::kFailed;
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "not triangulation");
        return Outcome::kNotTriangulated;
    }
}

// Compares the parse with the second reading; returns its outcome.
Outcome CheckParse(const Bytes& record) {
    FullLoadedTemplate loaded;
    const Outcome outcome = ParseGuarded(record, loaded);
    const std::optional<SlowRecord> expected = SlowParse(record);
    const auto isTooFew = [](const MinutiaList& list) { return list.size() < 2; };
    if (!expected) {
        EXPECT_EQ(outcome, Outcome::kFailed);
        return outcome;
    }
    EXPECT_EQ(loaded.imageSize, expected->imageSize);
    if (std::ranges::none_of(expected->fingers, isTooFew)) {
        EXPECT_NE(outcome, Outcome::kFailed);
    } else {
        EXPECT_NE(outcome, Outcome::kParsed);
    }
    if (outcome == Outcome::kParsed) {
        EXPECT_EQ(loaded.fingers.size(), expected->fingers.size());
    }
    for (std::size_t i = 0; i < loaded.fingers.size(); ++i) {
        EXPECT_EQ(loaded.fingers[i].minutiae, expected->fingers.at(i)) << "finger " << i;
        EXPECT_EQ(loaded.fingers[i].minutiaCount, expected->fingers.at(i).size());
    }
    return outcome;
}

bool CheckScan(const Bytes& record) {
    const GuardedBuffer buffer(record);
    Bytes positions = {99};
    const bool scanned = scanFingerPositions(buffer.data(), buffer.size(), positions);
    const std::optional<Bytes> expected = SlowScan(record);
    EXPECT_EQ(scanned, expected.has_value());
    EXPECT_EQ(positions, expected.value_or(Bytes{}));
    return scanned;
}

Bytes TwoViewsWithExtendedData() {
    RecordView first = {.fingerPosition = 2, .minutiae = RandomMinutiae(21, 12)};
    first.extendedData = {1, 2, 3, 4, 5};
    RecordView second = {.fingerPosition = 8, .minutiae = RandomMinutiae(22, 9)};
    second.extendedData = {6, 7};
    return BuildRecord({.verticalResolution = 0x0264, .views = {first, second}});
}

TEST(RecordOfEveryLength, FailsWhenCutAnywhere) {
    const Bytes whole = TwoViewsWithExtendedData();
    ASSERT_EQ(CheckParse(whole), Outcome::kParsed);
    ASSERT_TRUE(CheckScan(whole));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE("cut to " + std::to_string(length));
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(CheckParse(cut), Outcome::kFailed);
        EXPECT_FALSE(CheckScan(cut));
    }
}

TEST(RecordOfEveryLength, FailsWhenCutAnywhereThoughItsLengthFieldAgrees) {
    const Bytes whole = TwoViewsWithExtendedData();
    for (std::size_t length = 12; length < whole.size(); ++length) {
        SCOPED_TRACE("cut to " + std::to_string(length));
        Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        MendLengthField(cut);
        EXPECT_EQ(CheckParse(cut), Outcome::kFailed);
        CheckScan(cut);
    }
}

TEST(RecordOfEveryLength, ParsesWithAnythingBehindIt) {
    Bytes record = TwoViewsWithExtendedData();
    for (int extra = 0; extra < 40; ++extra) {
        SCOPED_TRACE("extra bytes " + std::to_string(extra));
        EXPECT_EQ(CheckParse(record), Outcome::kParsed);
        CheckScan(record);
        record.push_back(static_cast<std::uint8_t>(37 * extra));
        MendLengthField(record);
    }
}

TEST(RandomBytes, AreNoRecord) {
    constexpr std::uint32_t kSeed = 7001;
    std::mt19937 random(kSeed);
    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE("seed " + std::to_string(kSeed) + " round " + std::to_string(round));
        Bytes bytes(random() % 300);
        std::ranges::generate(bytes, [&random] { return static_cast<std::uint8_t>(random()); });
        EXPECT_EQ(CheckParse(bytes), Outcome::kFailed);
        CheckScan(bytes);
    }
}

// A sound header before random view bytes, in which small counts are frequent.
Bytes RandomBodyRecord(std::mt19937& random) {
    RecordContent content = {.imageWidth = static_cast<std::uint16_t>(random() % 3 * 200),
                             .imageHeight = static_cast<std::uint16_t>(random() % 3 * 200),
                             .verticalResolution = static_cast<std::uint16_t>(random() % 1024),
                             .declaredViews = static_cast<std::uint8_t>(random() % 4)};
    Bytes record = BuildRecord(content);
    const std::size_t bodyBytes = random() % 120;
    for (std::size_t i = 0; i < bodyBytes; ++i) {
        record.push_back(static_cast<std::uint8_t>(random() % (random() % 2 == 0 ? 6 : 256)));
    }
    MendLengthField(record);
    return record;
}

TEST(RandomBodies, ParseAndScanAsThePlainReadingDoes) {
    constexpr std::uint32_t kSeed = 7002;
    std::mt19937 random(kSeed);
    int parsed = 0;
    int failed = 0;
    for (int round = 0; round < 20000 && !HasFailure(); ++round) {
        SCOPED_TRACE("seed " + std::to_string(kSeed) + " round " + std::to_string(round));
        const Bytes record = RandomBodyRecord(random);
        const Outcome outcome = CheckParse(record);
        parsed += outcome == Outcome::kParsed ? 1 : 0;
        failed += outcome == Outcome::kFailed ? 1 : 0;
        CheckScan(record);
    }
    EXPECT_GT(parsed, 100) << "the records must reach both outcomes";
    EXPECT_GT(failed, 100);
}

TEST(MutatedRecords, ParseAndScanAsThePlainReadingDoes) {
    constexpr std::uint32_t kSeed = 7003;
    std::mt19937 random(kSeed);
    const Bytes sound = TwoViewsWithExtendedData();
    int parsed = 0;
    for (int round = 0; round < 5000 && !HasFailure(); ++round) {
        SCOPED_TRACE("seed " + std::to_string(kSeed) + " round " + std::to_string(round));
        Bytes record = sound;
        for (auto flips = 1 + random() % 4; flips > 0; --flips) {
            record[8 + random() % (record.size() - 8)] = static_cast<std::uint8_t>(random());
        }
        if (random() % 4 != 0) {
            MendLengthField(record);
        }
        parsed += CheckParse(record) == Outcome::kParsed ? 1 : 0;
        CheckScan(record);
    }
    EXPECT_GT(parsed, 100) << "most flips hit minutiae and leave the record sound";
}

TEST(HostileRecords, AreReadWithinTheirBounds) {
    const std::vector<RecordMinutia> minutiae = RandomMinutiae(23, 255);
    RecordView crowded = {.minutiae = minutiae};
    RecordView greedy = {.minutiae = RandomMinutiae(24, 5), .declaredMinutiae = 255};
    RecordView endless = {.minutiae = RandomMinutiae(24, 5), .declaredExtendedBytes = 0xFFFF};
    const RecordContent hostile[] = {
        {.views = {crowded, crowded, crowded, crowded}},           // 24 + 4 * 1536 = 6168
        {.views = {crowded, crowded, crowded, crowded, crowded}},  // longer than can be loaded
        {.views = {greedy}},
        {.views = {endless}},
        {.imageWidth = 0xFFFF, .imageHeight = 0xFFFF, .views = {crowded}},
        {.imageWidth = 1, .imageHeight = 1, .views = {crowded}},
        {.verticalResolution = 0xFFFF, .views = {crowded}, .declaredViews = 255},
        {.verticalResolution = 0xFFFF, .views = {}, .declaredViews = 255},
        {.views = {crowded}, .declaredBytes = 0xFFFFFFFF},
    };
    for (const RecordContent& content : hostile) {
        const Bytes record = BuildRecord(content);
        SCOPED_TRACE("record of " + std::to_string(record.size()) + " bytes");
        CheckParse(record);
        CheckScan(record);
    }
}

}  // namespace
}  // namespace orl::matcher
