#include "adapter/interface_table.h"

#include <array>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/adapter/adapter_test.h"
#include "tests/adapter/page_protection.h"

namespace orl::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t kHeaderBytes = 32;
constexpr std::size_t kTableBytes = 360;
constexpr std::size_t kSlots = 41;

using TableBytes = std::array<std::uint8_t, kTableBytes>;

TableBytes BytesOf(const WINBIO_ENGINE_INTERFACE& table) {
    TableBytes bytes;
    std::memcpy(bytes.data(), &table, bytes.size());
    return bytes;
}

// The pointer in slot `number`, counted from 1, as it lies in the table's bytes.
std::uint64_t SlotValue(const TableBytes& bytes, std::size_t number) {
    std::uint64_t value = 0;
    std::memcpy(&value, bytes.data() + kHeaderBytes + 8 * (number - 1), sizeof(value));
    return value;
}

class InterfaceTable : public AdapterTest {};

TEST_F(InterfaceTable, IsTheSameForEveryQuery) {
    PWINBIO_ENGINE_INTERFACE first = nullptr;
    PWINBIO_ENGINE_INTERFACE second = nullptr;
    EXPECT_EQ(WbioQueryEngineInterface(&first), S_OK);
    EXPECT_EQ(WbioQueryEngineInterface(&second), S_OK);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(first, second);
}

TEST_F(InterfaceTable, DeclaresVersionOneWithTheSizeOfTheLongLayout) {
    const std::array<std::uint8_t, kHeaderBytes> expected = {
        0x01, 0x00, 0x00, 0x00,                          // version 1.0
        0x02, 0x00, 0x00, 0x00,                          // an engine adapter
        0x68, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // 360 = 0x168 bytes
        0x92, 0x3A, 0x1F, 0x6D, 0x7C, 0x5B, 0x08, 0x4E,  // {6D1F3A92-5B7C-4E08-
        0x9A, 0x41, 0x2C, 0x7E, 0x5B, 0x90, 0xD3, 0xF6,  //  9A41-2C7E5B90D3F6}
    };
    const TableBytes bytes = BytesOf(EngineTable());
    EXPECT_EQ(std::memcmp(bytes.data(), expected.data(), expected.size()), 0);
}

TEST_F(InterfaceTable, FillsSlots1To21And39AndNoOther) {
    const TableBytes bytes = BytesOf(EngineTable());
    for (std::size_t slot = 1; slot <= kSlots; ++slot) {
        const bool filled = slot <= 21 || slot == 39;
        EXPECT_EQ(SlotValue(bytes, slot) != 0, filled) << "slot " << slot;
    }
}

TEST_F(InterfaceTable, HasOneHandlerASlotButForTheTwoControlUnits) {
    const TableBytes bytes = BytesOf(EngineTable());
    std::set<std::uint64_t> handlers;
    for (std::size_t slot = 1; slot <= 20; ++slot) {
        EXPECT_TRUE(handlers.insert(SlotValue(bytes, slot)).second) << "slot " << slot;
    }
    EXPECT_EQ(SlotValue(bytes, 20), SlotValue(bytes, 21));
    EXPECT_TRUE(handlers.insert(SlotValue(bytes, 39)).second);
}

TEST_F(InterfaceTable, NeverChangesItsBytes) {
    const TableBytes before = BytesOf(EngineTable());
    {
        AttachedUnit unit;
        WINBIO_IDENTITY identity = IdentityNumber(1);
        FeatureSetOutputs outputs;
        EXPECT_EQ(unit.Enroll(BirOf(3)), S_OK);
        EXPECT_EQ(unit.engine.CommitEnrollment(&unit.pipeline, &identity, 2, nullptr, 0), S_OK);
        EXPECT_EQ(unit.Verify(identity, 2, outputs), S_OK);
        EXPECT_EQ(unit.Identify(outputs), WINBIO_E_UNKNOWN_ID);
    }
    EXPECT_EQ(BytesOf(EngineTable()), before);
}

TEST_F(InterfaceTable, LiesInMemoryThatCannotBeWritten) {
    EXPECT_FALSE(IsWritable(&EngineTable()));
    int onTheStack = 0;
    EXPECT_TRUE(IsWritable(&onTheStack)) << "the test must be able to tell";
}

TEST_F(InterfaceTable, NeedsNoMemoryToBeQueried) {
    CountingHeap::FailAfter(0);
    EngineTable();
    EXPECT_THAT(CountingHeap::TakeEvents(), IsEmpty());
    CountingHeap::Reset();
}

class PreferredFormat : public AdapterTest {
  protected:
    WINBIO_PIPELINE pipeline_ = {};
    WINBIO_REGISTERED_FORMAT standard_ = {0x7777, 0x7777};
    GUID vendor_ = {};
};

TEST_F(PreferredFormat, IsTheImageFormatAndTheAdapterItself) {
    EXPECT_EQ(EngineTable().QueryPreferredFormat(&pipeline_, &standard_, &vendor_), S_OK);
    EXPECT_EQ(standard_.Owner, 0x001B);
    EXPECT_EQ(standard_.Type, 0x0401);
    EXPECT_EQ(std::memcmp(&vendor_, &EngineTable().AdapterId, sizeof(vendor_)), 0);
    EXPECT_THAT(TakeLog(), ElementsAre(">> EngineAdapterQueryPreferredFormat"));
}

TEST_F(PreferredFormat, NeedsBothOutputsAndWritesNeitherWithoutTheOther) {
    EXPECT_EQ(EngineTable().QueryPreferredFormat(&pipeline_, nullptr, &vendor_), E_POINTER);
    EXPECT_EQ(EngineTable().QueryPreferredFormat(&pipeline_, &standard_, nullptr), E_POINTER);
    EXPECT_EQ(EngineTable().QueryPreferredFormat(&pipeline_, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(standard_.Owner, 0x7777);
    EXPECT_EQ(vendor_.Data1, 0U);
}

class StubSlots : public AdapterTest {
  protected:
    WINBIO_PIPELINE pipeline_ = {};
};

TEST_F(StubSlots, IndexVectorSizeIsZeroAndNotLogged) {
    SIZE_T elements = 77;
    EXPECT_EQ(EngineTable().QueryIndexVectorSize(&pipeline_, &elements), S_OK);
    EXPECT_EQ(elements, 0U);
    EXPECT_EQ(EngineTable().QueryIndexVectorSize(&pipeline_, nullptr), E_POINTER);
    EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(StubSlots, SampleHintIsOneAndNotLogged) {
    SIZE_T hint = 77;
    EXPECT_EQ(EngineTable().QuerySampleHint(&pipeline_, &hint), S_OK);
    EXPECT_EQ(hint, 1U);
    EXPECT_EQ(EngineTable().QuerySampleHint(&pipeline_, nullptr), E_POINTER);
    EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(StubSlots, HashAlgorithmsAreNotThereAndNothingIsWritten) {
    SIZE_T count = 77;
    SIZE_T size = 78;
    UCHAR byte = 0;
    PUCHAR buffer = &byte;
    EXPECT_EQ(EngineTable().QueryHashAlgorithms(&pipeline_, &count, &size, &buffer), E_NOTIMPL);
    EXPECT_EQ(count, 77U);
    EXPECT_EQ(size, 78U);
    EXPECT_EQ(buffer, &byte);
    EXPECT_EQ(EngineTable().QueryHashAlgorithms(nullptr, nullptr, nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(EngineTable().SetHashAlgorithm(&pipeline_, 1, &byte), E_NOTIMPL);
    EXPECT_EQ(EngineTable().SetHashAlgorithm(nullptr, 0, nullptr), E_NOTIMPL);
    EXPECT_THAT(TakeLog(),
                ElementsAre(">> EngineAdapterQueryHashAlgorithms",
                            ">> EngineAdapterQueryHashAlgorithms",
                            ">> EngineAdapterSetHashAlgorithm",
                            ">> EngineAdapterSetHashAlgorithm"));
}

TEST_F(StubSlots, EnrollmentHashIsNotThereAndItsOutputsAreCleared) {
    UCHAR byte = 0;
    PUCHAR hash = &byte;
    SIZE_T size = 77;
    EXPECT_EQ(EngineTable().GetEnrollmentHash(&pipeline_, &hash, &size), E_NOTIMPL);
    EXPECT_EQ(hash, nullptr);
    EXPECT_EQ(size, 0U);
    hash = &byte;
    EXPECT_EQ(EngineTable().GetEnrollmentHash(&pipeline_, &hash, nullptr), E_NOTIMPL);
    EXPECT_EQ(hash, nullptr);
    size = 77;
    EXPECT_EQ(EngineTable().GetEnrollmentHash(&pipeline_, nullptr, &size), E_NOTIMPL);
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(EngineTable().GetEnrollmentHash(nullptr, nullptr, nullptr), E_NOTIMPL);
    EXPECT_THAT(
        TakeLog(),
        testing::AllOf(testing::SizeIs(4), testing::Each(">> EngineAdapterGetEnrollmentHash")));
}

TEST_F(StubSlots, ControlUnitsAreNotThereAndTheirOutputsAreClearedWhereThereAreAny) {
    for (const auto slot : {EngineTable().ControlUnit, EngineTable().ControlUnitPrivileged}) {
        UCHAR send = 1;
        UCHAR receive = 2;
        SIZE_T received = 77;
        ULONG status = 78;
        EXPECT_EQ(slot(&pipeline_, 5, &send, 1, &receive, 1, &received, &status), E_NOTIMPL);
        EXPECT_EQ(received, 0U);
        EXPECT_EQ(status, 0U);
        EXPECT_EQ(receive, 2);
        received = 77;
        EXPECT_EQ(slot(&pipeline_, 5, nullptr, 0, nullptr, 0, &received, nullptr), E_NOTIMPL);
        EXPECT_EQ(received, 0U);
        status = 78;
        EXPECT_EQ(slot(&pipeline_, 5, nullptr, 0, nullptr, 0, nullptr, &status), E_NOTIMPL);
        EXPECT_EQ(status, 0U);
        EXPECT_EQ(slot(nullptr, 0, nullptr, 0, nullptr, 0, nullptr, nullptr), E_NOTIMPL);
    }
    EXPECT_THAT(TakeLog(),
                testing::AllOf(testing::SizeIs(8), testing::Each(">> EngineAdapterControlUnit")));
}

}  // namespace
}  // namespace orl::test
