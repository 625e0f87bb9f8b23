#include "tools/orl_unit/enroll_command.h"

#include <fstream>
#include <iostream>
#include <vector>

#include "tools/command_line/utf8_path.h"
#include "tools/orl_unit/finger_argument.h"
#include "tools/orl_unit/finger_names.h"
#include "tools/orl_unit/progress_bar.h"

namespace orl::unit {
namespace {

struct EnrollLine {
    std::string name;
    std::string finger;
    std::string record;
};

EnrollLine parseLine(const std::string& line, std::size_t number) {
    const std::size_t firstTab = line.find('\t');
    const std::size_t secondTab =
        firstTab == std::string::npos ? firstTab : line.find('\t', firstTab + 1);
    if (secondTab == std::string::npos) {
        throw CommandError("line " + std::to_string(number) +
                           " of the list is not NAME<TAB>FINGER<TAB>RECORD");
    }
    return {line.substr(0, firstTab),
            line.substr(firstTab + 1, secondTab - firstTab - 1),
            line.substr(secondTab + 1)};
}

std::vector<std::string> readLines(std::istream& in) {
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> readList(const std::string& file) {
    if (file == "-") {
        return readLines(std::cin);
    }
    std::ifstream in(tools::pathFromUtf8(file), std::ios::binary);
    if (!in) {
        throw CommandError("list " + inQuotes(file) + " cannot be opened");
    }
    return readLines(in);
}

// Enrolls one record and says so.
void enrollOne(BiometricUnit& unit, const EnrollLine& line, DuplicateRule rule, std::ostream& out) {
    const Subject subject{line.name, enrollableFinger(line.finger)};
    const FingerRecord record = readRecordFile(tools::pathFromUtf8(line.record));
    const EnrollOutcome outcome = unit.enroll(record, subject, rule);
    if (!outcome.stored) {
        throw CommandError("record " + inQuotes(line.record) + " is the finger enrolled as " +
                           inQuotes(outcome.duplicateOf->name) + " " +
                           subFactorName(outcome.duplicateOf->subFactor) +
                           " (--allow-duplicate enrolls it all the same)");
    }
    out << "enrolled " << oneLine(line.name) << ' ' << subFactorName(subject.subFactor) << '\n';
    if (!out.flush()) {
        throw CommandError("standard output could not be written");
    }
}

bool enrollList(BiometricUnit& unit,
                const EnrollOptions& options,
                DuplicateRule rule,
                std::ostream& out,
                std::ostream& err) {
    const std::vector<std::string> lines = readList(options.listFile);
    ProgressBar progress("enroll", lines.size());
    bool allDone = true;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        progress.show(i);
        try {
            enrollOne(unit, parseLine(lines[i], i + 1), rule, out);
        } catch (const StoreError&) {
            throw;
        } catch (const CommandError& error) {
            err << "orl-unit: " << error.what() << '\n';
            allDone = false;
        }
    }
    return allDone;
}

}  // namespace

bool runEnroll(const UnitOptions& unitOptions,
               const EnrollOptions& options,
               std::ostream& out,
               std::ostream& err) {
    const DuplicateRule rule =
        options.allowDuplicate ? DuplicateRule::Allow : DuplicateRule::Refuse;
    BiometricUnit unit(modulePath(unitOptions));
    unit.openStore(unitOptions.store, StoreUse::CreateIfMissing, storeAccess(unitOptions));
    if (!options.listFile.empty()) {
        return enrollList(unit, options, rule, out, err);
    }
    ProgressBar progress("compare", 0);
    unit.onRecord([&progress](std::size_t done, std::size_t total) {
        progress.setTotal(total);
        progress.show(done);
    });
    enrollOne(unit, {options.name, options.finger, options.record}, rule, out);
    return true;
}

}  // namespace orl::unit
