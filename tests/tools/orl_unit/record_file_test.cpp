#include "tools/orl_unit/record_file.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tests/support/guarded_buffer.h"
#include "tests/support/record_builder.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/orl_unit/storage_unit.h"
#include "tools/command_line/utf8_path.h"
#include "tools/orl_unit/command_error.h"

namespace orl::unit {
namespace {

using test::BuildRecord;
using test::RandomMinutiae;
using test::RecordContent;

RecordContent soundContent() {
    RecordContent content;
    content.views.push_back(
        {.fingerPosition = 7, .fingerQuality = 55, .minutiae = RandomMinutiae(1, 20)});
    return content;
}

TEST(RecordDefect, ASoundRecordHasNone) {
    EXPECT_EQ(recordDefect(BuildRecord(soundContent())), std::nullopt);
    EXPECT_EQ(recordDefect(BuildRecord(RandomMinutiae(1, 3))), std::nullopt);
    EXPECT_EQ(recordDefect(BuildRecord(RandomMinutiae(1, 255))), std::nullopt);
}

TEST(RecordDefect, NamesWhatIsWrong) {
    struct Case {
        const char* why;
        Bytes bytes;
        const char* defect;
    };
    RecordContent noView = soundContent();
    noView.declaredViews = 0;
    RecordContent noSize = soundContent();
    noSize.imageWidth = 0;
    noSize.imageHeight = 0;
    RecordContent cut = soundContent();
    cut.views[0].declaredMinutiae = 21;
    RecordContent extended = soundContent();
    extended.views[0].extendedData = {1, 2, 3};
    RecordContent extendedCut = soundContent();
    extendedCut.views[0].declaredExtendedBytes = 1;
    RecordContent twoViews = soundContent();
    twoViews.views.push_back(twoViews.views[0]);
    RecordContent viewMissing = soundContent();
    viewMissing.declaredViews = 2;
    Bytes wrongMagic = BuildRecord(soundContent());
    wrongMagic[0] = 'f';
    Bytes wrongVersion = BuildRecord(soundContent());
    wrongVersion[5] = '3';
    Bytes wrongLength = BuildRecord(soundContent());
    wrongLength.push_back(0);
    Bytes longRecord = BuildRecord(soundContent());
    longRecord.resize(6201);
    test::MendLengthField(longRecord);
    const Case cases[] = {
        {"empty file", {}, "is too short (0 bytes)"},
        {"one byte less than a header", Bytes(23), "is too short (23 bytes)"},
        {"magic", wrongMagic, "is not a finger minutiae record of version 20"},
        {"version", wrongVersion, "is not a finger minutiae record of version 20"},
        // 24 + 4 + 20 * 6 + 2 = 150 bytes.
        {"length", wrongLength, "says it has 150 bytes, but has 151"},
        {"6201 bytes", longRecord, "is longer than 6200 bytes"},
        {"no view", BuildRecord(noView), "holds no finger view"},
        {"0 x 0", BuildRecord(noSize), "has an image size of 0 x 0"},
        {"minutiae cut", BuildRecord(cut), "is cut off inside finger view 1"},
        {"extended data cut", BuildRecord(extendedCut), "is cut off inside finger view 1"},
        {"second view missing", BuildRecord(viewMissing), "is cut off inside finger view 2"},
        {"extended data",
         BuildRecord(extended),
         "holds more than one finger view or extended data, which the engine does not compare"},
        {"two views",
         BuildRecord(twoViews),
         "holds more than one finger view or extended data, which the engine does not compare"},
        {"two minutiae",
         BuildRecord(RandomMinutiae(1, 2)),
         "has too few minutiae to compare (2, at least 3 are needed)"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(recordDefect(each.bytes), each.defect) << each.why;
    }
}

TEST(RecordDefect, ReadsNothingBehindTheRecord) {
    const Bytes sound = BuildRecord(soundContent());
    for (std::size_t size = 0; size <= sound.size(); ++size) {
        Bytes cut(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(size));
        if (size >= 12) {
            test::MendLengthField(cut);
        }
        const test::GuardedBuffer guarded(cut);
        EXPECT_EQ(recordDefect({guarded.data(), cut.size()}).has_value(), size != sound.size());
    }
}

TEST(ReadRecordFile, TakesTheFactsOfTheFirstView) {
    const test::ScratchFolder folder;
    const Bytes bytes = BuildRecord(soundContent());
    const FingerRecord record = readRecordFile(tools::pathFromUtf8(folder.Write("a.fmr", bytes)));
    EXPECT_EQ(Bytes(record.bytes.begin(), record.bytes.end()), bytes);
    EXPECT_EQ(record.fingerPosition, 7);
    EXPECT_EQ(record.quality, 55);
    EXPECT_EQ(record.minutiaCount, 20U);
}

TEST(ReadRecordFile, NamesTheFileAndTheDefect) {
    const test::ScratchFolder folder;
    const std::string path = folder.Write("bad.fmr", Bytes{1, 2, 3});
    try {
        readRecordFile(tools::pathFromUtf8(path));
        FAIL() << "accepted";
    } catch (const CommandError& error) {
        EXPECT_EQ(error.what(), "record '" + path + "' is too short (3 bytes)");
    }
}

TEST(ReadRecordFile, TellsMissingFilesDirectoriesAndHugeFilesApart) {
    const test::ScratchFolder folder;
    const std::string huge = folder.Write("huge.fmr", Bytes(1'000'000, 7));
    const std::pair<std::string, std::string> cases[] = {
        {folder.PathOf("missing.fmr"), "cannot be opened"},
        {folder.PathOf("."), "is a directory"},
        {huge, "is longer than 6200 bytes"},
    };
    for (const auto& [path, reason] : cases) {
        try {
            readRecordFile(tools::pathFromUtf8(path));
            FAIL() << path << " accepted";
        } catch (const CommandError& error) {
            EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << error.what();
        }
    }
}

}  // namespace
}  // namespace orl::unit
