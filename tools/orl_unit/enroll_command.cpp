#include "tools/orl_unit/enroll_command.h"

#include <ostream>
#include <vector>

#include "tools/command_line/text_lines.h"
#include "tools/orl_unit/complaint.h"
#include "tools/orl_unit/finger_argument.h"
#include "tools/orl_unit/finger_names.h"
#include "tools/orl_unit/identity_names.h"
#include "tools/orl_unit/path_argument.h"
#include "tools/orl_unit/progress_bar.h"

namespace orl::unit {
namespace {

struct EnrollLine {
    std::string name;
    std::string finger;
    std::string record;
};

// A line that has been looked at: what is to be enrolled, as whose finger.
struct Enrollment {
    Subject subject;
    std::string recordName;
    FingerRecord record;
};

struct NumberedLine {
    std::size_t number;
    std::string text;
};

EnrollLine parseLine(const NumberedLine& line) {
    const std::string& text = line.text;
    const std::size_t firstTab = text.find('\t');
    const std::size_t secondTab =
        firstTab == std::string::npos ? firstTab : text.find('\t', firstTab + 1);
    if (secondTab == std::string::npos) {
        throw CommandError("line " + std::to_string(line.number) +
                           " of the list is not NAME<TAB>FINGER<TAB>RECORD");
    }
    return {text.substr(0, firstTab),
            text.substr(firstTab + 1, secondTab - firstTab - 1),
            text.substr(secondTab + 1)};
}

// All lines but empty ones.
std::vector<NumberedLine> readList(const std::string& file) {
    tools::TextLines list(file);
    std::vector<NumberedLine> lines;
    for (std::string line; list.next(line);) {
        if (!line.empty()) {
            lines.push_back({list.number(), line});
        }
    }
    if (!list.failure().empty()) {
        throw CommandError("list " + inQuotes(list.name()) + ": " + list.failure());
    }
    return lines;
}

Enrollment readEnrollment(const EnrollLine& line) {
    checkIdentityName(line.name);
    const Subject subject{line.name, enrollableFinger(line.finger)};
    return {subject, line.record, readRecordFile(pathArgument(line.record, "record"))};
}

// Enrolls one record and says so.
void enrollOne(BiometricUnit& unit,
               const Enrollment& enrollment,
               DuplicateRule rule,
               std::ostream& out) {
    const Subject& subject = enrollment.subject;
    const EnrollOutcome outcome = unit.enroll(enrollment.record, subject, rule);
    if (!outcome.stored) {
        throw CommandError("record " + inQuotes(enrollment.recordName) +
                           " is the finger enrolled as " + inQuotes(outcome.duplicateOf->name) +
                           " " + subFactorName(outcome.duplicateOf->subFactor) +
                           " (--allow-duplicate enrolls it all the same)");
    }
    out << "enrolled " << oneLine(subject.name) << ' ' << subFactorName(subject.subFactor) << '\n';
    if (!out.flush()) {
        throw OutputError();
    }
}

void enrollWithProgress(BiometricUnit& unit,
                        const Enrollment& enrollment,
                        DuplicateRule rule,
                        std::ostream& out) {
    ProgressBar progress("compare", 0);
    unit.onRecord([&progress](std::size_t done, std::size_t total) {
        progress.setTotal(total);
        progress.show(done);
    });
    enrollOne(unit, enrollment, rule, out);
    unit.onRecord(nullptr);
}

bool enrollList(BiometricUnit& unit,
                const std::vector<NumberedLine>& lines,
                DuplicateRule rule,
                std::ostream& out,
                std::ostream& err) {
    ProgressBar progress("enroll", lines.size());
    bool allDone = true;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        progress.show(i);
        try {
            enrollOne(unit, readEnrollment(parseLine(lines[i])), rule, out);
        } catch (const StoreError&) {
            throw;
        } catch (const OutputError&) {
            throw;
        } catch (const CommandError& error) {
            complain(err, error.what());
            allDone = false;
        }
    }
    return allDone;
}

}  // namespace

// The store comes last: what cannot be enrolled must not leave a new one behind.
bool runEnroll(const UnitOptions& unitOptions,
               const EnrollOptions& options,
               std::ostream& out,
               std::ostream& err) {
    const DuplicateRule rule =
        options.allowDuplicate ? DuplicateRule::kAllow : DuplicateRule::kRefuse;
    const auto openUnit = [&unitOptions](BiometricUnit& unit) {
        unit.openStore(unitOptions.store, StoreUse::kCreateIfMissing, storeAccess(unitOptions));
    };
    if (!options.listFile.empty()) {
        const std::vector<NumberedLine> lines = readList(options.listFile);
        BiometricUnit unit(modulePath(unitOptions));
        openUnit(unit);
        return enrollList(unit, lines, rule, out, err);
    }
    const Enrollment enrollment = readEnrollment({options.name, options.finger, options.record});
    BiometricUnit unit(modulePath(unitOptions));
    openUnit(unit);
    enrollWithProgress(unit, enrollment, rule, out);
    return true;
}

}  // namespace orl::unit
