#include "tools/orl_unit/unit_options.h"

#include "tools/orl_unit/file_store.h"
#include "tools/orl_unit/loaded_module.h"
#include "tools/orl_unit/path_argument.h"
#include "tools/orl_unit/storage_adapter.h"

namespace orl::unit {

std::string defaultStore() {
    return fileStoresAvailable() ? "orl-unit.db" : std::string(kMemoryStorePath);
}

std::filesystem::path modulePath(const UnitOptions& options) {
    return options.module.empty() ? defaultModulePath() : pathArgument(options.module, "module");
}

StoreAccessOptions storeAccess(const UnitOptions& options) {
    const std::chrono::duration<double> wait(options.lockWaitSeconds);
    return {options.readOnly, std::chrono::duration_cast<std::chrono::milliseconds>(wait)};
}

}  // namespace orl::unit
