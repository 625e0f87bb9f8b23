// The adapter with the matcher itself and the shipped log body, while memory runs out: at each
// allocation of the general heap in turn, and at each of the process heap.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platform/process_heap.h"
#include "tests/adapter/attached_unit.h"
#include "tests/support/bir_builder.h"
#include "tests/support/counting_heap.h"
#include "tests/support/failing_new.h"
#include "tests/support/record_builder.h"

namespace orl::test {
namespace {

std::vector<std::uint8_t> FingerBir() {
    return BuildBir(BuildRecord(RandomMinutiae(11, 20)));
}

// How a comparison with the stored finger ended.
enum class Outcome { kFound, kNotFound, kAnotherResult };

// A unit with a captured finger, which its storage holds too, for calls that are to go short of
// general memory. The matcher has been used before, so its tables exist.
class GeneralHeapRunsOut : public testing::Test {
  protected:
    GeneralHeapRunsOut() {
        const std::vector<std::uint8_t> bir = FingerBir();
        unit_.storage.records = {
            {.identity = identity_, .subFactor = 1, .templateBlob = bir},
        };
        unit_.Enroll(bir);
        FeatureSetOutputs outputs;
        unit_.Verify(identity_, 1, outputs);
    }

    // Repeats `call` with a failure at allocation 1, 2, 3 ... until it goes through without one,
    // and returns the number of failures. `call` says whether its result is that of a finger which
    // is found; no call that went short may find it.
    static std::int64_t FailEachAllocation(const std::function<Outcome()>& call) {
        for (std::int64_t failAt = 1;; ++failAt) {
            const std::int64_t liveBefore = LiveBlocks();
            bool failed = false;
            Outcome outcome = Outcome::kAnotherResult;
            {
                const FailingNew failing(failAt);
                outcome = call();
                failed = failing.Failed();
            }
            EXPECT_EQ(outcome, failed ? Outcome::kNotFound : Outcome::kFound)
                << "allocation " << failAt;
            EXPECT_EQ(LiveBlocks(), liveBefore) << "allocation " << failAt;
            if (!failed) {
                return failAt - 1;
            }
        }
    }

    WINBIO_IDENTITY identity_ = IdentityNumber(1);
    AttachedUnit unit_;
};

// A pipeline's storage that allocates nothing, so that only the adapter and the matcher go short.
class OneRecordStorage {
  public:
    OneRecordStorage(WINBIO_PIPELINE& pipeline, std::vector<std::uint8_t> bir)
        : bir_(std::move(bir)) {
        table_.QueryBySubject = [](PWINBIO_PIPELINE, PWINBIO_IDENTITY, WINBIO_BIOMETRIC_SUBTYPE) {
            return HRESULT{S_OK};
        };
        table_.QueryByContent = [](PWINBIO_PIPELINE, WINBIO_BIOMETRIC_SUBTYPE, PULONG, SIZE_T) {
            return HRESULT{S_OK};
        };
        table_.FirstRecord = [](PWINBIO_PIPELINE) { return HRESULT{S_OK}; };
        table_.NextRecord = [](PWINBIO_PIPELINE) {
            return HRESULT{WINBIO_E_DATABASE_NO_MORE_RECORDS};
        };
        table_.GetCurrentRecord = [](PWINBIO_PIPELINE p, PWINBIO_STORAGE_RECORD record) {
            auto& stored = static_cast<OneRecordStorage*>(p->StorageContext)->bir_;
            record->TemplateBlob = stored.data();
            record->TemplateBlobSize = stored.size();
            return HRESULT{S_OK};
        };
        pipeline.StorageInterface = &table_;
        pipeline.StorageContext = this;
    }

  private:
    WINBIO_STORAGE_INTERFACE table_ = {};
    std::vector<std::uint8_t> bir_;
};

TEST_F(GeneralHeapRunsOut, VerifyStillGivesSOkAndNoMatchAndKeepsNoMemory) {
    const OneRecordStorage storage(unit_.pipeline, FingerBir());
    const std::int64_t failures = FailEachAllocation([&] {
        FeatureSetOutputs outputs;
        if (unit_.Verify(identity_, 1, outputs) != S_OK) {
            return Outcome::kAnotherResult;
        }
        return outputs.match == TRUE ? Outcome::kFound : Outcome::kNotFound;
    });
    EXPECT_GT(failures, 2) << "the two copies and the matcher's own memory";
}

TEST_F(GeneralHeapRunsOut, IdentifyFindsNobody) {
    const OneRecordStorage storage(unit_.pipeline, FingerBir());
    const std::int64_t failures = FailEachAllocation([&] {
        FeatureSetOutputs outputs;
        switch (unit_.Identify(outputs)) {
            case S_OK:
                return Outcome::kFound;
            case WINBIO_E_UNKNOWN_ID:
                return Outcome::kNotFound;
            default:
                return Outcome::kAnotherResult;
        }
    });
    EXPECT_GT(failures, 2);
}

TEST_F(GeneralHeapRunsOut, TheDuplicateCheckGivesSOkAndFindsNone) {
    const OneRecordStorage storage(unit_.pipeline, FingerBir());
    const std::int64_t failures = FailEachAllocation([&] {
        DuplicateOutputs outputs;
        if (unit_.CheckForDuplicate(outputs) != S_OK) {
            return Outcome::kAnotherResult;
        }
        return outputs.duplicate == TRUE ? Outcome::kFound : Outcome::kNotFound;
    });
    EXPECT_GT(failures, 2);
}

// A whole life of a unit, each step of which must succeed or report a lack of memory.
bool RunWholeLife(std::vector<HRESULT>& results) {
    WINBIO_PIPELINE pipeline = {};
    FakeStorage storage(pipeline);
    const WINBIO_ENGINE_INTERFACE& engine = EngineTable();
    std::vector<std::uint8_t> bir = FingerBir();
    auto* sample = reinterpret_cast<PWINBIO_BIR>(bir.data());
    WINBIO_IDENTITY identity = IdentityNumber(1);
    PUCHAR exported = nullptr;
    SIZE_T exportedSize = 0;
    WINBIO_REJECT_DETAIL rejectDetail = 0;
    results = {engine.Attach(&pipeline)};
    if (FAILED(results[0])) {
        return pipeline.EngineContext == nullptr;
    }
    results.push_back(engine.AcceptPrivateSensorTypeInfo(&pipeline, bir.data(), bir.size()));
    results.push_back(engine.AcceptSampleData(&pipeline, sample, bir.size(), 4, &rejectDetail));
    results.push_back(engine.ExportEngineData(&pipeline, 0, &exported, &exportedSize));
    if (exported != nullptr) {
        std::fill_n(exported, exportedSize, UCHAR{0});
        HeapFree(GetProcessHeap(), 0, exported);
    }
    results.push_back(engine.CreateEnrollment(&pipeline));
    results.push_back(engine.UpdateEnrollment(&pipeline, &rejectDetail));
    results.push_back(engine.CommitEnrollment(&pipeline, &identity, 1, nullptr, 0));
    results.push_back(engine.Detach(&pipeline));
    return pipeline.EngineContext == nullptr;
}

TEST(ProcessHeapRunsOut, EachEntryPointReportsItAndNothingIsKept) {
    // What each step gives when allocation n fails; the steps are those of RunWholeLife.
    const HRESULT noMemory = E_OUTOFMEMORY;
    const HRESULT noData = WINBIO_E_NO_CAPTURE_DATA;
    const HRESULT bad = WINBIO_E_BAD_CAPTURE;
    const HRESULT state = WINBIO_E_INVALID_DEVICE_STATE;
    const HRESULT ok = S_OK;
    const std::vector<std::vector<HRESULT>> expected = {
        {noMemory},                                      // the context
        {ok, noMemory, ok, ok, ok, ok, ok, ok},          // the type information
        {ok, ok, noMemory, noData, ok, bad, state, ok},  // the sample
        {ok, ok, ok, noMemory, ok, ok, ok, ok},          // the exported copy
        {ok, ok, ok, ok, ok, noMemory, state, ok},       // the template
        {ok, ok, ok, ok, ok, ok, ok, ok},                // there is no sixth allocation
    };
    for (std::size_t successes = 0; successes < expected.size(); ++successes) {
        CountingHeap::Reset();
        CountingHeap::FailAfter(successes);
        std::vector<HRESULT> results;
        EXPECT_TRUE(RunWholeLife(results)) << "allocation " << successes + 1;
        EXPECT_EQ(results, expected[successes]) << "allocation " << successes + 1;
        EXPECT_EQ(CountingHeap::LiveBlocks(), 0U) << "allocation " << successes + 1;
        EXPECT_EQ(CountingHeap::UnwipedBlocks(), 0U) << "allocation " << successes + 1;
    }
    CountingHeap::Reset();
}

}  // namespace
}  // namespace orl::test
