#pragma once

// What the tests against the fake matcher share: each starts from a fresh matcher, heap and log,
// and ends with every block freed and wiped.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/adapter/attached_unit.h"
#include "tests/adapter/fake_matcher.h"
#include "tests/adapter/log_lines.h"
#include "tests/adapter/watched_new.h"
#include "tests/support/bir_builder.h"
#include "tests/support/counting_heap.h"

namespace orl::test {

class AdapterTest : public testing::Test {
  protected:
    void SetUp() override {
        TheFakeMatcher() = {};
        CountingHeap::Reset();
        WatchedNew::Reset();
        TakeLog();
    }

    void TearDown() override {
        EXPECT_EQ(CountingHeap::LiveBlocks(), 0U);
        EXPECT_EQ(CountingHeap::UnwipedBlocks(), 0U);
        EXPECT_EQ(WatchedNew::LiveBlocks(), 0U);
        EXPECT_EQ(WatchedNew::UnwipedBlocks(), 0U);
    }
};

// The same with an attached unit whose log starts empty.
class UnitTest : public AdapterTest {
  protected:
    void SetUp() override {
        AdapterTest::SetUp();
        unit_ = std::make_unique<AttachedUnit>();
        TakeLog();
        CountingHeap::TakeEvents();
    }

    void TearDown() override {
        unit_.reset();
        AdapterTest::TearDown();
    }

    AttachedUnit& TheUnit() { return *unit_; }

  private:
    std::unique_ptr<AttachedUnit> unit_;
};

// The bytes of a record of one finger view with so many minutiae, filled with `filler`; as far as
// the bridge looks at it.
inline std::vector<std::uint8_t> ViewOf(std::uint8_t minutiae, std::uint8_t filler = 0x11) {
    std::vector<std::uint8_t> record((std::size_t{minutiae} + 5) * 6, filler);
    record[27] = minutiae;
    return record;
}

// A BIR with such a record.
inline std::vector<std::uint8_t> BirOf(std::uint8_t minutiae, std::uint8_t filler = 0x11) {
    return BuildBir(ViewOf(minutiae, filler));
}

// The line that the adapter logs after a call; `hr` in upper-case hexadecimal.
inline std::string ResultLine(const std::string& call, const std::string& hr) {
    return call + " returned HRESULT=0x" + hr + (hr[0] == '8' ? " (FAILED)" : " (SUCCESS)");
}

}  // namespace orl::test
