#pragma once

// The calls that stand before and after a unit's work: contexts are cleared at both ends, and an
// enrollment is discarded however it ends, so that no sample stays in the engine.

#include "tools/orl_unit/biometric_unit.h"

namespace orl::unit {

class BiometricUnit::CaptureSession {
  public:
    explicit CaptureSession(BiometricUnit& unit) : unit_(unit) {
        unit_.forgetFault();
        unit_.clearContexts();
    }
    CaptureSession(const CaptureSession&) = delete;
    CaptureSession& operator=(const CaptureSession&) = delete;
    ~CaptureSession() { unit_.clearContexts(); }

  private:
    BiometricUnit& unit_;
};

class BiometricUnit::EnrollmentSession {
  public:
    explicit EnrollmentSession(BiometricUnit& unit) : capture_(unit), unit_(unit) {
        unit_.check(unit_.engine().CreateEnrollment(&unit_.pipeline_), "CreateEnrollment");
    }
    EnrollmentSession(const EnrollmentSession&) = delete;
    EnrollmentSession& operator=(const EnrollmentSession&) = delete;
    // After a commit this frees the template that the engine still keeps.
    ~EnrollmentSession() { unit_.engine().DiscardEnrollment(&unit_.pipeline_); }

  private:
    CaptureSession capture_;
    BiometricUnit& unit_;
};

}  // namespace orl::unit
