#pragma once

// An engine adapter module for tests of the host: it does nothing but note each call and return
// what it is told to. The module exports FakeEngine beside WbioQueryEngineInterface; the state is
// plain data, since module and test need not share a runtime library.

#include <cstddef>

#include "platform/wbf.h"

namespace orl::unit {

struct FakeEngineState {
    char calls[2048];  // names of the calls, each followed by a space
    HRESULT attachResult;
    HRESULT acceptResult;
    HRESULT updateResult;
    HRESULT commitResult;
    HRESULT verifyResult;
    HRESULT identifyResult;
    BOOLEAN duplicate;
    BOOLEAN match;
    WINBIO_IDENTITY foundIdentity;  // of the duplicate and of the identified finger
    SIZE_T indexElementCount;
    // The last sample accepted.
    unsigned char sample[4096];
    SIZE_T sampleSize;
    WINBIO_BIR_PURPOSE samplePurpose;
};

using FakeEngineFn = FakeEngineState*();

}  // namespace orl::unit
