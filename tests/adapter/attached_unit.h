#pragma once

// One biometric unit as the service drives it: a pipeline with a storage adapter, and the engine
// adapter's table, through which every call goes.

#include <cstdint>
#include <span>
#include <vector>

#include "adapter/engine_context.h"
#include "platform/wbf.h"
#include "tests/support/fake_storage.h"

namespace orl::test {

// What Verify and Identify write, filled with rubbish beforehand.
struct FeatureSetOutputs {
    FeatureSetOutputs();

    // Whether the outputs that are never filled are null or 0.
    bool UnusedOnesAreNeutral() const;

    WINBIO_IDENTITY identity;
    WINBIO_BIOMETRIC_SUBTYPE subFactor = 0x77;
    BOOLEAN match = 0x77;
    PUCHAR payloadBlob;
    SIZE_T payloadBlobSize = 77;
    PUCHAR hashValue;
    SIZE_T hashSize = 77;
    WINBIO_REJECT_DETAIL rejectDetail = 77;
};

// What CheckForDuplicate writes, filled with rubbish beforehand.
struct DuplicateOutputs {
    DuplicateOutputs();

    WINBIO_IDENTITY identity;
    WINBIO_BIOMETRIC_SUBTYPE subFactor = 0x77;
    BOOLEAN duplicate = 0x77;
};

// Whether all 76 bytes are zero.
bool IsZero(const WINBIO_IDENTITY& identity);

// The table that WbioQueryEngineInterface hands out.
const WINBIO_ENGINE_INTERFACE& EngineTable();

class AttachedUnit {
  public:
    // Attaches the unit; ends the process when that fails.
    AttachedUnit();
    // Detaches it, unless that has happened.
    ~AttachedUnit();
    AttachedUnit(const AttachedUnit&) = delete;
    AttachedUnit& operator=(const AttachedUnit&) = delete;

    adapter::EngineContext& Context();

    HRESULT Detach();
    HRESULT Accept(std::span<const std::uint8_t> sample);
    HRESULT Verify(WINBIO_IDENTITY& identity,
                   WINBIO_BIOMETRIC_SUBTYPE subFactor,
                   FeatureSetOutputs& outputs);
    HRESULT Identify(FeatureSetOutputs& outputs);
    // CreateEnrollment, AcceptSampleData and UpdateEnrollment.
    HRESULT Enroll(std::span<const std::uint8_t> sample);
    HRESULT CheckForDuplicate(DuplicateOutputs& outputs);

    WINBIO_PIPELINE pipeline = {};
    FakeStorage storage{pipeline};
    const WINBIO_ENGINE_INTERFACE& engine = EngineTable();
};

// The bytes of a buffer of the context.
std::vector<std::uint8_t> Bytes(const UCHAR* data, SIZE_T size);

}  // namespace orl::test
