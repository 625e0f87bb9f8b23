#include "tools/orl_unit/verify_command.h"

#include <ostream>

#include <nlohmann/json.hpp>

#include "tools/orl_unit/finger_argument.h"
#include "tools/orl_unit/finger_names.h"
#include "tools/orl_unit/path_argument.h"

namespace orl::unit {

void runVerify(const UnitOptions& unitOptions, const VerifyOptions& options, std::ostream& out) {
    const Subject subject{options.name, fingerArgument(options.finger)};
    const FingerRecord record = readRecordFile(pathArgument(options.record, "record"));
    BiometricUnit unit(modulePath(unitOptions));
    unit.openStore(unitOptions.store, StoreUse::kMustExist, storeAccess(unitOptions));
    const VerifyOutcome outcome = unit.verify(record, subject);
    if (unitOptions.json) {
        const nlohmann::ordered_json line = {{"name", subject.name},
                                             {"finger", subFactorName(subject.subFactor)},
                                             {"record", options.record},
                                             {"match", outcome.match}};
        out << line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
        return;
    }
    out << (outcome.match ? "match" : "no match") << '\n';
}

}  // namespace orl::unit
