#pragma once

// Enrollment: one captured sample becomes the template, which is the captured BIR as it is, and the
// storage adapter keeps it.
//
//   state                     call                          next state
//   idle                      CreateEnrollment              in progress, no template
//   in progress, no template  UpdateEnrollment, sample      in progress, template
//   in progress, template     UpdateEnrollment, sample      in progress, newer template
//   in progress               UpdateEnrollment, no sample   unchanged
//   in progress, template     CommitEnrollment, stored      idle; the template is kept until freed
//   in progress, template     CommitEnrollment, not stored  unchanged
//   any                       CreateEnrollment              in progress, no template
//   any                       DiscardEnrollment             idle, no template
//
// All entry points but DiscardEnrollment give E_POINTER without a context. None throws.

#include "platform/wbf.h"

namespace orl::adapter {

// Begins an enrollment, or begins it anew. S_OK.
HRESULT WINAPI EngineAdapterCreateEnrollment(PWINBIO_PIPELINE Pipeline) noexcept;

// Takes the captured sample as the template; S_OK says that one is enough. The sample is not looked
// into. WINBIO_E_INVALID_DEVICE_STATE when no enrollment is in progress; WINBIO_E_BAD_CAPTURE, with
// RejectDetail WINBIO_FP_POOR_QUALITY, without a sample; E_OUTOFMEMORY leaves no template.
HRESULT WINAPI EngineAdapterUpdateEnrollment(PWINBIO_PIPELINE Pipeline,
                                             PWINBIO_REJECT_DETAIL RejectDetail) noexcept;

// S_OK when the enrollment could be committed, WINBIO_E_INVALID_DEVICE_STATE when none is in
// progress, WINBIO_E_BAD_CAPTURE when it has no template yet.
HRESULT WINAPI EngineAdapterGetEnrollmentStatus(PWINBIO_PIPELINE Pipeline,
                                                PWINBIO_REJECT_DETAIL RejectDetail) noexcept;

// Looks for a stored record that matches the template, and tells whose it is. Works on a committed
// template too, as long as it is kept. Whatever storage fails at counts as no duplicate: S_OK.
// WINBIO_E_INVALID_DEVICE_STATE without a template, E_FAIL without a storage interface, and the
// failures of ExtractISOFromBIR for a malformed template.
HRESULT WINAPI EngineAdapterCheckForDuplicate(PWINBIO_PIPELINE Pipeline,
                                              PWINBIO_IDENTITY Identity,
                                              PWINBIO_BIOMETRIC_SUBTYPE SubFactor,
                                              PBOOLEAN Duplicate) noexcept;

// Has storage add the template for Identity and SubFactor, with the payload passed through, and
// ends the enrollment. WINBIO_E_INVALID_DEVICE_STATE unless there is a template of an enrollment in
// progress; E_FAIL without a storage interface; storage's own failure otherwise, with the
// enrollment left in progress.
HRESULT WINAPI EngineAdapterCommitEnrollment(PWINBIO_PIPELINE Pipeline,
                                             PWINBIO_IDENTITY Identity,
                                             WINBIO_BIOMETRIC_SUBTYPE SubFactor,
                                             PUCHAR PayloadBlob,
                                             SIZE_T PayloadBlobSize) noexcept;

// Ends the enrollment and wipes and frees the template. S_OK, without a context too.
HRESULT WINAPI EngineAdapterDiscardEnrollment(PWINBIO_PIPELINE Pipeline) noexcept;

}  // namespace orl::adapter
