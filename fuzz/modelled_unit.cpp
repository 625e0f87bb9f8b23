#include "fuzz/modelled_unit.h"

#include <optional>

#include "adapter/engine_context.h"
#include "adapter/engine_log_capture.h"
#include "adapter/interface_table.h"
#include "fuzz/require.h"
#include "tests/adapter/fake_matcher.h"
#include "tests/adapter/watched_new.h"
#include "tests/support/counting_heap.h"

namespace orl::fuzz {
namespace {

using orl::test::CountingHeap;
using orl::test::TheFakeMatcher;
using orl::test::WatchedNew;

const WINBIO_ENGINE_INTERFACE& Table() {
    PWINBIO_ENGINE_INTERFACE table = nullptr;
    WbioQueryEngineInterface(&table);
    return *table;
}

// Nothing is kept from unit to unit.
void ForgetAll() {
    TheFakeMatcher() = {};
    CountingHeap::Reset();
    WatchedNew::Reset();
    orl::adapter::TakeCapturedLog();
}

void RequireBuffer(const UCHAR* data,
                   SIZE_T size,
                   const std::optional<Bytes>& expected,
                   const char* property) {
    Require((data != nullptr) == expected.has_value(), property);
    Require(data == nullptr || Bytes(data, data + size) == *expected, property);
}

}  // namespace

ModelledUnit::ModelledUnit() : engine(Table()) {
    ForgetAll();
    ConnectStorage(true);
}

ModelledUnit::~ModelledUnit() {
    ForgetAll();
}

void ModelledUnit::ConnectStorage(bool connected) {
    model.hasStorage = connected;
    pipeline.StorageInterface = connected ? ScriptedStorage::Table() : nullptr;
    pipeline.StorageContext = &storage;
}

void ModelledUnit::CheckState() {
    CheckContext();
    CheckHeaps();
    CheckStorage();
    CheckMatcher();
}

void ModelledUnit::CheckContext() const {
    const auto* context = static_cast<const orl::adapter::EngineContext*>(pipeline.EngineContext);
    Require((context != nullptr) == model.attached, "attached as the model");
    if (context == nullptr) {
        return;
    }
    RequireBuffer(context->SampleBuffer, context->SampleSize, model.sample, "the sample");
    RequireBuffer(context->EnrollmentTemplate,
                  context->EnrollmentTemplateSize,
                  model.pendingTemplate,
                  "the pending template");
    RequireBuffer(context->PrivateSensorTypeInfo,
                  context->PrivateSensorTypeInfoSize,
                  model.typeInfo,
                  "the type information");
    Require(context->EnrollmentInProgress == (model.enrolling ? TRUE : FALSE),
            "enrolling as the model");
}

void ModelledUnit::CheckHeaps() const {
    Require(CountingHeap::LiveBlocks() == model.LiveBlocks(), "no block beside the context's");
    Require(CountingHeap::UnwipedBlocks() == 0, "freed blocks are wiped");
    Require(WatchedNew::LiveNothrowBlocks() == 0, "no record copy is kept");
    CountingHeap::TakeEvents();
}

void ModelledUnit::CheckStorage() {
    Require(storage.calls == model.storage.calls, "the storage's calls");
    storage.calls.clear();
    model.storage.calls.clear();
}

void ModelledUnit::CheckMatcher() {
    auto& fake = TheFakeMatcher();
    Require(fake.initialized == model.matcherReady, "the matcher's readiness");
    Require(fake.initializations == model.initializations, "initialisations");
    Require(fake.shutdowns == model.shutdowns, "shutdowns");
    Require(fake.matches.size() == model.compared.size(), "comparisons");
    for (std::size_t i = 0; i < fake.matches.size(); ++i) {
        const auto& call = fake.matches[i];
        Require(ComparedPair{call.probe, call.candidate} == model.compared[i],
                "the records compared");
        Require(call.threshold == 0 && call.errorTextSize == 512 && call.errorTextWasZero,
                "how they are compared");
    }
    fake.matches.clear();
    model.compared.clear();
}

void ModelledUnit::CheckEverythingIsFreed() const {
    Require(CountingHeap::LiveBlocks() == 0, "every block is freed");
    Require(CountingHeap::UnwipedBlocks() == 0, "every block is wiped");
    Require(WatchedNew::LiveNothrowBlocks() == 0, "every record copy is freed");
    Require(WatchedNew::UnwipedBlocks() == 0, "every record copy is wiped");
}

}  // namespace orl::fuzz
