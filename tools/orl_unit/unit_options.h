#pragma once

// What every command is told: the module, the store, and how to use them.

#include <filesystem>
#include <string>

#include "tools/orl_unit/biometric_unit.h"

namespace orl::unit {

struct UnitOptions {
    std::string module;  // empty: the one built beside this program
    std::string store;   // path, or kMemoryStorePath
    bool readOnly = false;
    double lockWaitSeconds = 5.0;
    bool json = false;
};

// The store of commands that are given none: a file in the current folder, or memory in a build
// without stores in files.
std::string defaultStore();

// The path of the module that the options name.
std::filesystem::path modulePath(const UnitOptions& options);

// How the options want the store to be used.
StoreAccessOptions storeAccess(const UnitOptions& options);

}  // namespace orl::unit
