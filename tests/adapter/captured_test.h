#pragma once

// What the tests of Verify and Identify share: a unit with a captured sample, and the samples that
// both refuse alike.

#include <cstdint>
#include <string>
#include <vector>

#include "tests/adapter/comparing_test.h"

namespace orl::test {

// The captured BIR holds a record of 3 minutiae.
inline const std::string kCapturedOk = "ExtractISOFromBIR: OK isoSize=48";
inline const std::string kCapturedFound = ResultLine("ExtractISOFromBIR(captured)", "00000000");
inline constexpr char kDash[] = "\xE2\x80\x94";

// A BIR whose standard data block ends one byte beyond it.
inline std::vector<std::uint8_t> OverrunningBir() {
    std::vector<std::uint8_t> bir = BirOf(3);
    SetStandardDataBlock(bir, 49, 32);
    return bir;
}

// A BIR whose standard data block is empty.
inline std::vector<std::uint8_t> EmptyBlockBir() {
    std::vector<std::uint8_t> bir = BirOf(3);
    SetStandardDataBlock(bir, 0, 32);
    return bir;
}

// An accepted sample of 3 minutiae, a ready matcher and an empty log.
class CapturedTest : public ComparingTest {
  protected:
    void SetUp() override {
        ComparingTest::SetUp();
        Capture(BirOf(3, 0x31));
    }

    void Capture(const std::vector<std::uint8_t>& bir) {
        EXPECT_EQ(TheUnit().Accept(bir), S_OK);
        TakeLog();
    }

    FeatureSetOutputs outputs_;
};

// What makes a captured sample unusable, in Verify and Identify alike.
struct BadCapture {
    std::vector<std::uint8_t> bir;
    HRESULT hr;
    std::vector<std::string> log;  // after the entry line
    const char* why;
};

inline std::vector<BadCapture> BadCaptures() {
    const std::string invalid = ResultLine("ExtractISOFromBIR(captured)", "80070057");
    const std::string noData = ResultLine("ExtractISOFromBIR(captured)", "80098026");
    std::vector<std::uint8_t> noOffset = BirOf(3);
    SetStandardDataBlock(noOffset, 48, 0);
    return {
        {{0x01}, E_INVALIDARG, {invalid}, "one byte"},
        {std::vector<std::uint8_t>(31, 1), E_INVALIDARG, {invalid}, "one byte short of a header"},
        {EmptyBlockBir(), WINBIO_E_NO_CAPTURE_DATA, {noData}, "standard data of size 0"},
        {noOffset, WINBIO_E_NO_CAPTURE_DATA, {noData}, "standard data at offset 0"},
        {OverrunningBir(),
         E_INVALIDARG,
         {std::string("ExtractISOFromBIR: offset+size=81 > birSize=80 ") + kDash + " E_INVALIDARG",
          invalid},
         "standard data beyond the end"},
    };
}

}  // namespace orl::test
