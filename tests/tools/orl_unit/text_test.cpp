// What the user sees: tables, the progress bar, names of results; and UTF-8.

#include <algorithm>
#include <iterator>
#include <string_view>

#include <gtest/gtest.h>

#include "tools/orl_unit/hresult_text.h"
#include "tools/orl_unit/progress_bar.h"
#include "tools/orl_unit/row_checksum.h"
#include "tools/orl_unit/secret_bytes.h"
#include "tools/orl_unit/text_table.h"
#include "tools/orl_unit/utf8_text.h"

namespace orl::unit {
namespace {

TEST(TextTable, PadsColumnsAndTrimsLineEnds) {
    using Align = TextTable::Align;
    TextTable table({Align::kLeft, Align::kRight, Align::kLeft});
    table.addRow({"Name", "N", "Last"});
    table.addRow({"a", "1000", ""});
    table.addRow({"\xC3\xA4\xC3\xA4", "5", "x"});  // two letters in four bytes
    EXPECT_EQ(table.text(),
              "Name     N  Last\n"
              "a     1000\n"
              "\xC3\xA4\xC3\xA4       5  x\n");
}

TEST(ProgressText, FillsTheBarInProportion) {
    EXPECT_EQ(progressText("demo", 0, 3), "demo [..............................] 0% 0/3");
    EXPECT_EQ(progressText("demo", 1, 3), "demo [##########....................] 33% 1/3");
    EXPECT_EQ(progressText("demo", 3, 3), "demo [##############################] 100% 3/3");
    EXPECT_EQ(progressText("demo", 9, 3), "demo [##############################] 100% 3/3");
    EXPECT_EQ(progressText("demo", 7, 0), "demo 7");
}

TEST(HresultText, NamesTheKnownCodes) {
    EXPECT_EQ(hresultText(WINBIO_E_UNKNOWN_ID), "WINBIO_E_UNKNOWN_ID (0x80098003)");
    EXPECT_EQ(hresultText(E_FAIL), "E_FAIL (0x80004005)");
    EXPECT_EQ(hresultText(static_cast<HRESULT>(0x8000ABCDU)), "0x8000ABCD");
}

TEST(Utf8Text, KnowsWellFormedText) {
    for (const char* text : {"",
                             "plain",
                             "\xC2\x80",
                             "\xDF\xBF",
                             "\xE0\xA0\x80",
                             "\xED\x9F\xBF",
                             "\xEE\x80\x80",
                             "\xF0\x90\x80\x80",
                             "\xF4\x8F\xBF\xBF"}) {
        EXPECT_TRUE(isWellFormedUtf8(text)) << text;
    }
}

TEST(Utf8Text, RefusesIllFormedText) {
    for (const char* text : {"\x80",
                             "\xC0\x80",
                             "\xC1\xBF",
                             "\xC2",
                             "\xC2\x41",
                             "\xE0\x9F\xBF",
                             "\xE1\x80",
                             "\xED\xA0\x80",
                             "\xF0\x8F\xBF\xBF",
                             "\xF4\x90\x80\x80",
                             "\xF5\x80\x80\x80",
                             "\xFF",
                             "a\xE1\x80\x41"}) {
        EXPECT_FALSE(isWellFormedUtf8(text)) << testing::PrintToString(text);
    }
}

TEST(RowChecksum, IsTheKnownHashOfItsBytes) {
    // FNV-1a of eight zero bytes: eight times state * prime, from the offset basis, modulo 2^64.
    std::uint64_t expected = 0xCBF29CE484222325U;
    for (int i = 0; i < 8; ++i) {
        expected *= 0x100000001B3U;
    }
    EXPECT_EQ(static_cast<std::uint64_t>(RowChecksum().addInteger(0).value()), expected);
}

TEST(RowChecksum, SeesBytesMovingFromOneValueToTheNext) {
    EXPECT_NE(RowChecksum().add(std::string_view("ab")).add(std::string_view("c")).value(),
              RowChecksum().add(std::string_view("a")).add(std::string_view("bc")).value());
}

TEST(WipeMemory, OverwritesTheGivenBytesOnly) {
    std::uint8_t bytes[64];
    std::fill(std::begin(bytes), std::end(bytes), std::uint8_t{0xAA});
    wipeMemory(bytes + 1, sizeof(bytes) - 2);
    EXPECT_EQ(std::count(std::begin(bytes), std::end(bytes), 0), 62);
    EXPECT_EQ(bytes[0], 0xAA);
    EXPECT_EQ(bytes[63], 0xAA);
}

}  // namespace
}  // namespace orl::unit
