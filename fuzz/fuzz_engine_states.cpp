// Any sequence of calls of the interface table: each answers as the model does, and afterwards the
// context, the process heap, the storage's calls and what reached the matcher are the model's too.
// Between the calls the input scripts the neighbours: records and answers of the storage, answers
// of the matcher, and which allocation of either heap fails. At the end every block is freed, and
// wiped.

#include <cstring>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>

#include "adapter/engine_context.h"
#include "adapter/engine_log_capture.h"
#include "adapter/interface_table.h"
#include "fuzz/engine_model.h"
#include "fuzz/input_reader.h"
#include "fuzz/require.h"
#include "platform/process_heap.h"
#include "tests/adapter/fake_matcher.h"
#include "tests/adapter/watched_new.h"
#include "tests/support/counting_heap.h"

namespace {

using namespace orl::fuzz;
using orl::test::CountingHeap;
using orl::test::TheFakeMatcher;
using orl::test::WatchedNew;

constexpr std::size_t kHeaderBytes = 32;
constexpr std::size_t kMostRecords = 6;  // in the storage at a time
// What outputs hold before a call.
constexpr int kRubbish = 0xEE;

const WINBIO_ENGINE_INTERFACE& Table() {
    PWINBIO_ENGINE_INTERFACE table = nullptr;
    WbioQueryEngineInterface(&table);
    return *table;
}

WINBIO_IDENTITY IdentityOf(std::uint8_t number) {
    WINBIO_IDENTITY identity;
    std::memset(&identity, number, sizeof(identity));
    return identity;
}

bool Same(const WINBIO_IDENTITY& a, const WINBIO_IDENTITY& b) {
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

void Put32(Bytes& bytes, std::size_t at, std::size_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

// A BIR with a record of one view, mostly sound: now and then its sizes are a little off, or it is
// a few bytes of anything.
Bytes ReadBir(InputReader& input) {
    if (input.Once(8)) {
        return input.Bytes(input.Below(64));
    }
    const std::size_t minutiae = input.Below(8);
    Bytes bir(kHeaderBytes + (minutiae + 5) * 6, input.Byte());
    const std::size_t declaredMore = input.Once(6) ? 1 : 0;
    bir[kHeaderBytes + 27] = static_cast<std::uint8_t>(minutiae + declaredMore);
    Put32(bir, 8, bir.size() - kHeaderBytes);
    Put32(bir, 12, kHeaderBytes);
    if (input.Once(5)) {  // a little off, or anything, or beyond 32 bits when summed
        constexpr std::size_t kMostBytes = 0xFFFFFFFF;
        const std::size_t sizes[] = {0, 1, bir.size(), bir.size() - kHeaderBytes + 1, kMostBytes};
        const std::size_t offsets[] = {0, 8, kHeaderBytes, kHeaderBytes + 1, kMostBytes};
        Put32(bir, 8, sizes[input.Below(std::size(sizes))]);
        Put32(bir, 12, offsets[input.Below(std::size(offsets))]);
    }
    return bir;
}

// A record as a storage may give it. What it states of its size is never such that a reader who
// keeps the rules would leave the bytes that are there.
ScriptedRecord ReadRecord(InputReader& input) {
    ScriptedRecord record;
    if (!input.Once(4)) {
        record.identity = IdentityOf(input.Byte());
    }
    record.subFactor = input.Byte();
    constexpr SIZE_T kHuge = ~SIZE_T{0};
    if (input.Once(6)) {
        record.statedBytes = input.Once(2) ? kHuge : input.Byte();
        return record;
    }
    record.blob = ReadBir(input);
    record.statedBytes = record.blob->size();
    if (input.Once(3)) {
        const std::size_t smaller = input.Byte();
        if (smaller < record.statedBytes) {
            record.statedBytes = smaller;
        } else if (record.blob->size() >= kHeaderBytes) {
            const auto [size, offset] = StandardDataOf(*record.blob);
            record.statedBytes = size + offset <= record.blob->size() ? kHuge : record.statedBytes;
        }
    }
    return record;
}

orl::test::MatchAnswer FakeAnswer(Comparison comparison) {
    switch (comparison) {
        case Comparison::Match:
            return {.status = 0, .matched = 1, .score = 400};
        case Comparison::NoMatch:
            return {.status = 0, .matched = 0, .score = 20};
        case Comparison::FailedStatus:
            return {.status = 3, .matched = 1, .score = 999};
        case Comparison::StandardException:
            return {.matched = 1, .raise = [] { throw std::runtime_error("not triangulation"); }};
        case Comparison::OtherException:
            break;
    }
    return {.matched = 1, .raise = [] { throw 7; }};
}

class EngineStates {
  public:
    explicit EngineStates(InputReader input) : input_(input) {
        ForgetAll();
        ConnectStorage(true);
    }
    ~EngineStates() { ForgetAll(); }
    EngineStates(const EngineStates&) = delete;
    EngineStates& operator=(const EngineStates&) = delete;

    void Run() {
        Attach();
        while (!input_.AtEnd()) {
            (this->*kSteps[input_.Below(std::size(kSteps))])();
            CheckState();
        }
        Detach();
        Require(CountingHeap::LiveBlocks() == 0, "every block is freed");
        Require(CountingHeap::UnwipedBlocks() == 0, "every block is wiped");
        Require(WatchedNew::LiveNothrowBlocks() == 0, "every record copy is freed");
        Require(WatchedNew::UnwipedBlocks() == 0, "every record copy is wiped");
    }

  private:
    // Nothing is kept from input to input.
    static void ForgetAll() {
        TheFakeMatcher() = {};
        CountingHeap::Reset();
        WatchedNew::Reset();
        orl::adapter::TakeCapturedLog();
    }

    void ConnectStorage(bool connected) {
        model_.hasStorage = connected;
        pipeline_.StorageInterface = connected ? ScriptedStorage::Table() : nullptr;
        pipeline_.StorageContext = &storage_;
    }

    // Only an attached unit may be given to the entry points that the service calls after Attach.
    void AttachFirst() {
        while (!model_.attached) {
            Attach();
        }
    }

    void Attach() {
        if (!model_.attached) {
            Require(engine_.Attach(&pipeline_) == model_.Attach(), "Attach");
        }
    }

    void Detach() { Require(engine_.Detach(&pipeline_) == model_.Detach(), "Detach"); }

    void ClearContext() {
        Require(engine_.ClearContext(&pipeline_) == model_.ClearContext(), "ClearContext");
    }

    void AcceptSample() {
        AttachFirst();
        std::optional<Bytes> sample;
        if (!input_.Once(8)) {
            sample = ReadBir(input_);
        }
        WINBIO_REJECT_DETAIL rejectDetail = kRubbish;
        WINBIO_REJECT_DETAIL expectedDetail = kRubbish;
        const bool detailWanted = !input_.Once(8);
        const SIZE_T sizeWithoutSample = sample ? 0 : input_.Byte();
        const WINBIO_BIR_PURPOSE purpose = input_.Byte();
        const HRESULT hr = engine_.AcceptSampleData(
            &pipeline_,
            sample ? reinterpret_cast<PWINBIO_BIR>(sample->data()) : nullptr,
            sample ? sample->size() : sizeWithoutSample,
            purpose,
            detailWanted ? &rejectDetail : nullptr);
        Require(hr == model_.AcceptSample(sample, expectedDetail), "AcceptSampleData");
        Require(!detailWanted || rejectDetail == expectedDetail, "AcceptSampleData's detail");
    }

    void Export() {
        AttachFirst();
        PUCHAR exported = reinterpret_cast<PUCHAR>(&pipeline_);
        SIZE_T exportedBytes = kRubbish;
        if (input_.Once(8)) {
            Require(engine_.ExportEngineData(&pipeline_, 0, nullptr, &exportedBytes) == E_POINTER,
                    "ExportEngineData without an output");
            return;
        }
        Bytes expected;
        const HRESULT hr =
            engine_.ExportEngineData(&pipeline_, input_.Byte(), &exported, &exportedBytes);
        Require(hr == model_.Export(expected), "ExportEngineData");
        Require(exportedBytes == expected.size(), "the exported size");
        Require((exported == nullptr) == expected.empty(), "the exported copy");
        if (exported != nullptr) {
            Require(Bytes(exported, exported + exportedBytes) == expected, "the exported bytes");
            std::memset(exported, 0, exportedBytes);
            HeapFree(GetProcessHeap(), 0, exported);
        }
    }

    void AcceptTypeInfo() {
        std::optional<Bytes> info;
        if (!input_.Once(4)) {
            info = input_.Bytes(input_.Below(32));
        }
        const HRESULT hr = engine_.AcceptPrivateSensorTypeInfo(
            &pipeline_, info ? info->data() : nullptr, info ? info->size() : input_.Byte());
        Require(hr == model_.AcceptTypeInfo(info), "AcceptPrivateSensorTypeInfo");
    }

    void Verify() {
        WINBIO_IDENTITY identity = IdentityOf(input_.Byte());
        PWINBIO_IDENTITY subject = input_.Once(8) ? nullptr : &identity;
        const WINBIO_BIOMETRIC_SUBTYPE subFactor = input_.Byte();
        BOOLEAN match = kRubbish;
        UnusedOutputs unused;
        bool expected = false;
        const HRESULT hr = engine_.VerifyFeatureSet(&pipeline_,
                                                    subject,
                                                    subFactor,
                                                    &match,
                                                    &unused.payload,
                                                    &unused.payloadBytes,
                                                    &unused.hash,
                                                    &unused.hashBytes,
                                                    &unused.rejectDetail);
        Require(hr == model_.Verify(subject, subFactor, expected), "VerifyFeatureSet");
        Require(match == (expected ? TRUE : FALSE), "VerifyFeatureSet's match");
        unused.RequireNeutral();
    }

    void Identify() {
        WINBIO_IDENTITY identity = IdentityOf(kRubbish);
        WINBIO_IDENTITY expectedIdentity;
        WINBIO_BIOMETRIC_SUBTYPE subFactor = kRubbish;
        WINBIO_BIOMETRIC_SUBTYPE expectedSubFactor = 0;
        UnusedOutputs unused;
        const HRESULT hr = engine_.IdentifyFeatureSet(&pipeline_,
                                                      &identity,
                                                      &subFactor,
                                                      &unused.payload,
                                                      &unused.payloadBytes,
                                                      &unused.hash,
                                                      &unused.hashBytes,
                                                      &unused.rejectDetail);
        Require(hr == model_.Identify(expectedIdentity, expectedSubFactor), "IdentifyFeatureSet");
        Require(Same(identity, expectedIdentity), "IdentifyFeatureSet's identity");
        Require(subFactor == expectedSubFactor, "IdentifyFeatureSet's finger");
        unused.RequireNeutral();
    }

    void CreateEnrollment() {
        Require(engine_.CreateEnrollment(&pipeline_) == model_.CreateEnrollment(),
                "CreateEnrollment");
    }

    void UpdateEnrollment() {
        WINBIO_REJECT_DETAIL rejectDetail = kRubbish;
        WINBIO_REJECT_DETAIL expectedDetail = 0;
        const HRESULT hr = engine_.UpdateEnrollment(&pipeline_, &rejectDetail);
        Require(hr == model_.UpdateEnrollment(expectedDetail), "UpdateEnrollment");
        Require(rejectDetail == expectedDetail, "UpdateEnrollment's detail");
    }

    void EnrollmentStatus() {
        WINBIO_REJECT_DETAIL rejectDetail = kRubbish;
        Require(engine_.GetEnrollmentStatus(&pipeline_, &rejectDetail) == model_.EnrollmentStatus(),
                "GetEnrollmentStatus");
        Require(rejectDetail == 0, "GetEnrollmentStatus's detail");
    }

    void CheckForDuplicate() {
        WINBIO_IDENTITY identity = IdentityOf(kRubbish);
        WINBIO_IDENTITY expectedIdentity;
        WINBIO_BIOMETRIC_SUBTYPE subFactor = kRubbish;
        WINBIO_BIOMETRIC_SUBTYPE expectedSubFactor = 0;
        BOOLEAN duplicate = kRubbish;
        bool expected = false;
        const HRESULT hr = engine_.CheckForDuplicate(&pipeline_, &identity, &subFactor, &duplicate);
        Require(hr == model_.CheckForDuplicate(expectedIdentity, expectedSubFactor, expected),
                "CheckForDuplicate");
        Require(duplicate == (expected ? TRUE : FALSE), "CheckForDuplicate's answer");
        Require(Same(identity, expectedIdentity), "CheckForDuplicate's identity");
        Require(subFactor == expectedSubFactor, "CheckForDuplicate's finger");
    }

    void Commit() {
        WINBIO_IDENTITY identity = IdentityOf(input_.Byte());
        const WINBIO_BIOMETRIC_SUBTYPE subFactor = input_.Byte();
        Bytes payload = input_.Bytes(input_.Below(4));
        UCHAR* payloadBytes = payload.empty() ? nullptr : payload.data();
        const HRESULT hr = engine_.CommitEnrollment(
            &pipeline_, &identity, subFactor, payloadBytes, payload.size());
        Require(hr == model_.Commit(&identity, subFactor, payloadBytes, payload.size()),
                "CommitEnrollment");
    }

    void Discard() {
        Require(engine_.DiscardEnrollment(&pipeline_) == model_.Discard(), "DiscardEnrollment");
    }

    void CallStubs() {
        WINBIO_REGISTERED_FORMAT format = {};
        GUID vendorFormat = {};
        SIZE_T size = kRubbish;
        PUCHAR hash = reinterpret_cast<PUCHAR>(&pipeline_);
        ULONG status = kRubbish;
        Require(engine_.QueryPreferredFormat(&pipeline_, &format, &vendorFormat) == S_OK &&
                    format.Owner == 0x001B && format.Type == 0x0401,
                "QueryPreferredFormat");
        Require(engine_.QueryIndexVectorSize(&pipeline_, &size) == S_OK && size == 0,
                "QueryIndexVectorSize");
        Require(engine_.QuerySampleHint(&pipeline_, &size) == S_OK && size == 1, "QuerySampleHint");
        Require(engine_.GetEnrollmentHash(&pipeline_, &hash, &size) == E_NOTIMPL &&
                    hash == nullptr && size == 0,
                "GetEnrollmentHash");
        Require(engine_.SetHashAlgorithm(&pipeline_, 0, nullptr) == E_NOTIMPL, "SetHashAlgorithm");
        size = kRubbish;
        Require(engine_.ControlUnit(&pipeline_, 0, nullptr, 0, nullptr, 0, &size, &status) ==
                        E_NOTIMPL &&
                    size == 0 && status == 0,
                "ControlUnit");
    }

    // Entry points that name a result for a missing pipeline.
    void CallWithoutPipeline() {
        WINBIO_REJECT_DETAIL rejectDetail = kRubbish;
        BOOLEAN match = kRubbish;
        Require(engine_.CreateEnrollment(nullptr) == E_POINTER, "CreateEnrollment, no pipeline");
        Require(engine_.UpdateEnrollment(nullptr, &rejectDetail) == E_POINTER,
                "UpdateEnrollment, no pipeline");
        Require(engine_.CommitEnrollment(nullptr, nullptr, 0, nullptr, 0) == E_POINTER,
                "CommitEnrollment, no pipeline");
        Require(engine_.DiscardEnrollment(nullptr) == S_OK, "DiscardEnrollment, no pipeline");
        Require(engine_.CheckForDuplicate(nullptr, nullptr, nullptr, &match) == E_POINTER &&
                    match == FALSE,
                "CheckForDuplicate, no pipeline");
        Require(engine_.AcceptPrivateSensorTypeInfo(nullptr, &match, 1) == E_POINTER,
                "AcceptPrivateSensorTypeInfo, no pipeline");
    }

    void SwitchStorage() { ConnectStorage(!model_.hasStorage); }

    void ScriptRecords() {
        storage_.records.clear();
        const std::size_t count = input_.Below(kMostRecords + 1);
        for (std::size_t i = 0; i < count; ++i) {
            storage_.records.push_back(ReadRecord(input_));
        }
        model_.storage.records = storage_.records;
    }

    void ScriptAnswers() {
        constexpr HRESULT kAnswers[] = {S_OK,
                                        S_OK,
                                        S_FALSE,
                                        WINBIO_I_MORE_DATA,
                                        WINBIO_E_DATABASE_NO_RESULTS,
                                        WINBIO_E_DATABASE_NO_MORE_RECORDS,
                                        WINBIO_E_DATABASE_CORRUPTED,
                                        WINBIO_E_DUPLICATE_ENROLLMENT,
                                        E_OUTOFMEMORY};
        const std::size_t count = input_.Below(16);
        storage_.answers.clear();
        for (std::size_t i = 0; i < count; ++i) {
            storage_.answers.push_back(kAnswers[input_.Below(std::size(kAnswers))]);
        }
        model_.storage.answers = storage_.answers;
    }

    void ScriptMatcher() {
        auto& fake = TheFakeMatcher();
        fake.answers.clear();
        model_.comparisons.clear();
        const std::size_t count = input_.Below(8);
        for (std::size_t i = 0; i < count; ++i) {
            const auto comparison = static_cast<Comparison>(input_.Below(5));
            model_.comparisons.push_back(comparison);
            fake.answers.push_back(FakeAnswer(comparison));
        }
        model_.initialization = static_cast<Initialization>(input_.Below(3));
        fake.initializeStatus = model_.initialization == Initialization::Fails ? 3 : 0;
        fake.initializeText = "the matcher's reason";
        fake.initializeRaise = nullptr;
        if (model_.initialization == Initialization::Throws) {
            fake.initializeRaise = [] { throw std::bad_alloc(); };
        }
    }

    void FailProcessHeap() {
        const std::size_t successes = input_.Below(4);
        CountingHeap::FailAfter(successes);
        model_.processHeap.FailAfter(successes);
    }

    void FailGeneralHeap() {
        const std::size_t successes = input_.Below(4);
        WatchedNew::FailNothrowAfter(successes);
        model_.generalHeap.FailAfter(successes);
    }

    // What Verify and Identify set and never fill.
    struct UnusedOutputs {
        UCHAR target = 0;
        PUCHAR payload = &target;
        SIZE_T payloadBytes = kRubbish;
        PUCHAR hash = &target;
        SIZE_T hashBytes = kRubbish;
        WINBIO_REJECT_DETAIL rejectDetail = kRubbish;

        void RequireNeutral() const {
            Require(payload == nullptr && payloadBytes == 0 && hash == nullptr && hashBytes == 0 &&
                        rejectDetail == 0,
                    "outputs that are never filled");
        }
    };

    static void RequireBuffer(const UCHAR* data,
                              SIZE_T size,
                              const std::optional<Bytes>& expected,
                              const char* property) {
        Require((data != nullptr) == expected.has_value(), property);
        Require(data == nullptr || Bytes(data, data + size) == *expected, property);
    }

    void CheckState() {
        const auto* context =
            static_cast<const orl::adapter::EngineContext*>(pipeline_.EngineContext);
        Require((context != nullptr) == model_.attached, "attached as the model");
        if (context != nullptr) {
            RequireBuffer(context->SampleBuffer, context->SampleSize, model_.sample, "the sample");
            RequireBuffer(context->EnrollmentTemplate,
                          context->EnrollmentTemplateSize,
                          model_.pendingTemplate,
                          "the pending template");
            RequireBuffer(context->PrivateSensorTypeInfo,
                          context->PrivateSensorTypeInfoSize,
                          model_.typeInfo,
                          "the type information");
            Require(context->EnrollmentInProgress == (model_.enrolling ? TRUE : FALSE),
                    "enrolling as the model");
        }
        Require(CountingHeap::LiveBlocks() == model_.LiveBlocks(), "no block beside the context's");
        Require(CountingHeap::UnwipedBlocks() == 0, "freed blocks are wiped");
        Require(WatchedNew::LiveNothrowBlocks() == 0, "no record copy is kept");
        CountingHeap::TakeEvents();
        Require(storage_.calls == model_.storage.calls, "the storage's calls");
        storage_.calls.clear();
        model_.storage.calls.clear();
        CheckMatcher();
    }

    void CheckMatcher() {
        auto& fake = TheFakeMatcher();
        Require(fake.initialized == model_.matcherReady, "the matcher's readiness");
        Require(fake.initializations == model_.initializations, "initialisations");
        Require(fake.shutdowns == model_.shutdowns, "shutdowns");
        Require(fake.matches.size() == model_.compared.size(), "comparisons");
        for (std::size_t i = 0; i < fake.matches.size(); ++i) {
            const auto& call = fake.matches[i];
            Require(ComparedPair{call.probe, call.candidate} == model_.compared[i],
                    "the records compared");
            Require(call.threshold == 0 && call.errorTextSize == 512 && call.errorTextWasZero,
                    "how they are compared");
        }
        fake.matches.clear();
        model_.compared.clear();
    }

    using Step = void (EngineStates::*)();
    // Twice what most sequences need.
    static constexpr Step kSteps[] = {&EngineStates::Attach,
                                      &EngineStates::Detach,
                                      &EngineStates::ClearContext,
                                      &EngineStates::AcceptSample,
                                      &EngineStates::AcceptSample,
                                      &EngineStates::Export,
                                      &EngineStates::AcceptTypeInfo,
                                      &EngineStates::Verify,
                                      &EngineStates::Verify,
                                      &EngineStates::Identify,
                                      &EngineStates::Identify,
                                      &EngineStates::CreateEnrollment,
                                      &EngineStates::CreateEnrollment,
                                      &EngineStates::UpdateEnrollment,
                                      &EngineStates::UpdateEnrollment,
                                      &EngineStates::EnrollmentStatus,
                                      &EngineStates::CheckForDuplicate,
                                      &EngineStates::CheckForDuplicate,
                                      &EngineStates::Commit,
                                      &EngineStates::Commit,
                                      &EngineStates::Discard,
                                      &EngineStates::CallStubs,
                                      &EngineStates::CallWithoutPipeline,
                                      &EngineStates::SwitchStorage,
                                      &EngineStates::ScriptRecords,
                                      &EngineStates::ScriptRecords,
                                      &EngineStates::ScriptAnswers,
                                      &EngineStates::ScriptMatcher,
                                      &EngineStates::ScriptMatcher,
                                      &EngineStates::FailProcessHeap,
                                      &EngineStates::FailGeneralHeap};

    InputReader input_;
    EngineModel model_;
    ScriptedStorage storage_;
    WINBIO_PIPELINE pipeline_ = {};
    const WINBIO_ENGINE_INTERFACE& engine_ = Table();
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMostBytes = 2000;  // some hundred steps
    if (size <= kMostBytes) {
        EngineStates(InputReader({data, size})).Run();
    }
    return 0;
}
