// What the log must not tell: bytes of samples, templates, payloads, type information or
// identities. A session's lines are the same whatever these bytes are, so no line holds any.

#include <algorithm>

#include "platform/process_heap.h"
#include "tests/adapter/adapter_test.h"

namespace orl::test {
namespace {

class LogPrivacy : public UnitTest {
  protected:
    // A session that comes by every entry point that is given such bytes, all of them `filler`.
    std::vector<std::string> LinesOfSession(std::uint8_t filler) {
        constexpr std::uint8_t kMinutiae = 7;
        TheFakeMatcher() = {};
        TheFakeMatcher().answers = {{.matched = 0, .score = 5}, {.matched = 1, .score = 400}};
        std::vector<std::uint8_t> bir = BirOf(kMinutiae, filler);
        std::vector<std::uint8_t> payload(9, filler);
        WINBIO_IDENTITY identity = IdentityNumber(filler);
        AttachedUnit unit;
        unit.storage.records = {{.identity = identity, .subFactor = 2, .templateBlob = bir}};
        FeatureSetOutputs outputs;
        DuplicateOutputs duplicate;
        PUCHAR exported = nullptr;
        SIZE_T exportedBytes = 0;
        EXPECT_EQ(
            unit.engine.AcceptPrivateSensorTypeInfo(&unit.pipeline, payload.data(), payload.size()),
            S_OK);
        EXPECT_EQ(unit.Enroll(bir), S_OK);
        EXPECT_EQ(unit.CheckForDuplicate(duplicate), S_OK);
        EXPECT_EQ(unit.engine.CommitEnrollment(
                      &unit.pipeline, &identity, 3, payload.data(), payload.size()),
                  S_OK);
        EXPECT_EQ(unit.Verify(identity, 2, outputs), S_OK);
        EXPECT_EQ(outputs.match, TRUE);
        EXPECT_EQ(unit.Identify(outputs), WINBIO_E_UNKNOWN_ID);
        EXPECT_EQ(unit.engine.ExportEngineData(&unit.pipeline, 0, &exported, &exportedBytes), S_OK);
        std::fill_n(exported, exportedBytes, UCHAR{0});
        HeapFree(GetProcessHeap(), 0, exported);
        // A sample that is refused is not quoted either.
        SetStandardDataBlock(bir, static_cast<std::uint32_t>(bir.size()), 32);
        EXPECT_EQ(unit.Accept(bir), S_OK);
        EXPECT_EQ(unit.Verify(identity, 2, outputs), E_INVALIDARG);
        unit.Detach();
        return TakeLog();
    }
};

TEST_F(LogPrivacy, LinesAreTheSameWhateverBytesTheAdapterIsGiven) {
    const std::vector<std::string> lines = LinesOfSession(0x11);
    EXPECT_GT(lines.size(), 20U);
    EXPECT_EQ(LinesOfSession(0x22), lines);
    EXPECT_EQ(LinesOfSession(0xFE), lines);
}

}  // namespace
}  // namespace orl::test
