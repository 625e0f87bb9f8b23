// The same script of calls over the loaded module's table on every platform.

#include <array>
#include <cstring>

#include <gtest/gtest.h>

#include "tests/module/adapter_module.h"
#include "tests/module/hosted_unit.h"
#include "tests/support/record_builder.h"

namespace orl::test {
namespace {

constexpr std::size_t kTableBytes = 360;

const std::vector<std::uint8_t>& RecordNumber(std::uint32_t number) {
    static const std::array<std::vector<std::uint8_t>, 3> records = {
        BuildRecord(RandomMinutiae(1, 40)),
        BuildRecord(RandomMinutiae(2, 40)),
        BuildRecord(RandomMinutiae(3, 40))};
    return records.at(number);
}

class AdapterModuleScript : public testing::Test {
  protected:
    DynamicLibrary module_{AdapterModulePath()};
    WINBIO_ENGINE_INTERFACE& engine_ = EngineTableOf(module_);
};

TEST_F(AdapterModuleScript, HandsOutTheSameTableEachTime) {
    EXPECT_EQ(&EngineTableOf(module_), &engine_);
}

TEST_F(AdapterModuleScript, HandsOutATableWhoseHeaderAndNullSlotsAreFixed) {
    const std::array<std::uint8_t, 32> header = {
        1,    0,    0,    0,                             // version 1.0
        2,    0,    0,    0,                             // an engine adapter
        0x68, 0x01, 0,    0,    0,    0,    0,    0,     // 360 bytes
        0x92, 0x3A, 0x1F, 0x6D, 0x7C, 0x5B, 0x08, 0x4E,  // {6D1F3A92-5B7C-4E08-
        0x9A, 0x41, 0x2C, 0x7E, 0x5B, 0x90, 0xD3, 0xF6,  //  9A41-2C7E5B90D3F6}
    };
    static_assert(sizeof(engine_) == kTableBytes);
    std::array<std::uint8_t, kTableBytes> bytes{};
    std::memcpy(bytes.data(), &engine_, bytes.size());
    EXPECT_TRUE(std::equal(header.begin(), header.end(), bytes.begin()));
    for (std::size_t slot = 1; slot <= 41; ++slot) {
        std::uint64_t address = 0;
        std::memcpy(&address, bytes.data() + header.size() + 8 * (slot - 1), sizeof(address));
        const bool isNull = (slot >= 22 && slot <= 38) || slot >= 40;
        EXPECT_EQ(address == 0, isNull) << "slot " << slot;
    }
}

TEST_F(AdapterModuleScript, LeavesTheTableAsItWasAfterAUnitHasWorked) {
    std::array<std::uint8_t, kTableBytes> before{};
    std::memcpy(before.data(), &engine_, before.size());
    {
        HostedUnit unit(engine_);
        ASSERT_EQ(unit.Capture(RecordNumber(0)), S_OK);
        ASSERT_EQ(unit.Enroll(IdentityNumber(1)), S_OK);
        EXPECT_TRUE(unit.Verify(IdentityNumber(1)));
    }
    EXPECT_EQ(std::memcmp(before.data(), &engine_, before.size()), 0);
}

TEST_F(AdapterModuleScript, VerifiesTheEnrolledRecordAndRejectsAnother) {
    HostedUnit unit(engine_);
    ASSERT_EQ(unit.Capture(RecordNumber(0)), S_OK);
    ASSERT_EQ(unit.Enroll(IdentityNumber(1)), S_OK);
    EXPECT_TRUE(unit.Verify(IdentityNumber(1)));
    ASSERT_EQ(unit.Capture(RecordNumber(1)), S_OK);
    EXPECT_FALSE(unit.Verify(IdentityNumber(1)));
}

TEST_F(AdapterModuleScript, IdentifiesTheRecordThatMatches) {
    HostedUnit unit(engine_);
    for (std::uint32_t number = 0; number < 3; ++number) {
        ASSERT_EQ(unit.Capture(RecordNumber(number)), S_OK);
        ASSERT_EQ(unit.Enroll(IdentityNumber(number)), S_OK);
    }
    ASSERT_EQ(unit.Capture(RecordNumber(1)), S_OK);
    WINBIO_IDENTITY identity = {};
    WINBIO_BIOMETRIC_SUBTYPE subFactor = 0;
    PUCHAR payload = nullptr;
    SIZE_T payloadSize = 0;
    PUCHAR hash = nullptr;
    SIZE_T hashSize = 0;
    WINBIO_REJECT_DETAIL rejectDetail = 0;
    ASSERT_EQ(engine_.IdentifyFeatureSet(unit.pipeline(),
                                         &identity,
                                         &subFactor,
                                         &payload,
                                         &payloadSize,
                                         &hash,
                                         &hashSize,
                                         &rejectDetail),
              S_OK);
    EXPECT_TRUE(SameIdentity(identity, IdentityNumber(1)));
    EXPECT_EQ(subFactor, 2);
}

TEST_F(AdapterModuleScript, ReportsNoMatchWhenTheMatcherThrows) {
    // Two minutiae admit no triangle: the matcher throws inside the module and the bridge stops it.
    HostedUnit unit(engine_);
    ASSERT_EQ(unit.Capture(BuildRecord(RandomMinutiae(4, 2))), S_OK);
    ASSERT_EQ(unit.Enroll(IdentityNumber(1)), S_OK);
    EXPECT_FALSE(unit.Verify(IdentityNumber(1)));
}

}  // namespace
}  // namespace orl::test
