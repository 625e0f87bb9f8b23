#include "tools/orl_unit/bir.h"

#include <cstring>

#include <gtest/gtest.h>

#include "tests/support/record_builder.h"
#include "tests/tools/orl_unit/storage_unit.h"

namespace orl::unit {
namespace {

constexpr SampleDescription kIndexForEnrollment = {2, WINBIO_PURPOSE_ENROLL, 60, {0x001B, 0x0401}};

std::uint32_t littleEndian(const SecretBytes& bytes, std::size_t offset) {
    return static_cast<std::uint32_t>(bytes[offset]) |
           static_cast<std::uint32_t>(bytes[offset + 1]) << 8U |
           static_cast<std::uint32_t>(bytes[offset + 2]) << 16U |
           static_cast<std::uint32_t>(bytes[offset + 3]) << 24U;
}

WINBIO_BIR_HEADER headerOf(const SecretBytes& bir) {
    WINBIO_BIR_HEADER header;
    std::memcpy(&header, bir.data() + sizeof(WINBIO_BIR), sizeof(header));
    return header;
}

TEST(WrapRecord, LaysTheBlocksOutOneBehindTheOther) {
    const auto record = test::BuildRecord(test::RandomMinutiae(1, 30));
    const SecretBytes bir = wrapRecord(record, kIndexForEnrollment);
    ASSERT_EQ(bir.size(), 32 + 48 + record.size());
    const std::uint32_t expected[] = {
        48,
        32,  // header block: size, offset
        static_cast<std::uint32_t>(record.size()),
        80,  // standard data block
        0,
        0,  // no vendor data block
        0,
        0,  // no signature block
    };
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(littleEndian(bir, 4 * i), expected[i]) << "word " << i;
    }
    EXPECT_EQ(std::memcmp(bir.data() + 80, record.data(), record.size()), 0);
}

TEST(WrapRecord, BlocksStartAtMultiplesOfEight) {
    for (std::size_t count = 3; count < 12; ++count) {
        const SecretBytes bir =
            wrapRecord(test::BuildRecord(test::RandomMinutiae(2, count)), kIndexForEnrollment);
        EXPECT_EQ(littleEndian(bir, 4) % 8, 0U);
        EXPECT_EQ(littleEndian(bir, 12) % 8, 0U);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bir.data()) % alignof(WINBIO_BIR_HEADER), 0U);
    }
}

TEST(WrapRecord, TheHeaderSaysWhatTheSampleIs) {
    const Bytes record(40, 1);
    const WINBIO_BIR_HEADER header = headerOf(wrapRecord(record, kIndexForEnrollment));
    // Type 0x40, subtype 0x80, both versions 0x100 and 0x200, purpose 0x400, quality 0x1000.
    EXPECT_EQ(header.ValidFields, 0x17C0);
    EXPECT_EQ(header.HeaderVersion, 0x11);
    EXPECT_EQ(header.PatronHeaderVersion, 0x11);
    EXPECT_EQ(header.DataFlags, 0x80);  // processed data
    EXPECT_EQ(header.Type, 8U);
    EXPECT_EQ(header.Subtype, 2);
    EXPECT_EQ(header.Purpose, 4);
    EXPECT_EQ(header.DataQuality, 60);
    EXPECT_EQ(header.BiometricDataFormat.Owner, 0x001B);
    EXPECT_EQ(header.BiometricDataFormat.Type, 0x0401);
    EXPECT_EQ(header.ProductId.Owner, 0);
    EXPECT_EQ(header.CreationDate.QuadPart, 0);
}

TEST(WrapRecord, AQualityThatIsNoneIsNotSet) {
    const Bytes record(40, 1);
    for (const int quality : {0, 101, 255}) {
        SampleDescription description = kIndexForEnrollment;
        description.quality = static_cast<std::uint8_t>(quality);
        const WINBIO_BIR_HEADER header = headerOf(wrapRecord(record, description));
        EXPECT_EQ(header.DataQuality, -1) << quality;
        EXPECT_EQ(header.ValidFields & 0x1000, 0) << quality;
    }
    SampleDescription best = kIndexForEnrollment;
    best.quality = 100;
    EXPECT_EQ(headerOf(wrapRecord(record, best)).DataQuality, 100);
}

TEST(WrapRecord, WrapsARecordOfAnySize) {
    for (const std::size_t size : {0U, 1U, 7U, 6200U, 10'000'000U}) {
        const SecretBytes bir = wrapRecord(Bytes(size, 9), kIndexForEnrollment);
        EXPECT_EQ(bir.size(), 80 + size);
        EXPECT_EQ(littleEndian(bir, 8), size);
    }
}

}  // namespace
}  // namespace orl::unit
