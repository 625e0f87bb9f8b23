#include "tools/orl_unit/list_command.h"

#include <ostream>

#include <nlohmann/json.hpp>

#include "tools/orl_unit/finger_names.h"
#include "tools/orl_unit/identity_names.h"
#include "tools/orl_unit/text_table.h"

namespace orl::unit {
namespace {

void listAsTable(BiometricUnit& unit, std::ostream& out) {
    using Align = TextTable::Align;
    TextTable table({Align::kLeft, Align::kLeft, Align::kRight, Align::kLeft});
    table.addRow({"Name", "Finger", "Template bytes", "Identity"});
    std::size_t recordCount = 0;
    unit.listRecords([&](const ListedRecord& record) {
        ++recordCount;
        table.addRow({oneLine(record.subject.name),
                      subFactorName(record.subject.subFactor),
                      std::to_string(record.templateBytes),
                      identityText(*record.identity)});
    });
    out << (recordCount == 0 ? "nothing is enrolled\n" : table.text());
}

void listAsJson(BiometricUnit& unit, std::ostream& out) {
    unit.listRecords([&out](const ListedRecord& record) {
        const nlohmann::ordered_json line = {{"name", record.subject.name},
                                             {"finger", subFactorName(record.subject.subFactor)},
                                             {"templateBytes", record.templateBytes},
                                             {"identity", identityText(*record.identity)}};
        out << line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
    });
}

}  // namespace

void runList(const UnitOptions& unitOptions, std::ostream& out) {
    BiometricUnit unit(modulePath(unitOptions));
    unit.openStore(unitOptions.store, StoreUse::kMustExist, storeAccess(unitOptions));
    if (unitOptions.json) {
        listAsJson(unit, out);
    } else {
        listAsTable(unit, out);
    }
}

}  // namespace orl::unit
