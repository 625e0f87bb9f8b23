#include <cstring>

#include "fuzz/engine_steps.h"
#include "fuzz/read_records.h"
#include "fuzz/require.h"

namespace orl::fuzz {
namespace {

bool Same(const WINBIO_IDENTITY& a, const WINBIO_IDENTITY& b) {
    return std::memcmp(&a, &b, sizeof(a)) == 0;
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

}  // namespace

void Verify(ModelledUnit& unit, InputReader& input) {
    WINBIO_IDENTITY identity = IdentityOf(input.Byte());
    PWINBIO_IDENTITY subject = input.Once(8) ? nullptr : &identity;
    const WINBIO_BIOMETRIC_SUBTYPE subFactor = input.Byte();
    BOOLEAN match = kRubbish;
    UnusedOutputs unused;
    bool expected = false;
    const HRESULT hr = unit.engine.VerifyFeatureSet(&unit.pipeline,
                                                    subject,
                                                    subFactor,
                                                    &match,
                                                    &unused.payload,
                                                    &unused.payloadBytes,
                                                    &unused.hash,
                                                    &unused.hashBytes,
                                                    &unused.rejectDetail);
    Require(hr == unit.model.Verify(subject, subFactor, expected), "VerifyFeatureSet");
    Require(match == (expected ? TRUE : FALSE), "VerifyFeatureSet's match");
    unused.RequireNeutral();
}

void Identify(ModelledUnit& unit, InputReader& /*input*/) {
    WINBIO_IDENTITY identity = IdentityOf(kRubbish);
    WINBIO_IDENTITY expectedIdentity;
    WINBIO_BIOMETRIC_SUBTYPE subFactor = kRubbish;
    WINBIO_BIOMETRIC_SUBTYPE expectedSubFactor = 0;
    UnusedOutputs unused;
    const HRESULT hr = unit.engine.IdentifyFeatureSet(&unit.pipeline,
                                                      &identity,
                                                      &subFactor,
                                                      &unused.payload,
                                                      &unused.payloadBytes,
                                                      &unused.hash,
                                                      &unused.hashBytes,
                                                      &unused.rejectDetail);
    Require(hr == unit.model.Identify(expectedIdentity, expectedSubFactor), "IdentifyFeatureSet");
    Require(Same(identity, expectedIdentity), "IdentifyFeatureSet's identity");
    Require(subFactor == expectedSubFactor, "IdentifyFeatureSet's finger");
    unused.RequireNeutral();
}

void CheckForDuplicate(ModelledUnit& unit, InputReader& /*input*/) {
    WINBIO_IDENTITY identity = IdentityOf(kRubbish);
    WINBIO_IDENTITY expectedIdentity;
    WINBIO_BIOMETRIC_SUBTYPE subFactor = kRubbish;
    WINBIO_BIOMETRIC_SUBTYPE expectedSubFactor = 0;
    BOOLEAN duplicate = kRubbish;
    bool expected = false;
    const HRESULT hr =
        unit.engine.CheckForDuplicate(&unit.pipeline, &identity, &subFactor, &duplicate);
    Require(hr == unit.model.CheckForDuplicate(expectedIdentity, expectedSubFactor, expected),
            "CheckForDuplicate");
    Require(duplicate == (expected ? TRUE : FALSE), "CheckForDuplicate's answer");
    Require(Same(identity, expectedIdentity), "CheckForDuplicate's identity");
    Require(subFactor == expectedSubFactor, "CheckForDuplicate's finger");
}

}  // namespace orl::fuzz
