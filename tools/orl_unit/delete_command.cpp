#include "tools/orl_unit/delete_command.h"

#include <ostream>

#include "tools/orl_unit/finger_argument.h"

namespace orl::unit {

void runDelete(const UnitOptions& unitOptions, const DeleteOptions& options, std::ostream& out) {
    const std::uint8_t subFactor = fingerArgument(options.finger);
    BiometricUnit unit(modulePath(unitOptions));
    unit.openStore(unitOptions.store, StoreUse::kMustExist, storeAccess(unitOptions));
    const std::size_t deletedCount =
        unit.deleteRecords(options.all ? std::nullopt : std::optional(options.name), subFactor);
    out << "deleted " << deletedCount << (deletedCount == 1 ? " record\n" : " records\n");
}

}  // namespace orl::unit
