#include "tools/orl_unit/identify_command.h"

#include <ostream>

#include <nlohmann/json.hpp>

#include "tools/orl_unit/finger_names.h"
#include "tools/orl_unit/path_argument.h"
#include "tools/orl_unit/progress_bar.h"

namespace orl::unit {
namespace {

IdentifyOutcome identifyWithProgress(BiometricUnit& unit, const FingerRecord& record) {
    ProgressBar progress("identify", 0);
    unit.onRecord([&progress](std::size_t done, std::size_t total) {
        progress.setTotal(total);
        progress.show(done);
    });
    IdentifyOutcome outcome = unit.identify(record);
    unit.onRecord(nullptr);
    return outcome;
}

nlohmann::ordered_json jsonOf(const std::string& record, const IdentifyOutcome& outcome) {
    nlohmann::ordered_json line = {{"record", record},
                                   {"identified", outcome.subject.has_value()},
                                   {"name", nullptr},
                                   {"finger", nullptr},
                                   {"comparisons", outcome.time.comparisonCount}};
    if (outcome.subject) {
        line["name"] = outcome.subject->name;
        line["finger"] = subFactorName(outcome.subject->subFactor);
    }
    return line;
}

}  // namespace

void runIdentify(const UnitOptions& unitOptions,
                 const IdentifyOptions& options,
                 std::ostream& out) {
    const FingerRecord record = readRecordFile(pathArgument(options.record, "record"));
    BiometricUnit unit(modulePath(unitOptions));
    unit.openStore(unitOptions.store, StoreUse::kMustExist, storeAccess(unitOptions));
    const IdentifyOutcome outcome = identifyWithProgress(unit, record);
    if (unitOptions.json) {
        out << jsonOf(options.record, outcome)
                   .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)
            << '\n';
    } else if (outcome.subject) {
        out << oneLine(outcome.subject->name) << ' ' << subFactorName(outcome.subject->subFactor)
            << '\n';
    } else {
        out << "not identified\n";
    }
}

}  // namespace orl::unit
