#include "adapter/bir_extraction.h"

#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platform/wbf.h"
#include "tests/adapter/adapter_test.h"
#include "tests/support/guarded_buffer.h"

namespace orl::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Extraction {
    HRESULT hr;
    const std::uint8_t* data;
    std::size_t size;
};

// Extracts with outputs full of rubbish beforehand.
Extraction Extract(const std::uint8_t* bir, std::size_t birSize) {
    static const std::uint8_t rubbish = 0;
    Extraction extraction{.hr = S_FALSE, .data = &rubbish, .size = 77};
    extraction.hr = adapter::ExtractISOFromBIR(bir, birSize, &extraction.data, &extraction.size);
    return extraction;
}

// A BIR of so many bytes whose header tells this of its standard data block.
std::vector<std::uint8_t> BirOfSize(std::size_t bytes, std::uint32_t size, std::uint32_t offset) {
    std::vector<std::uint8_t> bir(bytes, 0x5A);
    SetStandardDataBlock(bir, size, offset);
    return bir;
}

class BirExtraction : public AdapterTest {
  protected:
    // Extracts from a BIR whose end is followed by memory that cannot be read.
    static void ExpectFailure(const std::vector<std::uint8_t>& bir, HRESULT hr) {
        const GuardedBuffer guarded(bir);
        const Extraction extraction = Extract(guarded.data(), guarded.size());
        EXPECT_EQ(extraction.hr, hr);
        EXPECT_EQ(extraction.data, nullptr);
        EXPECT_EQ(extraction.size, 0U);
    }

    static void ExpectView(const std::vector<std::uint8_t>& bir,
                           std::size_t offset,
                           std::size_t size) {
        const GuardedBuffer guarded(bir);
        const Extraction extraction = Extract(guarded.data(), guarded.size());
        EXPECT_EQ(extraction.hr, S_OK);
        EXPECT_EQ(extraction.data, guarded.data() + offset);
        EXPECT_EQ(extraction.size, size);
    }
};

TEST_F(BirExtraction, FindsTheStandardDataBlock) {
    ExpectView(BirOfSize(200, 30, 40), 40, 30);
    EXPECT_THAT(TakeLog(), ElementsAre("ExtractISOFromBIR: OK isoSize=30"));
}

TEST_F(BirExtraction, ReportsNoCaptureDataForA32ByteBirOfSizeZero) {
    ExpectFailure(BirOfSize(32, 0, 32), WINBIO_E_NO_CAPTURE_DATA);
    EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(BirExtraction, ReportsNoCaptureDataForOffsetZero) {
    ExpectFailure(BirOfSize(64, 10, 0), WINBIO_E_NO_CAPTURE_DATA);
    ExpectFailure(BirOfSize(64, 0, 0), WINBIO_E_NO_CAPTURE_DATA);
    // An empty block wins over one that lies beyond the end.
    ExpectFailure(BirOfSize(64, 0, 1000), WINBIO_E_NO_CAPTURE_DATA);
    EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(BirExtraction, RejectsAMissingOrShortBir) {
    const Extraction none = Extract(nullptr, 100);
    EXPECT_EQ(none.hr, E_INVALIDARG);
    EXPECT_EQ(none.data, nullptr);
    EXPECT_EQ(none.size, 0U);
    for (std::size_t bytes = 0; bytes < 32; ++bytes) {
        ExpectFailure(std::vector<std::uint8_t>(bytes, 1), E_INVALIDARG);
    }
    EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(BirExtraction, AcceptsABlockThatEndsExactlyAtTheEndOfTheBir) {
    ExpectView(BirOfSize(100, 68, 32), 32, 68);
    ExpectView(BirOfSize(33, 1, 32), 32, 1);
}

TEST_F(BirExtraction, RejectsABlockThatEndsOneByteBeyondTheBir) {
    ExpectFailure(BirOfSize(100, 69, 32), E_INVALIDARG);
    EXPECT_THAT(TakeLog(),
                ElementsAre("ExtractISOFromBIR: offset+size=101 > birSize=100 \xE2\x80\x94 "
                            "E_INVALIDARG"));
}

TEST_F(BirExtraction, CatchesASumBeyond32Bits) {
    // 0xFFFFFFF0 + 0x20 would be 0x10 if it were kept in 32 bits.
    ExpectFailure(BirOfSize(100, 0x20, 0xFFFFFFF0U), E_INVALIDARG);
    // 4294967280 + 32, and 2 * 4294967295.
    ExpectFailure(BirOfSize(100, 0xFFFFFFFFU, 0xFFFFFFFFU), E_INVALIDARG);
    EXPECT_THAT(TakeLog(),
                ElementsAre("ExtractISOFromBIR: offset+size=4294967312 > birSize=100 \xE2\x80\x94 "
                            "E_INVALIDARG",
                            "ExtractISOFromBIR: offset+size=8589934590 > birSize=100 \xE2\x80\x94 "
                            "E_INVALIDARG"));
}

TEST_F(BirExtraction, AcceptsAnOffsetThatPointsBackIntoTheHeader) {
    ExpectView(BirOfSize(32, 24, 8), 8, 24);
    ExpectView(BirOfSize(32, 31, 1), 1, 31);
}

TEST_F(BirExtraction, ReadsNothingButTheStandardDataPair) {
    std::vector<std::uint8_t> bir = BirOfSize(64, 16, 48);
    for (const std::size_t i : {0U, 7U, 16U, 31U}) {
        bir[i] = 0xFF;
    }
    ExpectView(bir, 48, 16);
}

TEST_F(BirExtraction, ReadsABirAtAnyAddress) {
    for (std::size_t shift = 0; shift < 8; ++shift) {
        std::vector<std::uint8_t> bytes(shift, 0);
        const std::vector<std::uint8_t> bir = BirOfSize(50, 9, 41);
        bytes.insert(bytes.end(), bir.begin(), bir.end());
        const Extraction extraction = Extract(bytes.data() + shift, 50);
        EXPECT_EQ(extraction.hr, S_OK);
        EXPECT_EQ(extraction.data, bytes.data() + shift + 41);
    }
}

TEST_F(BirExtraction, AgreesWithTheRulesOnRandomHeaders) {
    constexpr std::uint32_t kSeed = 20240517;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    constexpr std::uint32_t kAll = std::numeric_limits<std::uint32_t>::max();
    // Small numbers, so that both outcomes are common, and the far end now and then.
    const auto number = [&random] {
        const auto small = static_cast<std::uint32_t>(random() % 300);
        return random() % 4 == 0 ? kAll - small : small;
    };
    for (int i = 0; i < 3000; ++i) {
        const std::size_t bytes = 32 + random() % 300;
        const std::uint32_t size = number();
        const std::uint32_t offset = number();
        const std::vector<std::uint8_t> bir = BirOfSize(bytes, size, offset);
        const Extraction extraction = Extract(bir.data(), bir.size());
        HRESULT expected = S_OK;
        if (size == 0 || offset == 0) {
            expected = WINBIO_E_NO_CAPTURE_DATA;
        } else if (offset > bytes || size > bytes - offset) {
            expected = E_INVALIDARG;
        }
        ASSERT_EQ(extraction.hr, expected)
            << "bytes " << bytes << " size " << size << " offset " << offset;
        ASSERT_EQ(extraction.data, expected == S_OK ? bir.data() + offset : nullptr);
        ASSERT_EQ(extraction.size, expected == S_OK ? size : 0);
    }
}

}  // namespace
}  // namespace orl::test
