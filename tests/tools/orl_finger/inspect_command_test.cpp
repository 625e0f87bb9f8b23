// orl-finger inspect, run as a program.

#include <algorithm>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/support/file_text.h"
#include "tests/support/record_builder.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/orl_finger/finger_program.h"

namespace orl::test {
namespace {

using nlohmann::ordered_json;
using testing::HasSubstr;

// A triangle on a 256 x 256 image, where pixels are grid units.
RecordContent triangleRecord() {
    RecordContent content;
    content.imageWidth = 256;
    content.imageHeight = 256;
    RecordView view;
    view.minutiae = {{.type = 1, .x = 10, .y = 10, .angleByte = 0, .quality = 0},
                     {.type = 2, .x = 30, .y = 10, .angleByte = 64, .quality = 0},
                     {.type = 3, .x = 20, .y = 30, .angleByte = 128, .quality = 0}};
    content.views = {view};
    return content;
}

TEST(InspectCommand, ShowsEveryStageOfARecord) {
    const ScratchFolder folder;
    const std::string name = folder.Write("triangle.fmr", BuildRecord(triangleRecord()));
    const ProgramOutcome outcome = RunOrlFinger({"inspect", name, "--json"});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(outcome.err, "");
    const std::vector<std::string> lines = LinesOf(outcome.out);
    ASSERT_EQ(lines.size(), 1U);
    ordered_json line = ordered_json::parse(lines[0]);

    std::vector<int> corners = line["views"][0]["triangulation"];
    std::sort(corners.begin(), corners.end());
    EXPECT_EQ(corners, (std::vector<int>{0, 1, 2}));

    // The side lengths are 20 = 0x14 and twice sqrt(10^2 + 20^2) = 22.36, so 22 = 0x16. The order
    // of the corners depends on the order of construction, so they are looked up one by one.
    const std::string triangle = line["views"][0]["triangles"][0];
    ASSERT_EQ(triangle.size(), 32U);
    EXPECT_EQ(triangle.substr(24), "16161400");
    EXPECT_THAT(triangle.substr(0, 24), HasSubstr("0a0aff01"));  // (10, 10), 360 degrees = 255
    EXPECT_THAT(triangle.substr(0, 24), HasSubstr("1e0abf02"));  // 270 degrees = 191.25, so 191
    EXPECT_THAT(triangle.substr(0, 24), HasSubstr("141e8003"));  // 180 degrees = 127.5, so 128

    line["views"][0].erase("triangulation");
    line["views"][0].erase("triangles");
    ordered_json expected{{"record", name}};
    expected.update(ordered_json::parse(
        R"({"status":0,"message":"","imageSize":[256,256],"fingerPositions":[],"views":[
            {"minutiae":[{"type":1,"x":10,"y":10,"angle":360},{"type":2,"x":30,"y":10,"angle":270},
             {"type":3,"x":20,"y":30,"angle":180}]}]})"));
    EXPECT_EQ(line, expected);
}

TEST(InspectCommand, ShowsEveryViewAndItsFingerPosition) {
    RecordContent content = triangleRecord();
    content.views.push_back(content.views[0]);
    content.views[0].fingerPosition = 2;
    content.views[1].fingerPosition = 7;
    content.verticalResolution = 512;  // its first byte, 2, is how many positions are read
    const ScratchFolder folder;
    const std::string name = folder.Write("two_views.fmr", BuildRecord(content));
    const ordered_json line = ordered_json::parse(RunOrlFinger({"inspect", name, "--json"}).out);
    EXPECT_EQ(line["fingerPositions"], ordered_json::parse("[2,7]"));
    ASSERT_EQ(line["views"].size(), 2U);
    EXPECT_EQ(line["views"][0], line["views"][1]);
}

TEST(InspectCommand, GoesOnAfterRecordsThatCannotBeUsed) {
    const ScratchFolder folder;
    const std::string missing = folder.PathOf("missing.fmr");
    const std::string empty = folder.Write("empty.fmr", {});
    std::vector<std::uint8_t> cut = BuildRecord(triangleRecord());
    cut.pop_back();
    const std::string malformed = folder.Write("malformed.fmr", cut);
    RecordContent none = triangleRecord();
    none.views.clear();
    const std::string withoutViews = folder.Write("without_views.fmr", BuildRecord(none));
    RecordContent two = triangleRecord();
    two.views[0].minutiae.pop_back();
    const std::string twoMinutiae = folder.Write("two_minutiae.fmr", BuildRecord(two));

    const ProgramOutcome outcome = RunOrlFinger({"inspect",
                                                 "--json",
                                                 missing,
                                                 empty,
                                                 malformed,
                                                 withoutViews,
                                                 twoMinutiae,
                                                 "samples",
                                                 kRecord});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(
        LinesOf(outcome.err),
        testing::ElementsAre(
            "orl-finger: " + missing + ": No such file or directory",
            "orl-finger: " + empty + ": Probe template buffer is empty.",
            "orl-finger: " + malformed + ": Probe template could not be loaded from buffer",
            "orl-finger: " + withoutViews + ": Probe template contains no fingerprints from buffer",
            "orl-finger: " + twoMinutiae + ": not triangulation",
            "orl-finger: samples: is a directory"));
    const std::vector<std::string> lines = LinesOf(outcome.out);
    ASSERT_EQ(lines.size(), 5U);
    const int statuses[] = {1, 2, 4, -1, 0};
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const ordered_json line = ordered_json::parse(lines[i]);
        EXPECT_EQ(line["status"], statuses[i]) << lines[i];
        EXPECT_EQ(line["views"].empty(), statuses[i] != 0) << lines[i];
    }
}

TEST(InspectCommand, TakesANameInSquareBracketsForOneName) {
    const ProgramOutcome outcome = RunOrlFinger({"inspect", "[a,b]", "[]", "--json"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.err,
              "orl-finger: [a,b]: No such file or directory\n"
              "orl-finger: []: No such file or directory\n");
}

TEST(InspectCommand, ListsMinutiaeInWordsWithoutJson) {
    const ScratchFolder folder;
    const std::string name = folder.Write("triangle.fmr", BuildRecord(triangleRecord()));
    const ProgramOutcome outcome = RunOrlFinger({"inspect", name});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(outcome.out,
              name +
                  "\n"
                  "  image: 256 x 256 pixels\n"
                  "  view 0: 3 minutiae, 1 triangles\n"
                  "    (10, 10)  360 degrees  ending\n"
                  "    (30, 10)  270 degrees  bifurcation\n"
                  "    (20, 30)  180 degrees  reserved\n");
    const std::string empty = folder.Write("empty.fmr", {});
    EXPECT_THAT(RunOrlFinger({"inspect", empty}).out,
                HasSubstr("not loaded: Probe template buffer is empty."));
}

}  // namespace
}  // namespace orl::test
