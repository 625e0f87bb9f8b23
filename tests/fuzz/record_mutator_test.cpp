#include "fuzz/record_mutator.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

#include "matcher/api/template_loading.h"
#include "tests/support/record_builder.h"

namespace orl::fuzz {
namespace {

constexpr std::size_t kMostBytes = 1200;
constexpr std::uint32_t kSeeds = 2000;

// Stands in for the fuzzer's own mutation: the last byte changes, and one is added where it fits.
std::size_t ChangeTheEnd(std::uint8_t* bytes, std::size_t size, std::size_t mostBytes) {
    if (size < mostBytes) {
        bytes[size] = 0x77;
        return size + 1;
    }
    bytes[size - 1] ^= 0xFF;
    return size;
}

Bytes Sound() {
    return test::BuildRecord(test::RandomMinutiae(3, 20));
}

Bytes Mutated(std::uint32_t seed, Bytes record) {
    RecordMutator(seed, ChangeTheEnd).Mutate(record, kMostBytes);
    return record;
}

bool HasRightLength(const Bytes& record) {
    Bytes mended = record;
    MendLength(mended);
    return record.size() >= 12 && mended == record;
}

bool IsParsed(const Bytes& record) {
    matcher::LoadedTemplate loaded;
    std::string message;
    try {
        return matcher::loadTemplateFromBuffer(
                   record.data(), record.size(), "Probe", 2, 4, loaded, message) == 0;
    } catch (const std::exception&) {
        return true;  // it came as far as the triangulation
    }
}

TEST(RecordMutator, KeepsTheLengthFieldRightInHalfOfTheRecordsAtLeast) {
    std::uint32_t right = 0;
    for (std::uint32_t seed = 0; seed < kSeeds; ++seed) {
        right += HasRightLength(Mutated(seed, Sound())) ? 1 : 0;
    }
    EXPECT_GE(right, kSeeds * 48 / 100);
    EXPECT_LE(right, kSeeds * 80 / 100) << "wrong lengths must be tried too";
}

TEST(RecordMutator, MakesRecordsOfWhichManyAreStillLoaded) {
    std::uint32_t parsed = 0;
    for (std::uint32_t seed = 0; seed < kSeeds; ++seed) {
        Bytes record = Sound();
        for (std::uint32_t round = 0; round < 4; ++round) {
            record = Mutated(4 * seed + round, record);
        }
        parsed += IsParsed(record) ? 1 : 0;
    }
    EXPECT_GE(parsed, kSeeds / 10);
}

TEST(RecordMutator, NeverLeavesItsRoom) {
    for (std::uint32_t seed = 0; seed < kSeeds; ++seed) {
        Bytes record = test::BuildRecord(test::RandomMinutiae(seed, 190));
        RecordMutator(seed, ChangeTheEnd).Mutate(record, 1150);
        ASSERT_LE(record.size(), 1150U) << "seed " << seed;
    }
}

TEST(RecordMutator, MakesARecordOfAnyBytes) {
    const Bytes inputs[] = {{}, {1}, Bytes(11, 0xFF), Bytes(24, 0xFF), Bytes(30, 0xFF)};
    for (const Bytes& input : inputs) {
        std::uint32_t parsed = 0;
        for (std::uint32_t seed = 0; seed < 200; ++seed) {
            parsed += IsParsed(Mutated(seed, input)) ? 1 : 0;
        }
        EXPECT_GT(parsed, 0U) << input.size() << " bytes";
    }
}

TEST(RecordMutator, RepeatsItselfForASeedAndDiffersAmongSeeds) {
    std::set<Bytes> different;
    for (std::uint32_t seed = 0; seed < 100; ++seed) {
        EXPECT_EQ(Mutated(seed, Sound()), Mutated(seed, Sound())) << "seed " << seed;
        different.insert(Mutated(seed, Sound()));
    }
    // A fifth are the plain mutation's, which is the same for each seed here.
    EXPECT_GE(different.size(), 70U);
}

TEST(MendLength, WritesTheSizeAndLeavesWhatIsTooShort) {
    Bytes record(70000, 0);
    MendLength(record);
    EXPECT_EQ(record[8], 0);
    EXPECT_EQ(record[9], 1);  // 70000 = 0x00011170
    EXPECT_EQ(record[10], 0x11);
    EXPECT_EQ(record[11], 0x70);
    Bytes brief(11, 0xEE);
    MendLength(brief);
    EXPECT_EQ(brief, Bytes(11, 0xEE));
}

}  // namespace
}  // namespace orl::fuzz
