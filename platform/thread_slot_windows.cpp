// Returns the thread library's TLS slot when the module is unloaded.
//
// The thread library that is linked into the module takes one of the process's thread-local slots,
// of which there are little more than a thousand, on its first use, and never gives it back. It
// ends the process when no slot is left, so a host that loads and unloads the module often enough
// would go down. This file is part of the module itself, since nothing refers to it.

#include <pthread.h>

#include "platform/windows_types.h"

namespace {

// Before all other constructors and after all other destructors of the module.
constexpr int kOutermostPriority = 101;

DWORD threadLibrarySlot = TLS_OUT_OF_INDEXES;

__attribute__((constructor(kOutermostPriority))) void FindThreadLibrarySlot() {
    // A slot that has just been freed is the next to be given out.
    const DWORD nextSlot = TlsAlloc();
    if (nextSlot == TLS_OUT_OF_INDEXES) {
        return;
    }
    TlsFree(nextSlot);
    static_cast<void>(pthread_self());
    // A new slot is null in every thread, and the library has just set its own. If another thread
    // was faster, the slot found is null here, and the library keeps its slot.
    if (TlsGetValue(nextSlot) != nullptr) {
        threadLibrarySlot = nextSlot;
    }
}

__attribute__((destructor(kOutermostPriority))) void ReturnThreadLibrarySlot() {
    if (threadLibrarySlot != TLS_OUT_OF_INDEXES) {
        TlsFree(threadLibrarySlot);
    }
}

}  // namespace
