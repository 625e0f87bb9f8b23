#include "adapter/engine_context.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <gmock/gmock.h>

#include "platform/process_heap.h"
#include "tests/adapter/adapter_test.h"

namespace orl::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t kContextBytes = 56;  // six 8-byte fields, the flag and its padding

class AttachDetach : public AdapterTest {};

TEST_F(AttachDetach, CreatesAnEmptyContextAndFreesIt) {
    WINBIO_PIPELINE pipeline = {};
    EXPECT_EQ(EngineTable().Attach(&pipeline), S_OK);
    ASSERT_NE(pipeline.EngineContext, nullptr);
    EXPECT_EQ(Bytes(static_cast<PUCHAR>(pipeline.EngineContext), kContextBytes),
              std::vector<std::uint8_t>(kContextBytes, 0));
    EXPECT_EQ(EngineTable().Detach(&pipeline), S_OK);
    EXPECT_EQ(pipeline.EngineContext, nullptr);
    EXPECT_THAT(CountingHeap::TakeEvents(), ElementsAre("alloc 56 zeroed", "free 56"));
    EXPECT_THAT(TakeLog(), ElementsAre(">> EngineAdapterAttach", ">> EngineAdapterDetach"));
}

TEST_F(AttachDetach, TouchesNothingElseOfThePipeline) {
    WINBIO_PIPELINE pipeline = {};
    int object = 0;
    pipeline.SensorHandle = &object;
    pipeline.EngineHandle = &object;
    pipeline.StorageHandle = &object;
    pipeline.SensorContext = &object;
    pipeline.StorageContext = &object;
    pipeline.FrameworkInterface = &object;
    const WINBIO_PIPELINE before = pipeline;
    EXPECT_EQ(EngineTable().Attach(&pipeline), S_OK);
    EXPECT_EQ(EngineTable().Detach(&pipeline), S_OK);
    EXPECT_EQ(std::memcmp(&pipeline, &before, sizeof(pipeline)), 0);
}

TEST_F(AttachDetach, LeavesThePipelineUntouchedWhenMemoryRunsOut) {
    WINBIO_PIPELINE pipeline = {};
    int former = 0;
    pipeline.EngineContext = &former;
    CountingHeap::FailAfter(0);
    EXPECT_EQ(EngineTable().Attach(&pipeline), E_OUTOFMEMORY);
    EXPECT_EQ(pipeline.EngineContext, &former);
    EXPECT_THAT(TakeLog(), ElementsAre(">> EngineAdapterAttach"));
}

TEST_F(AttachDetach, DoesNotLookAtAFormerContextPointer) {
    WINBIO_PIPELINE pipeline = {};
    int former = 0;
    pipeline.EngineContext = &former;
    EXPECT_EQ(EngineTable().Attach(&pipeline), S_OK);
    EXPECT_NE(pipeline.EngineContext, &former);
    EXPECT_EQ(EngineTable().Detach(&pipeline), S_OK);
}

TEST_F(AttachDetach, DetachWithoutAContextSucceedsAndStillShutsTheMatcherDown) {
    WINBIO_PIPELINE pipeline = {};
    TheFakeMatcher().initialized = true;
    EXPECT_EQ(EngineTable().Detach(&pipeline), S_OK);
    EXPECT_EQ(TheFakeMatcher().shutdowns, 1);
    EXPECT_FALSE(TheFakeMatcher().initialized);
    EXPECT_THAT(TakeLog(), ElementsAre(">> EngineAdapterDetach"));
}

TEST_F(AttachDetach, FreesSampleThenTemplateThenTypeInfoThenTheContext) {
    AttachedUnit unit;
    std::vector<std::uint8_t> info(7, 3);
    EXPECT_EQ(unit.Enroll(std::vector<std::uint8_t>(40, 1)), S_OK);
    EXPECT_EQ(unit.Accept(std::vector<std::uint8_t>(50, 2)), S_OK);
    EXPECT_EQ(unit.engine.AcceptPrivateSensorTypeInfo(&unit.pipeline, info.data(), info.size()),
              S_OK);
    CountingHeap::TakeEvents();
    EXPECT_EQ(unit.Detach(), S_OK);
    EXPECT_THAT(CountingHeap::TakeEvents(), ElementsAre("free 50", "free 40", "free 7", "free 56"));
    EXPECT_EQ(TheFakeMatcher().shutdowns, 1);
}

TEST_F(AttachDetach, KeepsTheContextsOfTwoUnitsApart) {
    AttachedUnit first;
    AttachedUnit second;
    EXPECT_NE(first.pipeline.EngineContext, second.pipeline.EngineContext);
    EXPECT_EQ(first.Accept(std::vector<std::uint8_t>(40, 1)), S_OK);
    EXPECT_EQ(second.Context().SampleBuffer, nullptr);
    EXPECT_EQ(second.Detach(), S_OK);
    EXPECT_EQ(first.Context().SampleSize, 40U);
}

TEST_F(AttachDetach, CanBeRepeatedAnyNumberOfTimes) {
    WINBIO_PIPELINE pipeline = {};
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(EngineTable().Attach(&pipeline), S_OK);
        ASSERT_EQ(EngineTable().Detach(&pipeline), S_OK);
    }
    EXPECT_EQ(CountingHeap::LiveBlocks(), 0U);
}

class ClearContext : public UnitTest {};

TEST_F(ClearContext, DropsTheSample) {
    EXPECT_EQ(TheUnit().Accept(std::vector<std::uint8_t>(40, 1)), S_OK);
    TakeLog();
    CountingHeap::TakeEvents();
    EXPECT_EQ(TheUnit().engine.ClearContext(&TheUnit().pipeline), S_OK);
    EXPECT_EQ(TheUnit().Context().SampleBuffer, nullptr);
    EXPECT_EQ(TheUnit().Context().SampleSize, 0U);
    EXPECT_THAT(CountingHeap::TakeEvents(), ElementsAre("free 40"));
    EXPECT_THAT(TakeLog(), ElementsAre(">> EngineAdapterClearContext"));
}

TEST_F(ClearContext, SucceedsWithoutASampleAndWithoutAContext) {
    EXPECT_EQ(TheUnit().engine.ClearContext(&TheUnit().pipeline), S_OK);
    WINBIO_PIPELINE detached = {};
    EXPECT_EQ(TheUnit().engine.ClearContext(&detached), S_OK);
    EXPECT_THAT(CountingHeap::TakeEvents(), IsEmpty());
}

TEST_F(ClearContext, LeavesThePendingTemplateInPlaceBetweenEnrollmentSteps) {
    const std::vector<std::uint8_t> sample(40, 1);
    std::vector<std::uint8_t> info(7, 3);
    EXPECT_EQ(TheUnit().Enroll(sample), S_OK);
    EXPECT_EQ(
        TheUnit().engine.AcceptPrivateSensorTypeInfo(&TheUnit().pipeline, info.data(), info.size()),
        S_OK);
    EXPECT_EQ(TheUnit().engine.ClearContext(&TheUnit().pipeline), S_OK);
    const adapter::EngineContext& context = TheUnit().Context();
    EXPECT_EQ(Bytes(context.EnrollmentTemplate, context.EnrollmentTemplateSize), sample);
    EXPECT_NE(context.EnrollmentInProgress, FALSE);
    EXPECT_EQ(Bytes(context.PrivateSensorTypeInfo, context.PrivateSensorTypeInfoSize), info);
}

class AcceptSampleData : public UnitTest {
  protected:
    HRESULT Accept(std::vector<std::uint8_t>& sample, WINBIO_BIR_PURPOSE purpose = 0x01) {
        return TheUnit().engine.AcceptSampleData(&TheUnit().pipeline,
                                                 reinterpret_cast<PWINBIO_BIR>(sample.data()),
                                                 sample.size(),
                                                 purpose,
                                                 &rejectDetail_);
    }

    std::vector<std::uint8_t> Kept() {
        return Bytes(TheUnit().Context().SampleBuffer, TheUnit().Context().SampleSize);
    }

    WINBIO_REJECT_DETAIL rejectDetail_ = 77;
};

TEST_F(AcceptSampleData, KeepsACopyOfTheWholeSample) {
    std::vector<std::uint8_t> sample = BirOf(4);
    const std::vector<std::uint8_t> given = sample;
    EXPECT_EQ(Accept(sample), S_OK);
    sample.assign(sample.size(), 0);
    EXPECT_EQ(Kept(), given);
    EXPECT_EQ(rejectDetail_, 0U);
    // 32 bytes of header and (4 + 5) * 6 of record.
    EXPECT_THAT(TakeLog(),
                ElementsAre("EngineAdapterAcceptSampleData Purpose=0x01 SampleSize=86",
                            "EngineAdapterAcceptSampleData: stored sample SampleSize=86"));
    EXPECT_THAT(CountingHeap::TakeEvents(), ElementsAre("alloc 86"));
}

TEST_F(AcceptSampleData, OnlyLogsThePurpose) {
    std::vector<std::uint8_t> sample(1, 9);
    constexpr WINBIO_BIR_PURPOSE kPurposes[] = {0x00, 0x0A, 0x80, 0xFF};
    for (const WINBIO_BIR_PURPOSE purpose : kPurposes) {
        EXPECT_EQ(Accept(sample, purpose), S_OK);
    }
    const std::vector<std::string> log = TakeLog();
    ASSERT_EQ(log.size(), 8U);
    EXPECT_EQ(log[0], "EngineAdapterAcceptSampleData Purpose=0x00 SampleSize=1");
    EXPECT_EQ(log[2], "EngineAdapterAcceptSampleData Purpose=0x0A SampleSize=1");
    EXPECT_EQ(log[4], "EngineAdapterAcceptSampleData Purpose=0x80 SampleSize=1");
    EXPECT_EQ(log[6], "EngineAdapterAcceptSampleData Purpose=0xFF SampleSize=1");
}

TEST_F(AcceptSampleData, ReportsBadCaptureAndKeepsTheFormerSampleWithoutBytes) {
    std::vector<std::uint8_t> former(40, 1);
    std::vector<std::uint8_t> other(50, 2);
    EXPECT_EQ(Accept(former), S_OK);
    TakeLog();
    const auto& engine = TheUnit().engine;
    EXPECT_EQ(engine.AcceptSampleData(&TheUnit().pipeline, nullptr, 50, 0x04, &rejectDetail_),
              WINBIO_E_BAD_CAPTURE);
    EXPECT_EQ(rejectDetail_, 7U);
    rejectDetail_ = 77;
    auto* bir = reinterpret_cast<PWINBIO_BIR>(other.data());
    EXPECT_EQ(engine.AcceptSampleData(&TheUnit().pipeline, bir, 0, 0x04, &rejectDetail_),
              WINBIO_E_BAD_CAPTURE);
    EXPECT_EQ(rejectDetail_, 7U);
    EXPECT_EQ(Kept(), former);
    EXPECT_THAT(TakeLog(),
                ElementsAre("EngineAdapterAcceptSampleData Purpose=0x04 SampleSize=50",
                            "EngineAdapterAcceptSampleData Purpose=0x04 SampleSize=0"));
}

TEST_F(AcceptSampleData, ReplacesTheFormerSampleCompletely) {
    std::vector<std::uint8_t> first(40, 1);
    std::vector<std::uint8_t> second(10, 2);
    EXPECT_EQ(Accept(first), S_OK);
    EXPECT_EQ(Accept(second), S_OK);
    EXPECT_EQ(Kept(), second);
    EXPECT_THAT(CountingHeap::TakeEvents(), ElementsAre("alloc 40", "free 40", "alloc 10"));
}

TEST_F(AcceptSampleData, KeepsNoSampleButTheFormerSizeWhenMemoryRunsOut) {
    std::vector<std::uint8_t> first(40, 1);
    std::vector<std::uint8_t> second(10, 2);
    EXPECT_EQ(Accept(first), S_OK);
    TakeLog();
    rejectDetail_ = 77;
    CountingHeap::FailAfter(0);
    EXPECT_EQ(Accept(second), E_OUTOFMEMORY);
    EXPECT_EQ(TheUnit().Context().SampleBuffer, nullptr);
    EXPECT_EQ(TheUnit().Context().SampleSize, 40U);
    EXPECT_EQ(rejectDetail_, 77U) << "the reject detail is left alone";
    EXPECT_THAT(TakeLog(), ElementsAre("EngineAdapterAcceptSampleData Purpose=0x01 SampleSize=10"));
    EXPECT_THAT(CountingHeap::TakeEvents(), ElementsAre("alloc 40", "free 40", "alloc 10 failed"));
}

TEST_F(AcceptSampleData, IsFollowedByReadersThatIgnoreAStaleSize) {
    std::vector<std::uint8_t> first = BirOf(3);
    EXPECT_EQ(Accept(first), S_OK);
    CountingHeap::FailAfter(0);
    EXPECT_EQ(Accept(first), E_OUTOFMEMORY);

    const auto& engine = TheUnit().engine;
    PUCHAR exported = nullptr;
    SIZE_T exportedSize = 0;
    EXPECT_EQ(engine.ExportEngineData(&TheUnit().pipeline, 0, &exported, &exportedSize),
              WINBIO_E_NO_CAPTURE_DATA);
    FeatureSetOutputs outputs;
    WINBIO_IDENTITY identity = IdentityNumber(1);
    EXPECT_EQ(TheUnit().Verify(identity, 1, outputs), WINBIO_E_NO_CAPTURE_DATA);
    EXPECT_EQ(TheUnit().Identify(outputs), WINBIO_E_NO_CAPTURE_DATA);
    EXPECT_EQ(engine.CreateEnrollment(&TheUnit().pipeline), S_OK);
    EXPECT_EQ(engine.UpdateEnrollment(&TheUnit().pipeline, &rejectDetail_), WINBIO_E_BAD_CAPTURE);
    EXPECT_EQ(engine.ClearContext(&TheUnit().pipeline), S_OK);
    EXPECT_EQ(Accept(first), S_OK);
    EXPECT_EQ(Kept(), first);
}

TEST_F(AcceptSampleData, GoesOnWithoutARejectDetail) {
    std::vector<std::uint8_t> sample(5, 1);
    auto* bir = reinterpret_cast<PWINBIO_BIR>(sample.data());
    const auto& engine = TheUnit().engine;
    EXPECT_EQ(engine.AcceptSampleData(&TheUnit().pipeline, bir, 5, 0x01, nullptr), S_OK);
    EXPECT_EQ(Kept(), sample);
    EXPECT_EQ(engine.AcceptSampleData(&TheUnit().pipeline, nullptr, 0, 0x01, nullptr),
              WINBIO_E_BAD_CAPTURE);
}

TEST_F(AcceptSampleData, DoesNotLookIntoTheSample) {
    std::vector<std::uint8_t> oneByte(1, 0xFF);
    EXPECT_EQ(Accept(oneByte), S_OK);
    EXPECT_EQ(Kept(), oneByte);
}

class ExportEngineData : public UnitTest {
  protected:
    HRESULT Export(WINBIO_BIR_DATA_FLAGS flags = 0) {
        return TheUnit().engine.ExportEngineData(&TheUnit().pipeline, flags, &data_, &size_);
    }

    UCHAR rubbish_ = 0;
    PUCHAR data_ = &rubbish_;
    SIZE_T size_ = 77;
};

TEST_F(ExportEngineData, HandsOutAFreshCopyThatTheServiceOwns) {
    const std::vector<std::uint8_t> sample = BirOf(4);
    EXPECT_EQ(TheUnit().Accept(sample), S_OK);
    TakeLog();
    CountingHeap::TakeEvents();
    ASSERT_EQ(Export(), S_OK);
    EXPECT_EQ(Bytes(data_, size_), sample);
    EXPECT_NE(data_, TheUnit().Context().SampleBuffer);
    EXPECT_THAT(CountingHeap::TakeEvents(), ElementsAre("alloc 86"));
    EXPECT_THAT(TakeLog(),
                ElementsAre(">> EngineAdapterExportEngineData",
                            "EngineAdapterExportEngineData: OK size=86"));

    // The copy outlives the sample, and is the service's to free.
    EXPECT_EQ(TheUnit().engine.ClearContext(&TheUnit().pipeline), S_OK);
    EXPECT_EQ(Bytes(data_, size_), sample);
    std::fill_n(data_, size_, UCHAR{0});
    HeapFree(GetProcessHeap(), 0, data_);
}

TEST_F(ExportEngineData, ReportsNoCaptureDataWithZeroedOutputsBeforeAnySample) {
    EXPECT_EQ(Export(), WINBIO_E_NO_CAPTURE_DATA);
    EXPECT_EQ(data_, nullptr);
    EXPECT_EQ(size_, 0U);
    EXPECT_THAT(TakeLog(), ElementsAre(">> EngineAdapterExportEngineData"));
}

TEST_F(ExportEngineData, NeedsBothOutputs) {
    const auto& engine = TheUnit().engine;
    EXPECT_EQ(TheUnit().Accept(BirOf(1)), S_OK);
    EXPECT_EQ(engine.ExportEngineData(&TheUnit().pipeline, 0, nullptr, &size_), E_POINTER);
    EXPECT_EQ(size_, 77U);
    EXPECT_EQ(engine.ExportEngineData(&TheUnit().pipeline, 0, &data_, nullptr), E_POINTER);
    EXPECT_EQ(data_, &rubbish_);
    EXPECT_EQ(engine.ExportEngineData(&TheUnit().pipeline, 0, nullptr, nullptr), E_POINTER);
}

TEST_F(ExportEngineData, LeavesTheOutputsZeroedWhenMemoryRunsOut) {
    EXPECT_EQ(TheUnit().Accept(BirOf(1)), S_OK);
    TakeLog();
    CountingHeap::FailAfter(0);
    EXPECT_EQ(Export(), E_OUTOFMEMORY);
    EXPECT_EQ(data_, nullptr);
    EXPECT_EQ(size_, 0U);
    EXPECT_THAT(TakeLog(), ElementsAre(">> EngineAdapterExportEngineData"));
    EXPECT_NE(TheUnit().Context().SampleBuffer, nullptr);
}

TEST_F(ExportEngineData, IgnoresTheFlags) {
    const std::vector<std::uint8_t> sample(5, 6);
    EXPECT_EQ(TheUnit().Accept(sample), S_OK);
    constexpr WINBIO_BIR_DATA_FLAGS kFlags[] = {0x20, 0x40, 0x80, 0xFF};
    for (const WINBIO_BIR_DATA_FLAGS flags : kFlags) {
        ASSERT_EQ(Export(flags), S_OK);
        EXPECT_EQ(Bytes(data_, size_), sample);
        std::fill_n(data_, size_, UCHAR{0});
        HeapFree(GetProcessHeap(), 0, data_);
    }
}

class PrivateSensorTypeInfo : public UnitTest {
  protected:
    HRESULT Give(std::vector<std::uint8_t>& info) {
        return TheUnit().engine.AcceptPrivateSensorTypeInfo(
            &TheUnit().pipeline, info.data(), info.size());
    }

    std::vector<std::uint8_t> Kept() {
        return Bytes(TheUnit().Context().PrivateSensorTypeInfo,
                     TheUnit().Context().PrivateSensorTypeInfoSize);
    }
};

TEST_F(PrivateSensorTypeInfo, IsKeptAsACopy) {
    std::vector<std::uint8_t> info = {1, 2, 3};
    EXPECT_EQ(Give(info), S_OK);
    info[0] = 9;
    EXPECT_THAT(Kept(), ElementsAre(1, 2, 3));
    EXPECT_THAT(TakeLog(),
                ElementsAre("EngineAdapterAcceptPrivateSensorTypeInfo TypeInfoBufferSize=3"));
    EXPECT_THAT(CountingHeap::TakeEvents(), ElementsAre("alloc 3 zeroed"));
}

TEST_F(PrivateSensorTypeInfo, ReplacesTheFormerOne) {
    std::vector<std::uint8_t> first(10, 1);
    std::vector<std::uint8_t> second(4096, 2);
    EXPECT_EQ(Give(first), S_OK);
    EXPECT_EQ(Give(second), S_OK);
    EXPECT_EQ(Kept(), second);
    EXPECT_THAT(CountingHeap::TakeEvents(),
                ElementsAre("alloc 10 zeroed", "free 10", "alloc 4096 zeroed"));
}

TEST_F(PrivateSensorTypeInfo, NeedsAPipelineWithAContext) {
    std::vector<std::uint8_t> info(3, 1);
    WINBIO_PIPELINE detached = {};
    const auto& engine = TheUnit().engine;
    EXPECT_EQ(engine.AcceptPrivateSensorTypeInfo(nullptr, info.data(), 3), E_POINTER);
    EXPECT_EQ(engine.AcceptPrivateSensorTypeInfo(&detached, info.data(), 3), E_POINTER);
    EXPECT_EQ(engine.AcceptPrivateSensorTypeInfo(&detached, nullptr, 0), E_POINTER)
        << "the context is looked at first";
    EXPECT_THAT(TakeLog(),
                ElementsAre("EngineAdapterAcceptPrivateSensorTypeInfo TypeInfoBufferSize=3",
                            "EngineAdapterAcceptPrivateSensorTypeInfo TypeInfoBufferSize=3",
                            "EngineAdapterAcceptPrivateSensorTypeInfo TypeInfoBufferSize=0"));
}

TEST_F(PrivateSensorTypeInfo, NeedsBytesAndKeepsTheFormerOneWithoutThem) {
    std::vector<std::uint8_t> info(3, 1);
    EXPECT_EQ(Give(info), S_OK);
    const auto& engine = TheUnit().engine;
    EXPECT_EQ(engine.AcceptPrivateSensorTypeInfo(&TheUnit().pipeline, nullptr, 3), E_INVALIDARG);
    EXPECT_EQ(engine.AcceptPrivateSensorTypeInfo(&TheUnit().pipeline, info.data(), 0),
              E_INVALIDARG);
    EXPECT_EQ(Kept(), info);
}

TEST_F(PrivateSensorTypeInfo, IsGoneWithItsSizeWhenMemoryRunsOut) {
    std::vector<std::uint8_t> info(3, 1);
    EXPECT_EQ(Give(info), S_OK);
    CountingHeap::FailAfter(0);
    EXPECT_EQ(Give(info), E_OUTOFMEMORY);
    EXPECT_EQ(TheUnit().Context().PrivateSensorTypeInfo, nullptr);
    EXPECT_EQ(TheUnit().Context().PrivateSensorTypeInfoSize, 0U);
    EXPECT_EQ(Give(info), S_OK);
    EXPECT_EQ(Kept(), info);
}

}  // namespace
}  // namespace orl::test
