// Enrollment: begin, one capture, duplicate check, commit.

#include "tools/orl_unit/biometric_unit.h"
#include "tools/orl_unit/finger_names.h"
#include "tools/orl_unit/identity_names.h"
#include "tools/orl_unit/unit_sessions.h"

namespace orl::unit {
namespace {

CommandError enrolledAlready(const Subject& subject) {
    return CommandError(inQuotes(subject.name) + " has " + subFactorName(subject.subFactor) +
                        " enrolled already");
}

}  // namespace

WINBIO_IDENTITY BiometricUnit::identityForEnrollment(const std::string& name) {
    std::optional<WINBIO_IDENTITY> identity;
    failOnStoreStatus(store().findIdentity(name, identity));
    if (!identity) {
        identity = newIdentity();
        store().reserveName(*identity, name);
    }
    return *identity;
}

void BiometricUnit::refuseEnrolledSubject(WINBIO_IDENTITY identity, const Subject& subject) {
    const HRESULT found =
        pipeline_.StorageInterface->QueryBySubject(&pipeline_, &identity, subject.subFactor);
    if (SUCCEEDED(found)) {
        throw enrolledAlready(subject);
    }
    if (found != WINBIO_E_DATABASE_NO_RESULTS) {
        failCall(found, "QueryBySubject");
    }
}

EnrollOutcome BiometricUnit::checkForDuplicate() {
    WINBIO_IDENTITY identity = {};
    WINBIO_BIOMETRIC_SUBTYPE subFactor = 0;
    BOOLEAN duplicate = FALSE;
    EnrollOutcome outcome;
    const auto start = std::chrono::steady_clock::now();
    check(engine().CheckForDuplicate(&pipeline_, &identity, &subFactor, &duplicate),
          "CheckForDuplicate");
    outcome.time = {std::chrono::steady_clock::now() - start, comparisonsOfWalk()};
    failOnStoreFault();
    if (duplicate != FALSE) {
        outcome.duplicateOf = Subject{nameOf(identity), subFactor};
    }
    return outcome;
}

void BiometricUnit::commitEnrollment(WINBIO_IDENTITY identity, const Subject& subject) {
    HRESULT committed =
        engine().CommitEnrollment(&pipeline_, &identity, subject.subFactor, nullptr, 0);
    if (FAILED(committed) && storage().lastFault.fault == StoreFault::kNameTaken) {
        // Another process has just given the name to an identity: the finger becomes that one's.
        // The engine has kept the enrollment.
        forgetFault();
        identity = identityForEnrollment(subject.name);
        committed = engine().CommitEnrollment(&pipeline_, &identity, subject.subFactor, nullptr, 0);
    }
    if (committed == WINBIO_E_DUPLICATE_ENROLLMENT) {
        throw enrolledAlready(subject);
    }
    check(committed, "CommitEnrollment");
}

EnrollOutcome BiometricUnit::enroll(const FingerRecord& record,
                                    const Subject& subject,
                                    DuplicateRule rule) {
    checkIdentityName(subject.name);
    forgetFault();
    const WINBIO_IDENTITY identity = identityForEnrollment(subject.name);
    refuseEnrolledSubject(identity, subject);

    const EnrollmentSession session(*this);
    pushSample(record, subject.subFactor, WINBIO_PURPOSE_ENROLL);
    WINBIO_REJECT_DETAIL rejectDetail = 0;
    const HRESULT updated = engine().UpdateEnrollment(&pipeline_, &rejectDetail);
    check(updated, "UpdateEnrollment");
    if (updated == WINBIO_I_MORE_DATA) {
        throw CommandError("the engine asks for more samples than the one given");
    }
    EnrollOutcome outcome = checkForDuplicate();
    if (!outcome.duplicateOf || rule == DuplicateRule::kAllow) {
        commitEnrollment(identity, subject);
        outcome.stored = true;
    }
    return outcome;
}

}  // namespace orl::unit
