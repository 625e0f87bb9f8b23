// What the language's runtime keeps for threads, in a form that leaves with the module.
//
// The service may unload the module while threads live that have used it. The runtime that is
// linked in takes handles and memory for each thread at its first exception or its first wait for a
// local static, and a thread-local slot of the process; all of it is given back when the thread
// ends, but not when the module goes. So the functions that need it are supplied here, over the
// system's own means. Their names and duties are those of the Itanium C++ ABI, sections 2.5.3
// and 3.3.3. This file is part of the module itself, since nothing refers to it.

#include <atomic>
#include <cstdint>
#include <exception>

#include "platform/windows_types.h"

namespace __gnu_cxx {

// Frees what the runtime holds back for exceptions when memory has run out.
void __freeres() noexcept;  // NOLINT(bugprone-reserved-identifier): the runtime's name

}  // namespace __gnu_cxx

namespace {

// Before all other constructors and after all other destructors of the module.
constexpr int kOutermostPriority = 101;

// A thread's exceptions; all zero at first. The runtime's own layout.
struct ThreadExceptions {
    void* caught;
    unsigned uncaughtCount;
};

// A slot whose values the system frees when their thread ends, and all of them with the slot.
DWORD exceptionsSlot = FLS_OUT_OF_INDEXES;

void WINAPI FreeExceptions(void* exceptions) {
    HeapFree(GetProcessHeap(), 0, exceptions);
}

__attribute__((constructor(kOutermostPriority))) void TakeSlot() {
    exceptionsSlot = FlsAlloc(FreeExceptions);
}

__attribute__((destructor(kOutermostPriority))) void GiveAllBack() {
    FlsFree(exceptionsSlot);
    __gnu_cxx::__freeres();
}

// The two bytes of a local static's guard that count. The compiler itself reads the first one.
class Guard {
  public:
    explicit Guard(std::int64_t* guard) : bytes_(reinterpret_cast<std::uint8_t*>(guard)) {}

    bool IsInitialised() const { return Initialised().load(std::memory_order_acquire) != 0; }
    void SetInitialised() { Initialised().store(1, std::memory_order_release); }
    bool IsTaken() const { return bytes_[1] != 0; }
    void SetTaken(bool taken) { bytes_[1] = taken ? 1 : 0; }

  private:
    std::atomic_ref<std::uint8_t> Initialised() const {
        return std::atomic_ref<std::uint8_t>(bytes_[0]);
    }

    std::uint8_t* bytes_;
};

// One lock for all guards; it is not held while a static is initialised.
SRWLOCK guardsLock = SRWLOCK_INIT;
CONDITION_VARIABLE guardsChanged = CONDITION_VARIABLE_INIT;

void LeaveGuard(Guard guard, bool initialised) {
    AcquireSRWLockExclusive(&guardsLock);
    if (initialised) {
        guard.SetInitialised();
    }
    guard.SetTaken(false);
    ReleaseSRWLockExclusive(&guardsLock);
    WakeAllConditionVariable(&guardsChanged);
}

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the runtime interface's.
extern "C" {

void* __cxa_get_globals_fast() noexcept {
    return FlsGetValue(exceptionsSlot);
}

void* __cxa_get_globals() noexcept {
    void* exceptions = FlsGetValue(exceptionsSlot);
    if (exceptions == nullptr) {
        exceptions = HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, sizeof(ThreadExceptions));
        if (exceptions == nullptr || FlsSetValue(exceptionsSlot, exceptions) == FALSE) {
            std::terminate();  // as the runtime does
        }
    }
    return exceptions;
}

// 1 when the caller is to initialise the static, 0 when that is done.
int __cxa_guard_acquire(std::int64_t* guardObject) {
    Guard guard(guardObject);
    AcquireSRWLockExclusive(&guardsLock);
    while (!guard.IsInitialised() && guard.IsTaken()) {
        SleepConditionVariableSRW(&guardsChanged, &guardsLock, INFINITE, 0);
    }
    const bool isOurs = !guard.IsInitialised();
    if (isOurs) {
        guard.SetTaken(true);
    }
    ReleaseSRWLockExclusive(&guardsLock);
    return isOurs ? 1 : 0;
}

void __cxa_guard_release(std::int64_t* guardObject) noexcept {
    LeaveGuard(Guard(guardObject), true);
}

void __cxa_guard_abort(std::int64_t* guardObject) noexcept {
    LeaveGuard(Guard(guardObject), false);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
