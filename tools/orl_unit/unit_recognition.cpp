// Verification and identification of a captured sample.

#include "tools/orl_unit/biometric_unit.h"
#include "tools/orl_unit/finger_names.h"
#include "tools/orl_unit/identity_names.h"
#include "tools/orl_unit/unit_sessions.h"

namespace orl::unit {
namespace {

// The outputs that both calls have and that stay empty.
struct UnusedOutputs {
    PUCHAR payload = nullptr;
    SIZE_T payloadBytes = 0;
    PUCHAR hash = nullptr;
    SIZE_T hashBytes = 0;
    WINBIO_REJECT_DETAIL rejectDetail = 0;
};

}  // namespace

WINBIO_IDENTITY BiometricUnit::identityOf(const std::string& name) {
    std::optional<WINBIO_IDENTITY> identity;
    failOnStoreStatus(store().findIdentity(name, identity));
    if (!identity) {
        throw CommandError("unknown identity " + inQuotes(name) + ": nothing is enrolled for it");
    }
    return *identity;
}

std::string BiometricUnit::nameOf(const WINBIO_IDENTITY& identity) {
    std::optional<std::string> name;
    failOnStoreStatus(store().findName(identity, name));
    return name ? *name : identityText(identity);
}

std::size_t BiometricUnit::comparisonsOfWalk() const {
    const ResultSet& results = storage().results;
    return results.empty() ? 0 : results.position() + 1;
}

VerifyOutcome BiometricUnit::verify(const FingerRecord& record, const Subject& subject) {
    const CaptureSession session(*this);
    WINBIO_IDENTITY identity = identityOf(subject.name);
    pushSample(record, subject.subFactor, WINBIO_PURPOSE_VERIFY);
    BOOLEAN match = FALSE;
    UnusedOutputs unused;
    const auto start = std::chrono::steady_clock::now();
    const HRESULT verified = engine().VerifyFeatureSet(&pipeline_,
                                                       &identity,
                                                       subject.subFactor,
                                                       &match,
                                                       &unused.payload,
                                                       &unused.payloadBytes,
                                                       &unused.hash,
                                                       &unused.hashBytes,
                                                       &unused.rejectDetail);
    const auto spent = std::chrono::steady_clock::now() - start;
    if (verified == WINBIO_E_DATABASE_NO_RESULTS) {
        throw CommandError(inQuotes(subject.name) + " has not enrolled " +
                           subFactorName(subject.subFactor));
    }
    check(verified, "VerifyFeatureSet");
    return {match != FALSE, {spent, 1}};
}

IdentifyOutcome BiometricUnit::identify(const FingerRecord& record) {
    const CaptureSession session(*this);
    const WINBIO_BIOMETRIC_SUBTYPE capturedFinger = isSingleFinger(record.fingerPosition)
                                                        ? record.fingerPosition
                                                        : WINBIO_SUBTYPE_NO_INFORMATION;
    pushSample(record, capturedFinger, WINBIO_PURPOSE_IDENTIFY);
    WINBIO_IDENTITY identity = {};
    WINBIO_BIOMETRIC_SUBTYPE subFactor = 0;
    UnusedOutputs unused;
    IdentifyOutcome outcome;
    const auto start = std::chrono::steady_clock::now();
    const HRESULT identified = engine().IdentifyFeatureSet(&pipeline_,
                                                           &identity,
                                                           &subFactor,
                                                           &unused.payload,
                                                           &unused.payloadBytes,
                                                           &unused.hash,
                                                           &unused.hashBytes,
                                                           &unused.rejectDetail);
    outcome.time = {std::chrono::steady_clock::now() - start, comparisonsOfWalk()};
    // The engine reports a store that fails on the way as an unknown finger.
    failOnStoreFault();
    if (SUCCEEDED(identified)) {
        outcome.subject = Subject{nameOf(identity), subFactor};
    } else if (identified != WINBIO_E_UNKNOWN_ID) {
        failCall(identified, "IdentifyFeatureSet");
    }
    return outcome;
}

}  // namespace orl::unit
