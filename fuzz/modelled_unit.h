#pragma once

// One biometric unit behind the interface table, and the model that tells what it must do. Their
// neighbours are scripted alike: storage and memory are two copies, the matcher is the fake one.
// A step calls an entry point of both and requires the same answer; CheckState then requires that
// both are left in the same state. There is one at a time, since the heaps and the matcher are the
// program's.

#include "fuzz/engine_model.h"
#include "fuzz/scripted_storage.h"
#include "platform/wbf.h"

namespace orl::fuzz {

class ModelledUnit {
  public:
    // Detached, with an empty storage connected; nothing is kept from the unit before.
    ModelledUnit();
    ~ModelledUnit();
    ModelledUnit(const ModelledUnit&) = delete;
    ModelledUnit& operator=(const ModelledUnit&) = delete;

    EngineModel model;
    ScriptedStorage storage;  // the adapter's; the model has its own
    WINBIO_PIPELINE pipeline = {};
    const WINBIO_ENGINE_INTERFACE& engine;

    // Gives storage to both or takes it from both.
    void ConnectStorage(bool connected);

    // The context, the process heap, the storage's calls and what reached the matcher are the
    // model's. Forgets those calls.
    void CheckState();

    // REQUIRES: detached. Every block that was taken has been freed, and wiped.
    void CheckEverythingIsFreed() const;

  private:
    void CheckContext() const;
    void CheckHeaps() const;
    void CheckStorage();
    void CheckMatcher();
};

}  // namespace orl::fuzz
