#include <cstring>
#include <optional>

#include "fuzz/engine_steps.h"
#include "fuzz/read_records.h"
#include "fuzz/require.h"
#include "platform/process_heap.h"

namespace orl::fuzz {
namespace {

// Only an attached unit may be given to the entry points that the service calls after Attach.
void AttachFirst(ModelledUnit& unit, InputReader& input) {
    while (!unit.model.attached) {
        Attach(unit, input);
    }
}

}  // namespace

void Attach(ModelledUnit& unit, InputReader& /*input*/) {
    if (!unit.model.attached) {
        Require(unit.engine.Attach(&unit.pipeline) == unit.model.Attach(), "Attach");
    }
}

void Detach(ModelledUnit& unit, InputReader& /*input*/) {
    Require(unit.engine.Detach(&unit.pipeline) == unit.model.Detach(), "Detach");
}

void ClearContext(ModelledUnit& unit, InputReader& /*input*/) {
    Require(unit.engine.ClearContext(&unit.pipeline) == unit.model.ClearContext(), "ClearContext");
}

void AcceptSample(ModelledUnit& unit, InputReader& input) {
    AttachFirst(unit, input);
    std::optional<Bytes> sample;
    if (!input.Once(8)) {
        sample = ReadBir(input);
    }
    WINBIO_REJECT_DETAIL rejectDetail = kRubbish;
    WINBIO_REJECT_DETAIL expectedDetail = kRubbish;
    const bool detailWanted = !input.Once(8);
    const SIZE_T sizeWithoutSample = sample ? 0 : input.Byte();
    const WINBIO_BIR_PURPOSE purpose = input.Byte();
    const HRESULT hr = unit.engine.AcceptSampleData(
        &unit.pipeline,
        sample ? reinterpret_cast<PWINBIO_BIR>(sample->data()) : nullptr,
        sample ? sample->size() : sizeWithoutSample,
        purpose,
        detailWanted ? &rejectDetail : nullptr);
    Require(hr == unit.model.AcceptSample(sample, expectedDetail), "AcceptSampleData");
    Require(!detailWanted || rejectDetail == expectedDetail, "AcceptSampleData's detail");
}

void Export(ModelledUnit& unit, InputReader& input) {
    AttachFirst(unit, input);
    PUCHAR exported = reinterpret_cast<PUCHAR>(&unit.pipeline);
    SIZE_T exportedBytes = kRubbish;
    if (input.Once(8)) {
        Require(
            unit.engine.ExportEngineData(&unit.pipeline, 0, nullptr, &exportedBytes) == E_POINTER,
            "ExportEngineData without an output");
        return;
    }
    Bytes expected;
    const HRESULT hr =
        unit.engine.ExportEngineData(&unit.pipeline, input.Byte(), &exported, &exportedBytes);
    Require(hr == unit.model.Export(expected), "ExportEngineData");
    Require(exportedBytes == expected.size(), "the exported size");
    Require((exported == nullptr) == expected.empty(), "the exported copy");
    if (exported != nullptr) {
        Require(Bytes(exported, exported + exportedBytes) == expected, "the exported bytes");
        std::memset(exported, 0, exportedBytes);
        HeapFree(GetProcessHeap(), 0, exported);
    }
}

void AcceptTypeInfo(ModelledUnit& unit, InputReader& input) {
    std::optional<Bytes> info;
    if (!input.Once(4)) {
        info = input.Bytes(input.Below(32));
    }
    const HRESULT hr = unit.engine.AcceptPrivateSensorTypeInfo(
        &unit.pipeline, info ? info->data() : nullptr, info ? info->size() : input.Byte());
    Require(hr == unit.model.AcceptTypeInfo(info), "AcceptPrivateSensorTypeInfo");
}

}  // namespace orl::fuzz
