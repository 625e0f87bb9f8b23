#include "tools/command_line/one_line.h"

#include <gtest/gtest.h>

namespace orl::tools {
namespace {

TEST(OneLine, ReplacesControlCharactersOnly) {
    EXPECT_EQ(oneLine("a\nb\x1B[2J\x7F\xC3\xA4"), "a?b?[2J?\xC3\xA4");
    EXPECT_EQ(inQuotes("a\tb"), "'a?b'");
}

TEST(Counted, IsPluralForAllButOne) {
    EXPECT_EQ(counted(0, "record"), "0 records");
    EXPECT_EQ(counted(1, "record"), "1 record");
    EXPECT_EQ(counted(2, "record"), "2 records");
}

}  // namespace
}  // namespace orl::tools
