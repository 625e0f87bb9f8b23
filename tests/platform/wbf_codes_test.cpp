#include "platform/wbf_codes.h"

#include <cstdint>

#include <gtest/gtest.h>

#include "platform/wbf.h"

namespace orl::test {
namespace {

std::uint32_t Bits(HRESULT hr) {
    return static_cast<std::uint32_t>(hr);
}

TEST(WbfCodes, HaveThePublishedValuesOfWhatTheAdapterReturns) {
    EXPECT_EQ(Bits(S_OK), 0U);
    EXPECT_EQ(Bits(E_NOTIMPL), 0x80004001U);
    EXPECT_EQ(Bits(E_POINTER), 0x80004003U);
    EXPECT_EQ(Bits(E_FAIL), 0x80004005U);
    EXPECT_EQ(Bits(E_OUTOFMEMORY), 0x8007000EU);
    EXPECT_EQ(Bits(E_INVALIDARG), 0x80070057U);
    EXPECT_EQ(Bits(WINBIO_E_UNKNOWN_ID), 0x80098003U);
    EXPECT_EQ(Bits(WINBIO_E_BAD_CAPTURE), 0x80098008U);
    EXPECT_EQ(Bits(WINBIO_E_INVALID_DEVICE_STATE), 0x8009800FU);
    EXPECT_EQ(Bits(WINBIO_E_NO_CAPTURE_DATA), 0x80098026U);
    EXPECT_EQ(WINBIO_FP_POOR_QUALITY, 7U);
}

TEST(WbfCodes, AreSplitIntoSuccessesAndFailuresByTheirSign) {
    EXPECT_TRUE(SUCCEEDED(S_OK));
    EXPECT_TRUE(SUCCEEDED(S_FALSE));
    EXPECT_TRUE(SUCCEEDED(WINBIO_I_MORE_DATA));
    EXPECT_FALSE(SUCCEEDED(E_FAIL));
    EXPECT_TRUE(FAILED(WINBIO_E_UNKNOWN_ID));
    EXPECT_FALSE(FAILED(S_FALSE));
}

TEST(WbfLayout, KeepsAGuidInItsPlatformByteOrder) {
    const GUID guid = {
        0x6D1F3A92, 0x5B7C, 0x4E08, {0x9A, 0x41, 0x2C, 0x7E, 0x5B, 0x90, 0xD3, 0xF6}};
    constexpr std::uint8_t kExpected[16] = {0x92,
                                            0x3A,
                                            0x1F,
                                            0x6D,
                                            0x7C,
                                            0x5B,
                                            0x08,
                                            0x4E,
                                            0x9A,
                                            0x41,
                                            0x2C,
                                            0x7E,
                                            0x5B,
                                            0x90,
                                            0xD3,
                                            0xF6};
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&guid);
    for (std::size_t i = 0; i < sizeof(guid); ++i) {
        EXPECT_EQ(bytes[i], kExpected[i]) << "byte " << i;
    }
}

}  // namespace
}  // namespace orl::test
