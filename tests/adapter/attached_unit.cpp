#include "tests/adapter/attached_unit.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "adapter/interface_table.h"

namespace orl::test {
namespace {

UCHAR rubbishTarget = 0;
constexpr int kRubbishByte = 0xEE;

}  // namespace

FeatureSetOutputs::FeatureSetOutputs() : payloadBlob(&rubbishTarget), hashValue(&rubbishTarget) {
    std::memset(&identity, kRubbishByte, sizeof(identity));
}

bool FeatureSetOutputs::UnusedOnesAreNeutral() const {
    return payloadBlob == nullptr && payloadBlobSize == 0 && hashValue == nullptr &&
           hashSize == 0 && rejectDetail == 0;
}

DuplicateOutputs::DuplicateOutputs() {
    std::memset(&identity, kRubbishByte, sizeof(identity));
}

bool IsZero(const WINBIO_IDENTITY& identity) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&identity);
    return std::all_of(bytes, bytes + sizeof(identity), [](std::uint8_t b) { return b == 0; });
}

const WINBIO_ENGINE_INTERFACE& EngineTable() {
    PWINBIO_ENGINE_INTERFACE table = nullptr;
    WbioQueryEngineInterface(&table);
    return *table;
}

AttachedUnit::AttachedUnit() {
    if (FAILED(engine.Attach(&pipeline))) {
        std::abort();
    }
}

AttachedUnit::~AttachedUnit() {
    if (pipeline.EngineContext != nullptr) {
        Detach();
    }
}

adapter::EngineContext& AttachedUnit::Context() {
    return *static_cast<adapter::EngineContext*>(pipeline.EngineContext);
}

HRESULT AttachedUnit::Detach() {
    return engine.Detach(&pipeline);
}

HRESULT AttachedUnit::Accept(std::span<const std::uint8_t> sample) {
    std::vector<std::uint8_t> copy(sample.begin(), sample.end());
    WINBIO_REJECT_DETAIL rejectDetail = 0;
    return engine.AcceptSampleData(&pipeline,
                                   reinterpret_cast<PWINBIO_BIR>(copy.data()),
                                   copy.size(),
                                   WINBIO_PURPOSE_VERIFY,
                                   &rejectDetail);
}

HRESULT AttachedUnit::Verify(WINBIO_IDENTITY& identity,
                             WINBIO_BIOMETRIC_SUBTYPE subFactor,
                             FeatureSetOutputs& outputs) {
    return engine.VerifyFeatureSet(&pipeline,
                                   &identity,
                                   subFactor,
                                   &outputs.match,
                                   &outputs.payloadBlob,
                                   &outputs.payloadBlobSize,
                                   &outputs.hashValue,
                                   &outputs.hashSize,
                                   &outputs.rejectDetail);
}

HRESULT AttachedUnit::Identify(FeatureSetOutputs& outputs) {
    return engine.IdentifyFeatureSet(&pipeline,
                                     &outputs.identity,
                                     &outputs.subFactor,
                                     &outputs.payloadBlob,
                                     &outputs.payloadBlobSize,
                                     &outputs.hashValue,
                                     &outputs.hashSize,
                                     &outputs.rejectDetail);
}

HRESULT AttachedUnit::Enroll(std::span<const std::uint8_t> sample) {
    HRESULT hr = engine.CreateEnrollment(&pipeline);
    if (SUCCEEDED(hr)) {
        hr = Accept(sample);
    }
    WINBIO_REJECT_DETAIL rejectDetail = 0;
    return FAILED(hr) ? hr : engine.UpdateEnrollment(&pipeline, &rejectDetail);
}

HRESULT AttachedUnit::CheckForDuplicate(DuplicateOutputs& outputs) {
    return engine.CheckForDuplicate(
        &pipeline, &outputs.identity, &outputs.subFactor, &outputs.duplicate);
}

std::vector<std::uint8_t> Bytes(const UCHAR* data, SIZE_T size) {
    return {data, data + size};
}

}  // namespace orl::test
