#include "fuzz/engine_steps.h"
#include "fuzz/read_records.h"
#include "fuzz/require.h"

namespace orl::fuzz {

void CreateEnrollment(ModelledUnit& unit, InputReader& /*input*/) {
    Require(unit.engine.CreateEnrollment(&unit.pipeline) == unit.model.CreateEnrollment(),
            "CreateEnrollment");
}

void UpdateEnrollment(ModelledUnit& unit, InputReader& /*input*/) {
    WINBIO_REJECT_DETAIL rejectDetail = kRubbish;
    WINBIO_REJECT_DETAIL expectedDetail = 0;
    const HRESULT hr = unit.engine.UpdateEnrollment(&unit.pipeline, &rejectDetail);
    Require(hr == unit.model.UpdateEnrollment(expectedDetail), "UpdateEnrollment");
    Require(rejectDetail == expectedDetail, "UpdateEnrollment's detail");
}

void EnrollmentStatus(ModelledUnit& unit, InputReader& /*input*/) {
    WINBIO_REJECT_DETAIL rejectDetail = kRubbish;
    Require(unit.engine.GetEnrollmentStatus(&unit.pipeline, &rejectDetail) ==
                unit.model.EnrollmentStatus(),
            "GetEnrollmentStatus");
    Require(rejectDetail == 0, "GetEnrollmentStatus's detail");
}

void Commit(ModelledUnit& unit, InputReader& input) {
    WINBIO_IDENTITY identity = IdentityOf(input.Byte());
    const WINBIO_BIOMETRIC_SUBTYPE subFactor = input.Byte();
    Bytes payload = input.Bytes(input.Below(4));
    UCHAR* payloadBytes = payload.empty() ? nullptr : payload.data();
    const HRESULT hr = unit.engine.CommitEnrollment(
        &unit.pipeline, &identity, subFactor, payloadBytes, payload.size());
    Require(hr == unit.model.Commit(&identity, subFactor, payloadBytes, payload.size()),
            "CommitEnrollment");
}

void Discard(ModelledUnit& unit, InputReader& /*input*/) {
    Require(unit.engine.DiscardEnrollment(&unit.pipeline) == unit.model.Discard(),
            "DiscardEnrollment");
}

}  // namespace orl::fuzz
