#include "matcher/api/finger_record.h"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/record_builder.h"

namespace orl::matcher {
namespace {

using orl::test::BuildRecord;
using orl::test::MendLengthField;
using orl::test::RandomMinutiae;
using orl::test::RecordContent;
using orl::test::RecordMinutia;
using orl::test::RecordView;
using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kViewCountOffset = 22;

bool Parse(const Bytes& record, FullLoadedTemplate& loaded) {
    return parseFingerRecord(loaded, record.data(), record.size());
}

bool Parses(const Bytes& record) {
    FullLoadedTemplate loaded;
    return Parse(record, loaded);
}

RecordView ViewOf(std::vector<RecordMinutia> minutiae, std::uint8_t position = 0) {
    return {.fingerPosition = position, .minutiae = std::move(minutiae)};
}

Bytes SoundRecord() {
    return BuildRecord(RandomMinutiae(1, 20));
}

// One view of 10 minutiae filled up with extended data to `bytes` in all.
Bytes RecordOfLength(std::size_t bytes) {
    constexpr std::size_t kWithoutExtendedData = 24 + 4 + 10 * 6 + 2;
    RecordView view = ViewOf(RandomMinutiae(2, 10));
    view.extendedData.resize(bytes - kWithoutExtendedData);
    return BuildRecord({.views = {view}});
}

TEST(ParseFingerRecord, KeepsEveryMinutiaFieldButTheQuality) {
    const Bytes record = BuildRecord(
        {.imageWidth = 16384,
         .imageHeight = 1000,
         .views = {ViewOf({{.type = 0, .x = 0, .y = 0, .angleByte = 0, .quality = 7},
                           {.type = 1, .x = 16383, .y = 16383, .angleByte = 64, .quality = 8},
                           {.type = 2, .x = 8192, .y = 255, .angleByte = 192, .quality = 9},
                           {.type = 3, .x = 256, .y = 8191, .angleByte = 255, .quality = 255}})}});
    FullLoadedTemplate loaded;
    ASSERT_TRUE(Parse(record, loaded));
    ASSERT_EQ(loaded.fingers.size(), 1U);
    EXPECT_EQ(loaded.imageSize, (ImageSize{.width = 16384, .height = 1000}));
    EXPECT_EQ(loaded.fingers[0].imageSize, loaded.imageSize);
    EXPECT_THAT(loaded.fingers[0].minutiae,
                ElementsAre(Minutia{.type = 0, .x = 0, .y = 0, .angle = 360},
                            Minutia{.type = 1, .x = 16383, .y = 16383, .angle = 270},
                            Minutia{.type = 2, .x = 8192, .y = 255, .angle = 90},
                            Minutia{.type = 3, .x = 256, .y = 8191, .angle = 1}));
}

TEST(ParseFingerRecord, ReadsTheFieldsAtTheirPublishedOffsets) {
    Bytes record = {
        'F',  'M',  'R',  0,    ' ', '2', '0', 0,   0, 0,   0, 48,  // identifier .. length 48
        9,    9,    1,    44,   0,   200, 0,   197, 0, 197, 1, 0,   // 300 x 200, one view
        7,    16,   80,   3,                                        // position 7, 3 minutiae
        0x41, 0x02, 0x00, 0x03, 128, 50,                            // type 1 at (258, 3)
        0x80, 0x0A, 0x00, 0x64, 1,   50,                            // type 2 at (10, 100)
        0x40, 0x96, 0x00, 0xC8, 0,   50,                            // type 1 at (150, 200)
        0,    0};
    ASSERT_EQ(record.size(), 48U);
    FullLoadedTemplate loaded;
    ASSERT_TRUE(Parse(record, loaded));
    EXPECT_EQ(loaded.imageSize, (ImageSize{.width = 300, .height = 200}));
    ASSERT_EQ(loaded.fingers.size(), 1U);
    EXPECT_EQ(loaded.fingers[0].minutiaCount, 3U);
    EXPECT_THAT(loaded.fingers[0].minutiae,
                ElementsAre(Minutia{.type = 1, .x = 258, .y = 3, .angle = 180},
                            Minutia{.type = 2, .x = 10, .y = 100, .angle = 358},
                            Minutia{.type = 1, .x = 150, .y = 200, .angle = 360}));
}

TEST(ParseFingerRecord, BuildsTheSameTrianglesInBothForms) {
    const Bytes record =
        BuildRecord({.views = {ViewOf(RandomMinutiae(3, 30)), ViewOf(RandomMinutiae(4, 50))}});
    LoadedTemplate compact;
    FullLoadedTemplate full;
    ASSERT_TRUE(parseFingerRecord(compact, record.data(), record.size()));
    ASSERT_TRUE(Parse(record, full));
    ASSERT_EQ(compact.fingers.size(), 2U);
    ASSERT_EQ(full.fingers.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(compact.fingers[i].minutiaCount, full.fingers[i].minutiaCount);
        EXPECT_EQ(compact.fingers[i].triangles, full.fingers[i].triangles);
        EXPECT_FALSE(full.fingers[i].triangles.empty());
    }
    EXPECT_EQ(full.fingers[0].minutiaCount, 30U);
    EXPECT_EQ(full.fingers[1].minutiaCount, 50U);
}

TEST(ParseFingerRecord, PassesARecordOf6200BytesAndFailsOneOf6201) {
    const Bytes longest = RecordOfLength(6200);
    const Bytes tooLong = RecordOfLength(6201);
    ASSERT_EQ(longest.size(), 6200U);
    ASSERT_EQ(tooLong.size(), 6201U);
    EXPECT_TRUE(Parses(longest));
    EXPECT_FALSE(Parses(tooLong));
}

TEST(ParseFingerRecord, PassesAHeaderOf24BytesAloneAndFailsOneOf23) {
    Bytes header = BuildRecord(RecordContent{});
    ASSERT_EQ(header.size(), 24U);
    EXPECT_TRUE(Parses(header));
    header.pop_back();
    MendLengthField(header);
    EXPECT_FALSE(Parses(header));
}

TEST(ParseFingerRecord, FailsWhenTheLengthFieldDiffersByOneOrByAWholePowerOf256) {
    const auto actual = static_cast<std::uint32_t>(SoundRecord().size());
    for (const std::uint32_t declared :
         {actual - 1, actual + 1, 0U, actual + 256, actual + 65536, actual + 16777216}) {
        const Bytes record =
            BuildRecord({.views = {ViewOf(RandomMinutiae(1, 20))}, .declaredBytes = declared});
        EXPECT_FALSE(Parses(record)) << declared << " for " << actual;
    }
}

TEST(ParseFingerRecord, FailsWhenAnyByteOfIdentifierOrVersionDiffers) {
    for (std::size_t at = 0; at < 8; ++at) {
        for (const unsigned flipped : {0x01U, 0x20U, 0x80U}) {
            Bytes record = SoundRecord();
            record[at] = static_cast<std::uint8_t>(record[at] ^ flipped);
            EXPECT_FALSE(Parses(record)) << "byte " << at << " flipped by " << flipped;
        }
    }
}

TEST(ParseFingerRecord, FailsWithoutABuffer) {
    FullLoadedTemplate loaded;
    EXPECT_FALSE(parseFingerRecord(loaded, nullptr, 100));
    EXPECT_THAT(loaded.fingers, IsEmpty());
}

TEST(ParseFingerRecord, Keeps128Of200MinutiaeInRecordOrder) {
    const std::vector<RecordMinutia> minutiae = RandomMinutiae(5, 200);
    FullLoadedTemplate loaded;
    ASSERT_TRUE(Parse(BuildRecord(minutiae), loaded));
    ASSERT_EQ(loaded.fingers.size(), 1U);
    EXPECT_EQ(loaded.fingers[0].minutiaCount, 128U);
    ASSERT_EQ(loaded.fingers[0].minutiae.size(), 128U);
    for (std::size_t i = 0; i < 128; ++i) {
        EXPECT_EQ(loaded.fingers[0].minutiae[i].x, minutiae[i].x) << i;
        EXPECT_EQ(loaded.fingers[0].minutiae[i].y, minutiae[i].y) << i;
    }
}

TEST(ParseFingerRecord, FailsWhenMinutiaeBeyondThe128KeptDoNotLieInTheRecord) {
    RecordView view = ViewOf(RandomMinutiae(5, 199));
    view.declaredMinutiae = 200;
    EXPECT_FALSE(Parses(BuildRecord({.views = {view}})));
}

TEST(ParseFingerRecord, ReadsTheSecondViewRightBehindSkippedMinutiaeAndExtendedData) {
    RecordView first = ViewOf(RandomMinutiae(6, 255));
    first.extendedData = Bytes(300, 0xAB);
    FullLoadedTemplate loaded;
    ASSERT_TRUE(Parse(BuildRecord({.views = {first, ViewOf(RandomMinutiae(7, 9))}}), loaded));
    ASSERT_EQ(loaded.fingers.size(), 2U);
    EXPECT_EQ(loaded.fingers[0].minutiaCount, 128U);
    EXPECT_EQ(loaded.fingers[1].minutiaCount, 9U);
    EXPECT_EQ(loaded.fingers[1].minutiae[0].x, RandomMinutiae(7, 9)[0].x);
}

TEST(ParseFingerRecord, FailsWhenExtendedDataRunPastTheEndByOneByte) {
    RecordView view = ViewOf(RandomMinutiae(8, 10));
    view.extendedData = Bytes(5, 1);
    view.declaredExtendedBytes = 6;
    EXPECT_FALSE(Parses(BuildRecord({.views = {view}})));
    view.declaredExtendedBytes = 65535;
    EXPECT_FALSE(Parses(BuildRecord({.views = {view}})));
}

TEST(ParseFingerRecord, FailsWhenAViewIsMissing) {
    EXPECT_FALSE(
        Parses(BuildRecord({.views = {ViewOf(RandomMinutiae(9, 10))}, .declaredViews = 2})));
    EXPECT_FALSE(
        Parses(BuildRecord({.views = {ViewOf(RandomMinutiae(9, 10))}, .declaredViews = 255})));
}

TEST(ParseFingerRecord, AcceptsBytesAfterTheLastView) {
    Bytes record = SoundRecord();
    record.insert(record.end(), {1, 2, 3, 4, 5, 6, 7});
    MendLengthField(record);
    FullLoadedTemplate loaded;
    EXPECT_TRUE(Parse(record, loaded));
    EXPECT_EQ(loaded.fingers.size(), 1U);
    record[kViewCountOffset] = 0;
    FullLoadedTemplate none;
    EXPECT_TRUE(Parse(record, none));
    EXPECT_THAT(none.fingers, IsEmpty());
}

TEST(ParseFingerRecord, PassesARecordWithoutViewsAndBuildsNoFinger) {
    FullLoadedTemplate loaded;
    EXPECT_TRUE(Parse(BuildRecord({.imageWidth = 320, .imageHeight = 240}), loaded));
    EXPECT_THAT(loaded.fingers, IsEmpty());
    EXPECT_EQ(loaded.imageSize, (ImageSize{.width = 320, .height = 240}));
}

TEST(ParseFingerRecord, FailsAViewWithNoMinutiaOrWithOne) {
    for (const std::size_t count : {std::size_t{0}, std::size_t{1}}) {
        FullLoadedTemplate loaded;
        EXPECT_FALSE(Parse(BuildRecord(RandomMinutiae(10, count)), loaded)) << count;
        EXPECT_THAT(loaded.fingers, IsEmpty()) << count;
    }
}

TEST(ParseFingerRecord, LetsTheTriangulationsErrorPass) {
    const std::vector<RecordMinutia> two = {{.x = 10, .y = 10}, {.x = 50, .y = 90}};
    const std::vector<RecordMinutia> line = {
        {.x = 10, .y = 10}, {.x = 20, .y = 20}, {.x = 30, .y = 30}, {.x = 90, .y = 90}};
    const std::vector<RecordMinutia> spot(5, {.x = 77, .y = 88});
    for (const auto& minutiae : {two, line, spot}) {
        try {
            Parses(BuildRecord(minutiae));
            ADD_FAILURE() << minutiae.size() << " minutiae were triangulated";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "not triangulation");
        }
    }
}

TEST(ParseFingerRecord, ReadsAllViewsBeforeItBuildsTheFirstFinger) {
    // The first view alone would end in an exception; the missing second one ends the parse first.
    const RecordView two = ViewOf({{.x = 10, .y = 10}, {.x = 50, .y = 90}});
    EXPECT_FALSE(Parses(BuildRecord({.views = {two}, .declaredViews = 2})));
}

TEST(ParseFingerRecord, FailsAnImageOf0x0BeforeItBuildsTheFirstFinger) {
    const RecordView two = ViewOf({{.x = 10, .y = 10}, {.x = 50, .y = 90}});
    EXPECT_FALSE(Parses(BuildRecord({.imageWidth = 0, .imageHeight = 0, .views = {two}})));
    const RecordView many = ViewOf(RandomMinutiae(11, 20));
    EXPECT_FALSE(Parses(BuildRecord({.imageWidth = 0, .imageHeight = 0, .views = {many}})));
}

TEST(ParseFingerRecord, PassesAnImageOf0x0WithoutViews) {
    EXPECT_TRUE(Parses(BuildRecord({.imageWidth = 0, .imageHeight = 0})));
}

TEST(ParseFingerRecord, PassesAnImageWithOneSideAboveZero) {
    const RecordView view = ViewOf(RandomMinutiae(12, 20));
    EXPECT_TRUE(Parses(BuildRecord({.imageWidth = 0, .imageHeight = 1, .views = {view}})));
    EXPECT_TRUE(Parses(BuildRecord({.imageWidth = 1, .imageHeight = 0, .views = {view}})));
}

TEST(ParseFingerRecord, KeepsTheImageSizeOfARecordWhoseViewsAreBroken) {
    FullLoadedTemplate loaded;
    EXPECT_FALSE(
        Parse(BuildRecord({.imageWidth = 320, .imageHeight = 240, .declaredViews = 1}), loaded));
    EXPECT_EQ(loaded.imageSize, (ImageSize{.width = 320, .height = 240}));
    EXPECT_THAT(loaded.fingers, IsEmpty());
}

TEST(ParseFingerRecord, CountsViewsByByte22AndNotByByte20) {
    RecordContent content = {.verticalResolution = 0x0200,
                             .views = {ViewOf(RandomMinutiae(13, 20)),
                                       ViewOf(RandomMinutiae(14, 20)),
                                       ViewOf(RandomMinutiae(15, 20))}};
    FullLoadedTemplate loaded;
    ASSERT_TRUE(Parse(BuildRecord(content), loaded));
    EXPECT_EQ(loaded.fingers.size(), 3U);
}

TEST(ParseFingerRecord, Reads255Views) {
    // 24 + 255 * (6 + 3 * 6) = 6144 bytes, within the limit.
    RecordContent content;
    for (int i = 0; i < 255; ++i) {
        content.views.push_back(
            ViewOf({{.x = 10, .y = 10}, {.x = 50, .y = 10}, {.x = 9, .y = 70}}));
    }
    FullLoadedTemplate loaded;
    ASSERT_TRUE(Parse(BuildRecord(content), loaded));
    EXPECT_EQ(loaded.fingers.size(), 255U);
}

// Positions 3, 7 and 1 for three views; `upperResolutionByte` is what the scan counts by.
RecordContent ThreeViews(unsigned upperResolutionByte) {
    RecordView third = ViewOf(RandomMinutiae(18, 6), 1);
    third.extendedData = {1, 2, 3};
    return {.verticalResolution = static_cast<std::uint16_t>(upperResolutionByte << 8U),
            .views = {ViewOf(RandomMinutiae(16, 4), 3), ViewOf({}, 7), third}};
}

bool Scan(const Bytes& record, Bytes& positions) {
    return scanFingerPositions(record.data(), record.size(), positions);
}

TEST(ScanFingerPositions, IsEmptyForAVerticalResolutionOf197) {
    RecordContent content = ThreeViews(0);
    content.verticalResolution = 197;
    Bytes positions = {99};
    EXPECT_TRUE(Scan(BuildRecord(content), positions));
    EXPECT_THAT(positions, IsEmpty());
}

TEST(ScanFingerPositions, CountsViewsByByte20AndNotByByte22) {
    RecordContent content = ThreeViews(2);
    content.declaredViews = 1;
    Bytes positions;
    EXPECT_TRUE(Scan(BuildRecord(content), positions));
    EXPECT_THAT(positions, ElementsAre(3, 7));
}

TEST(ScanFingerPositions, ReadsPastMinutiaeAndExtendedData) {
    Bytes positions;
    EXPECT_TRUE(Scan(BuildRecord(ThreeViews(3)), positions));
    EXPECT_THAT(positions, ElementsAre(3, 7, 1));
}

TEST(ScanFingerPositions, KeepsWhatItReadWhenTheRecordEndsBeforeItsViewCount) {
    for (const unsigned count : {4U, 200U, 255U}) {
        Bytes positions;
        EXPECT_TRUE(Scan(BuildRecord(ThreeViews(count)), positions)) << count;
        EXPECT_THAT(positions, ElementsAre(3, 7, 1)) << count;
    }
}

TEST(ScanFingerPositions, KeepsWhatItReadWhenFewerThanFourBytesRemain) {
    Bytes record = BuildRecord(ThreeViews(4));
    record.insert(record.end(), {9, 9, 9});
    MendLengthField(record);
    Bytes positions;
    EXPECT_TRUE(Scan(record, positions));
    EXPECT_THAT(positions, ElementsAre(3, 7, 1));
}

TEST(ScanFingerPositions, FailsWithNoPositionWhenFourBytesRemainOfAView) {
    Bytes record = BuildRecord(ThreeViews(4));
    record.insert(record.end(), {9, 0, 0, 0});  // no minutia, but no extended data length either
    MendLengthField(record);
    Bytes positions;
    EXPECT_FALSE(Scan(record, positions));
    EXPECT_THAT(positions, IsEmpty());
    record.insert(record.end(), {0, 0});
    MendLengthField(record);
    EXPECT_TRUE(Scan(record, positions));
    EXPECT_THAT(positions, ElementsAre(3, 7, 1, 9));
}

TEST(ScanFingerPositions, FailsWithNoPositionWhenExtendedDataRunPastTheEnd) {
    RecordContent content = ThreeViews(3);
    content.views[2].declaredExtendedBytes = 4;
    Bytes positions = {99};
    EXPECT_FALSE(Scan(BuildRecord(content), positions));
    EXPECT_THAT(positions, IsEmpty());
}

TEST(ScanFingerPositions, StopsAtItsCountEvenWhenALaterViewIsBroken) {
    RecordContent content = ThreeViews(2);
    content.views[2].declaredExtendedBytes = 4;
    Bytes positions;
    EXPECT_TRUE(Scan(BuildRecord(content), positions));
    EXPECT_THAT(positions, ElementsAre(3, 7));
}

TEST(ScanFingerPositions, Counts255ViewsOf300) {
    RecordContent content = {.verticalResolution = 0xFF00};
    for (int i = 0; i < 300; ++i) {
        content.views.push_back(ViewOf({}, static_cast<std::uint8_t>(i % 11)));
    }
    Bytes positions;
    EXPECT_TRUE(Scan(BuildRecord(content), positions));
    ASSERT_EQ(positions.size(), 255U);
    EXPECT_EQ(positions[254], 254 % 11);
}

TEST(ScanFingerPositions, HasNoUpperLimitOfItsOwnOnTheRecordLength) {
    RecordContent content = ThreeViews(3);
    content.views[2].extendedData = Bytes(60000, 0);
    Bytes positions;
    EXPECT_TRUE(Scan(BuildRecord(content), positions));
    EXPECT_THAT(positions, ElementsAre(3, 7, 1));
}

TEST(ScanFingerPositions, FailsAndForgetsWithoutASoundHeader) {
    const Bytes sound = BuildRecord(ThreeViews(3));
    Bytes positions = {99};
    EXPECT_FALSE(scanFingerPositions(nullptr, 0, positions));
    EXPECT_THAT(positions, IsEmpty());
    positions = {99};
    EXPECT_FALSE(scanFingerPositions(nullptr, 100, positions));
    EXPECT_THAT(positions, IsEmpty());
    for (std::size_t at = 0; at < 12; ++at) {  // identifier, version, length
        Bytes record = sound;
        record[at] = static_cast<std::uint8_t>(record[at] + 1);
        positions = {99};
        EXPECT_FALSE(Scan(record, positions)) << "byte " << at;
        EXPECT_THAT(positions, IsEmpty()) << "byte " << at;
    }
    Bytes shortRecord(sound.begin(), sound.begin() + 23);
    MendLengthField(shortRecord);
    positions = {99};
    EXPECT_FALSE(Scan(shortRecord, positions));
    EXPECT_THAT(positions, IsEmpty());
}

}  // namespace
}  // namespace orl::matcher
