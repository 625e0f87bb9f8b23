#include "fuzz/engine_steps.h"
#include "fuzz/require.h"

namespace orl::fuzz {

void CallStubs(ModelledUnit& unit, InputReader& /*input*/) {
    WINBIO_REGISTERED_FORMAT format = {};
    GUID vendorFormat = {};
    SIZE_T size = kRubbish;
    PUCHAR hash = reinterpret_cast<PUCHAR>(&unit.pipeline);
    ULONG status = kRubbish;
    Require(unit.engine.QueryPreferredFormat(&unit.pipeline, &format, &vendorFormat) == S_OK &&
                format.Owner == 0x001B && format.Type == 0x0401,
            "QueryPreferredFormat");
    Require(unit.engine.QueryIndexVectorSize(&unit.pipeline, &size) == S_OK && size == 0,
            "QueryIndexVectorSize");
    Require(unit.engine.QuerySampleHint(&unit.pipeline, &size) == S_OK && size == 1,
            "QuerySampleHint");
    Require(unit.engine.GetEnrollmentHash(&unit.pipeline, &hash, &size) == E_NOTIMPL &&
                hash == nullptr && size == 0,
            "GetEnrollmentHash");
    Require(unit.engine.SetHashAlgorithm(&unit.pipeline, 0, nullptr) == E_NOTIMPL,
            "SetHashAlgorithm");
    size = kRubbish;
    Require(unit.engine.ControlUnit(&unit.pipeline, 0, nullptr, 0, nullptr, 0, &size, &status) ==
                    E_NOTIMPL &&
                size == 0 && status == 0,
            "ControlUnit");
}

// Entry points that name a result for a missing pipeline.
void CallWithoutPipeline(ModelledUnit& unit, InputReader& /*input*/) {
    WINBIO_REJECT_DETAIL rejectDetail = kRubbish;
    BOOLEAN match = kRubbish;
    Require(unit.engine.CreateEnrollment(nullptr) == E_POINTER, "CreateEnrollment, no pipeline");
    Require(unit.engine.UpdateEnrollment(nullptr, &rejectDetail) == E_POINTER,
            "UpdateEnrollment, no pipeline");
    Require(unit.engine.CommitEnrollment(nullptr, nullptr, 0, nullptr, 0) == E_POINTER,
            "CommitEnrollment, no pipeline");
    Require(unit.engine.DiscardEnrollment(nullptr) == S_OK, "DiscardEnrollment, no pipeline");
    Require(unit.engine.CheckForDuplicate(nullptr, nullptr, nullptr, &match) == E_POINTER &&
                match == FALSE,
            "CheckForDuplicate, no pipeline");
    Require(unit.engine.AcceptPrivateSensorTypeInfo(nullptr, &match, 1) == E_POINTER,
            "AcceptPrivateSensorTypeInfo, no pipeline");
}

}  // namespace orl::fuzz
