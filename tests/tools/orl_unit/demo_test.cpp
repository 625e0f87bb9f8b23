// Parts of the demonstration: which records take part, which pairs are compared, what is reported.

#include "tools/orl_unit/demo.h"

#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/record_builder.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/orl_unit/storage_unit.h"
#include "tools/command_line/utf8_path.h"
#include "tools/orl_unit/demo_report.h"

namespace orl::unit {
namespace {

Bytes soundRecord() {
    return test::BuildRecord(test::RandomMinutiae(1, 20));
}

TEST(SpreadIndex, TakesDifferentItemsFromTheWholeRange) {
    for (const auto& [selected, items] :
         {std::pair<std::size_t, std::size_t>{1, 1}, {1, 10}, {3, 10}, {10, 10}, {2000, 6090}}) {
        std::set<std::size_t> seen;
        for (std::size_t i = 0; i < selected; ++i) {
            const std::size_t index = spreadIndex(i, selected, items);
            EXPECT_EQ(index, i * items / selected);
            seen.insert(index);
        }
        EXPECT_EQ(seen.size(), selected);
        EXPECT_LT(*seen.rbegin(), items);
    }
}

TEST(SpreadIndex, DoesNotOverflow) {
    // 1999 * 18e18 passes 2^64; 1999/2000 of 18e18 is 1999 * 9e15.
    constexpr std::size_t kNineE15 = 9'000'000'000'000'000;
    EXPECT_EQ(spreadIndex(1999, 2000, 2000 * kNineE15), 1999 * kNineE15);
}

TEST(DemoRecords, GroupsImpressionsByFingerAndSortsThemByNumber) {
    const test::ScratchFolder folder;
    for (const char* name : {"b_10.fmr", "b_9.fmr", "a_2.fmr", "012-3_1.fmr", "x_y_4.fmr"}) {
        folder.Write(name, soundRecord());
    }
    folder.Write("notes.txt", Bytes{1});
    const DemoRecords records = readDemoRecords(tools::pathFromUtf8(folder.PathOf(".")));
    ASSERT_EQ(records.fingers.size(), 4U);
    EXPECT_EQ(records.fingers[0].name, "012-3");
    EXPECT_EQ(records.fingers[1].name, "a");
    EXPECT_EQ(records.fingers[2].name, "b");
    EXPECT_EQ(records.fingers[3].name, "x_y");
    ASSERT_EQ(records.fingers[2].impressions.size(), 2U);
    EXPECT_EQ(records.fingers[2].impressions[0].number, 9U);
    EXPECT_EQ(records.fingers[2].impressions[1].fileName, "b_10.fmr");
    EXPECT_TRUE(records.unusable.empty());
}

TEST(DemoRecords, NamesWhatCannotTakePart) {
    const test::ScratchFolder folder;
    folder.Write("a_1.fmr", soundRecord());
    folder.Write("a_2.fmr", test::BuildRecord(test::RandomMinutiae(1, 2)));
    folder.Write("a_x.fmr", soundRecord());
    folder.Write("a_.fmr", soundRecord());
    folder.Write("_1.fmr", soundRecord());
    folder.Write("plain.fmr", soundRecord());
    const DemoRecords records = readDemoRecords(tools::pathFromUtf8(folder.PathOf(".")));
    EXPECT_EQ(records.fingers.size(), 1U);
    std::set<std::string> names;
    for (const UnusableRecord& record : records.unusable) {
        names.insert(record.fileName);
    }
    EXPECT_EQ(names,
              (std::set<std::string>{"_1.fmr", "a_.fmr", "a_2.fmr", "a_x.fmr", "plain.fmr"}));
}

TEST(DemoRecords, AFolderWithoutUsableRecordsIsRefused) {
    const test::ScratchFolder folder;
    EXPECT_THROW(readDemoRecords(tools::pathFromUtf8(folder.PathOf("."))), CommandError);
    EXPECT_THROW(readDemoRecords(tools::pathFromUtf8(folder.PathOf("missing"))), CommandError);
}

DemoSummary someSummary() {
    DemoSummary summary;
    summary.fingerCount = 3;
    summary.impressionCount = 9;
    summary.enroll = {2, 1, {std::chrono::milliseconds(6), 3}};
    summary.verifyGenuine = {3, 1, {std::chrono::milliseconds(8), 4}};
    summary.verifyImpostor = {0, 2, {std::chrono::milliseconds(2), 2}};
    summary.impostorPairs = 4;
    summary.identify = {3, 1, {std::chrono::milliseconds(14), 6}};
    summary.identifiedRight = 2;
    summary.identifiedWrong = 1;
    summary.duplicates = {{"c_1.fmr", "a"}};
    summary.unusable = {{"a_3.fmr", "record 'a_3.fmr' is too short (0 bytes)"}};
    return summary;
}

TEST(DemoReport, TextHasTheCountsAndMeanTimes) {
    // Means: 6/3, 8/4, 2/2 and 14/6 ms; over all 30 ms / 15 = 2 ms.
    EXPECT_EQ(demoText(someSummary()),
              "Step              Samples  Accepted  Rejected  Comparisons  Time each\n"
              "Enroll                  3         2         1            3   2.000 ms\n"
              "Verify, genuine         4         3         1            4   2.000 ms\n"
              "Verify, impostor        2         0         2            2   1.000 ms\n"
              "Identify                4         3         1            6   2.333 ms\n"
              "All                                                     15   2.000 ms\n"
              "\n"
              "Identified as the right finger 2, as a wrong one 1, not found 1.\n"
              "Impostor samples are 2 evenly spread of 4 pairs.\n"
              "Duplicates at enrollment: 1; records that cannot be compared: 1.\n"
              "  c_1.fmr is enrolled as 'a'\n"
              "  record 'a_3.fmr' is too short (0 bytes)\n");
}

TEST(DemoReport, JsonHasTheSameFigures) {
    const nlohmann::ordered_json json = demoJson(someSummary());
    EXPECT_EQ(json["fingers"], 3);
    EXPECT_EQ(json["enroll"]["rejected"], 1);
    EXPECT_EQ(json["verifyGenuine"]["samples"], 4);
    EXPECT_EQ(json["verifyImpostor"]["rejected"], 2);
    EXPECT_EQ(json["identify"]["right"], 2);
    EXPECT_EQ(json["identify"]["wrong"], 1);
    EXPECT_EQ(json["comparisons"], 15);
    EXPECT_DOUBLE_EQ(json["millisecondsPerComparison"].get<double>(), 2.0);
    EXPECT_EQ(json["duplicates"][0]["duplicateOf"], "a");
    EXPECT_EQ(json["unusable"][0]["record"], "a_3.fmr");
}

TEST(DemoReport, AStepWithoutComparisonsHasNoTime) {
    DemoSummary summary;
    EXPECT_NE(demoText(summary).find("Enroll                  0         0         0            0"
                                     "          -\n"),
              std::string::npos)
        << demoText(summary);
    EXPECT_EQ(demoJson(summary)["millisecondsPerComparison"], 0.0);
}

}  // namespace
}  // namespace orl::unit
