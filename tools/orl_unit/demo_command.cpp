#include "tools/orl_unit/demo_command.h"

#include <algorithm>
#include <optional>
#include <ostream>
#include <system_error>

#include <nlohmann/json.hpp>

#include "tools/command_line/utf8_path.h"
#include "tools/orl_unit/demo.h"
#include "tools/orl_unit/demo_report.h"
#include "tools/orl_unit/executable_path.h"
#include "tools/orl_unit/file_store.h"
#include "tools/orl_unit/interruption.h"
#include "tools/orl_unit/path_argument.h"
#include "tools/orl_unit/progress_bar.h"
#include "tools/orl_unit/storage_adapter.h"
#include "tools/orl_unit/temporary_folder.h"

namespace orl::unit {
namespace {

// The project's samples, seen from the build tree: <project>/build/<preset>/bin.
std::filesystem::path sampleFolder() {
    const auto project = executableFolder().parent_path().parent_path().parent_path();
    auto folder = project / "samples";
    std::error_code failure;
    if (!std::filesystem::is_directory(folder, failure)) {
        throw CommandError("the sample records are not beside this program; give --data DIR");
    }
    return folder;
}

void openDemoStore(BiometricUnit& unit, const UnitOptions& options) {
    unit.openStore(options.store, StoreUse::kCreateIfMissing, storeAccess(options));
    bool isEmpty = true;
    unit.listRecords([&isEmpty](const ListedRecord& /*record*/) { isEmpty = false; });
    if (!isEmpty) {
        throw CommandError("store " + inQuotes(options.store) +
                           " holds records already; the demonstration needs an empty one");
    }
}

// A raw capture: what the engine exports must be the sample that it was given.
void checkRawCapture(BiometricUnit& unit, const FingerRecord& record) {
    const SecretBytes exported = unit.captureRaw(record);
    if (exported.size() < record.bytes.size() ||
        !std::equal(record.bytes.rbegin(), record.bytes.rend(), exported.rbegin())) {
        throw CommandError("the engine exports another sample than it was given");
    }
}

DemoSummary runWithProgress(BiometricUnit& unit,
                            const DemoRecords& records,
                            std::size_t impostorLimit) {
    const InterruptionGuard interruption;
    ProgressBar bar("demo", 0);
    return runDemo(unit, records, impostorLimit, [&](std::size_t done, std::size_t total) {
        interruption.check();
        bar.setTotal(total);
        bar.show(done);
    });
}

// Runs the demonstration on the store of the options, or on one made for it. That one is gone
// before anything is printed, so that no end of the output leaves it behind.
DemoSummary runOnStore(UnitOptions unitOptions,
                       const DemoOptions& options,
                       const DemoRecords& records) {
    std::optional<TemporaryFolder> temporary;
    if (!options.storeGiven && fileStoresAvailable()) {
        temporary.emplace();
        unitOptions.store = tools::utf8FromPath(temporary->path() / "demo.db");
    }
    BiometricUnit unit(modulePath(unitOptions));
    openDemoStore(unit, unitOptions);
    checkRawCapture(unit, records.fingers.front().impressions.front().record);
    return runWithProgress(unit, records, options.impostorLimit);
}

std::string storeText(const UnitOptions& unitOptions, const DemoOptions& options) {
    if (options.storeGiven && unitOptions.store != kMemoryStorePath) {
        return inQuotes(unitOptions.store);
    }
    return options.storeGiven || !fileStoresAvailable() ? "memory" : "a temporary SQLite file";
}

}  // namespace

void runDemoCommand(const UnitOptions& unitOptions, const DemoOptions& options, std::ostream& out) {
    const auto folder =
        options.folder.empty() ? sampleFolder() : pathArgument(options.folder, "folder");
    const DemoRecords records = readDemoRecords(folder);
    const DemoSummary summary = runOnStore(unitOptions, options, records);
    if (unitOptions.json) {
        out << demoJson(summary).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)
            << '\n';
        return;
    }
    out << "Unit attached: engine adapter "
        << oneLine(tools::utf8FromPath(modulePath(unitOptions).filename())) << ", store in "
        << storeText(unitOptions, options) << ".\n"
        << "Records of " << oneLine(tools::utf8FromPath(folder)) << ": "
        << tools::counted(summary.fingerCount, "finger") << ", "
        << tools::counted(summary.impressionCount, "impression") << ".\n\n"
        << demoText(summary);
}

}  // namespace orl::unit
