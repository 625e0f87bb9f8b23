#pragma once

// A SQLite file system that fails on purpose: every file operation goes through to the system's,
// until a countdown of writing operations (write, sync, truncate, delete) ends; from then on all of
// them fail. Registered as the default while an object lives.

#include <cstddef>

namespace orl::unit {

class FaultyVfs {
  public:
    // The first allowedOperations writing operations work; all later ones fail with resultCode, an
    // SQLITE_ code.
    FaultyVfs(std::size_t allowedOperations, int resultCode);
    FaultyVfs(const FaultyVfs&) = delete;
    FaultyVfs& operator=(const FaultyVfs&) = delete;
    ~FaultyVfs();

    // Whether an operation has been made to fail.
    [[nodiscard]] bool failed() const;
};

}  // namespace orl::unit
