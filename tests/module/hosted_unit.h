#pragma once

// A biometric unit over the interface table of a loaded adapter module, as the service builds one,
// with a storage adapter in memory.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/wbf.h"
#include "tests/support/dynamic_library.h"
#include "tests/support/fake_storage.h"

namespace orl::test {

// The table that a loaded module hands out. Throws: std::runtime_error when it hands out none.
WINBIO_ENGINE_INTERFACE& EngineTableOf(const DynamicLibrary& module);

class HostedUnit {
  public:
    // Attaches a unit. Throws: std::runtime_error when the adapter refuses.
    explicit HostedUnit(WINBIO_ENGINE_INTERFACE& engine);
    ~HostedUnit();
    HostedUnit(const HostedUnit&) = delete;
    HostedUnit& operator=(const HostedUnit&) = delete;

    WINBIO_PIPELINE* pipeline() { return &pipeline_; }
    FakeStorage& storage() { return storage_; }

    // Hands over a capture whose standard data block is this record.
    HRESULT Capture(const std::vector<std::uint8_t>& record);

    // Enrolls the last capture as this identity's right index finger.
    HRESULT Enroll(const WINBIO_IDENTITY& identity);

    // Whether the last capture is verified as this identity's right index finger.
    bool Verify(const WINBIO_IDENTITY& identity);

  private:
    WINBIO_ENGINE_INTERFACE& engine_;
    WINBIO_PIPELINE pipeline_ = {};
    FakeStorage storage_;
};

}  // namespace orl::test
