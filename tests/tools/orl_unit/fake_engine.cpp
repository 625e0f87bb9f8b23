#include "tests/tools/orl_unit/fake_engine.h"

#include <algorithm>
#include <cstring>

#include "platform/process_heap.h"

#ifdef _WIN32
#define ORL_FAKE_ENGINE_EXPORT __declspec(dllexport)
#else
#define ORL_FAKE_ENGINE_EXPORT __attribute__((visibility("default")))
#endif

namespace orl::unit {
namespace {

FakeEngineState state;

HRESULT note(const char* call, HRESULT result = S_OK) {
    const std::size_t used = std::strlen(state.calls);
    if (used + std::strlen(call) + 2 <= sizeof(state.calls)) {
        std::strcat(state.calls, call);
        std::strcat(state.calls, " ");
    }
    return result;
}

HRESULT WINAPI Attach(PWINBIO_PIPELINE) {
    return note("Attach", state.attachResult);
}
HRESULT WINAPI Detach(PWINBIO_PIPELINE) {
    return note("Detach");
}
HRESULT WINAPI ClearContext(PWINBIO_PIPELINE) {
    return note("ClearContext");
}
HRESULT WINAPI QueryPreferredFormat(PWINBIO_PIPELINE,
                                    PWINBIO_REGISTERED_FORMAT format,
                                    PGUID vendor) {
    *format = {0x001B, 0x0401};
    *vendor = {7, 7, 7, {7, 7, 7, 7, 7, 7, 7, 7}};
    return note("QueryPreferredFormat");
}
HRESULT WINAPI QueryIndexVectorSize(PWINBIO_PIPELINE, PSIZE_T count) {
    *count = state.indexElementCount;
    return note("QueryIndexVectorSize");
}
HRESULT WINAPI AcceptSampleData(PWINBIO_PIPELINE,
                                PWINBIO_BIR sample,
                                SIZE_T size,
                                WINBIO_BIR_PURPOSE purpose,
                                PWINBIO_REJECT_DETAIL rejectDetail) {
    state.sampleSize = std::min(size, sizeof(state.sample));
    std::memcpy(state.sample, sample, state.sampleSize);
    state.samplePurpose = purpose;
    *rejectDetail = FAILED(state.acceptResult) ? WINBIO_FP_POOR_QUALITY : 0;
    return note("AcceptSampleData", state.acceptResult);
}
HRESULT WINAPI ExportEngineData(PWINBIO_PIPELINE,
                                WINBIO_BIR_DATA_FLAGS,
                                PUCHAR* sample,
                                PSIZE_T size) {
    *sample = static_cast<PUCHAR>(HeapAlloc(GetProcessHeap(), 0, state.sampleSize));
    std::memcpy(*sample, state.sample, state.sampleSize);
    *size = state.sampleSize;
    return note("ExportEngineData");
}
HRESULT WINAPI VerifyFeatureSet(PWINBIO_PIPELINE,
                                PWINBIO_IDENTITY,
                                WINBIO_BIOMETRIC_SUBTYPE,
                                PBOOLEAN match,
                                PUCHAR*,
                                PSIZE_T,
                                PUCHAR*,
                                PSIZE_T,
                                PWINBIO_REJECT_DETAIL) {
    *match = state.match;
    return note("VerifyFeatureSet", state.verifyResult);
}
HRESULT WINAPI IdentifyFeatureSet(PWINBIO_PIPELINE,
                                  PWINBIO_IDENTITY identity,
                                  PWINBIO_BIOMETRIC_SUBTYPE subFactor,
                                  PUCHAR*,
                                  PSIZE_T,
                                  PUCHAR*,
                                  PSIZE_T,
                                  PWINBIO_REJECT_DETAIL) {
    *identity = state.foundIdentity;
    *subFactor = 2;
    return note("IdentifyFeatureSet", state.identifyResult);
}
HRESULT WINAPI CreateEnrollment(PWINBIO_PIPELINE) {
    return note("CreateEnrollment");
}
HRESULT WINAPI UpdateEnrollment(PWINBIO_PIPELINE, PWINBIO_REJECT_DETAIL) {
    return note("UpdateEnrollment", state.updateResult);
}
HRESULT WINAPI CheckForDuplicate(PWINBIO_PIPELINE,
                                 PWINBIO_IDENTITY identity,
                                 PWINBIO_BIOMETRIC_SUBTYPE subFactor,
                                 PBOOLEAN duplicate) {
    *identity = state.foundIdentity;
    *subFactor = 2;
    *duplicate = state.duplicate;
    return note("CheckForDuplicate");
}
HRESULT WINAPI CommitEnrollment(PWINBIO_PIPELINE pipeline,
                                PWINBIO_IDENTITY identity,
                                WINBIO_BIOMETRIC_SUBTYPE subFactor,
                                PUCHAR payload,
                                SIZE_T payloadSize) {
    note("CommitEnrollment");
    if (FAILED(state.commitResult)) {
        return state.commitResult;
    }
    WINBIO_STORAGE_RECORD record = {};
    record.Identity = identity;
    record.SubFactor = subFactor;
    record.TemplateBlob = state.sample;
    record.TemplateBlobSize = state.sampleSize;
    record.PayloadBlob = payload;
    record.PayloadBlobSize = payloadSize;
    return pipeline->StorageInterface->AddRecord(pipeline, &record);
}
HRESULT WINAPI DiscardEnrollment(PWINBIO_PIPELINE) {
    return note("DiscardEnrollment");
}

WINBIO_ENGINE_INTERFACE makeTable() {
    WINBIO_ENGINE_INTERFACE table = {};
    table.Version = {1, 0};
    table.Type = WINBIO_ADAPTER_TYPE_ENGINE;
    table.Size = sizeof(table);
    table.Attach = Attach;
    table.Detach = Detach;
    table.ClearContext = ClearContext;
    table.QueryPreferredFormat = QueryPreferredFormat;
    table.QueryIndexVectorSize = QueryIndexVectorSize;
    table.AcceptSampleData = AcceptSampleData;
    table.ExportEngineData = ExportEngineData;
    table.VerifyFeatureSet = VerifyFeatureSet;
    table.IdentifyFeatureSet = IdentifyFeatureSet;
    table.CreateEnrollment = CreateEnrollment;
    table.UpdateEnrollment = UpdateEnrollment;
    table.CheckForDuplicate = CheckForDuplicate;
    table.CommitEnrollment = CommitEnrollment;
    table.DiscardEnrollment = DiscardEnrollment;
    return table;
}

WINBIO_ENGINE_INTERFACE table = makeTable();

}  // namespace
}  // namespace orl::unit

extern "C" ORL_FAKE_ENGINE_EXPORT HRESULT WINAPI
WbioQueryEngineInterface(PWINBIO_ENGINE_INTERFACE* engine) {
    *engine = &orl::unit::table;
    return S_OK;
}

extern "C" ORL_FAKE_ENGINE_EXPORT orl::unit::FakeEngineState* FakeEngine() {
    return &orl::unit::state;
}
