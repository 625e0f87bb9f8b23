#include "tools/command_line/one_line.h"

#include <gtest/gtest.h>

namespace orl::tools {
namespace {

TEST(OneLine, ReplacesControlCharactersOnly) {
    EXPECT_EQ(oneLine("a\nb\x1B[2J\x7F\xC3\xA4"), "a?b?[2J?\xC3\xA4");
    EXPECT_EQ(inQuotes("a\tb"), "'a?b'");
}

}  // namespace
}  // namespace orl::tools
