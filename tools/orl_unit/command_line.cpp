#include "tools/orl_unit/command_line.h"

#include <algorithm>
#include <charconv>
#include <ostream>

#include <CLI/CLI.hpp>

#include "tools/command_line/whole_number.h"
#include "tools/orl_unit/complaint.h"
#include "tools/orl_unit/delete_command.h"
#include "tools/orl_unit/demo_command.h"
#include "tools/orl_unit/enroll_command.h"
#include "tools/orl_unit/identify_command.h"
#include "tools/orl_unit/list_command.h"
#include "tools/orl_unit/verify_command.h"

namespace orl::unit {
namespace {

using tools::ExitStatus;

constexpr double kMaxLockWaitSeconds = 86400.0;

struct CommandLine {
    CLI::App app{
        "Hosts a biometric unit: enrolls, verifies and identifies finger minutiae records "
        "through an engine adapter module."};
    CLI::App* enroll = nullptr;
    CLI::App* verify = nullptr;
    CLI::App* identify = nullptr;
    CLI::App* list = nullptr;
    CLI::App* remove = nullptr;
    CLI::App* demo = nullptr;
    CLI::Option* store = nullptr;
    UnitOptions unitOptions;
    EnrollOptions enrollOptions;
    VerifyOptions verifyOptions;
    IdentifyOptions identifyOptions;
    DeleteOptions deleteOptions;
    DemoOptions demoOptions;
};

std::string refusalOfEmpty(const std::string& name) {
    return name.empty() ? "needs a name" : "";
}

// Why the word is no number of seconds to wait. The parser would take an empty word for 0, and a
// range lets pass what is not a number.
std::string refusalOfWait(const std::string& word) {
    double seconds = 0;
    const char* const end = word.data() + word.size();
    const auto [last, error] = std::from_chars(word.data(), end, seconds);
    const bool isNumber = error == std::errc{} && last == end;
    return isNumber && seconds >= 0 && seconds <= kMaxLockWaitSeconds
               ? ""
               : "'" + word + "' is not a number from 0 to 86400";
}

void describeUnit(CommandLine& line) {
    UnitOptions& options = line.unitOptions;
    options.store = defaultStore();
    line.app.add_option(
        "--module", options.module, "Engine adapter module; default: the one built beside");
    line.store = line.app.add_option("--store", options.store, "Store file, or :memory:")
                     ->capture_default_str()
                     ->check(refusalOfEmpty);
    line.app.add_flag("--read-only", options.readOnly, "Open the store without ever changing it");
    line.app
        .add_option("--wait", options.lockWaitSeconds, "Seconds to wait for a store that is in use")
        ->capture_default_str()
        ->check(refusalOfWait);
    line.app.add_flag("--json", options.json, "Print results as JSON (not enroll and delete)");
}

void describeEnroll(CommandLine& line) {
    EnrollOptions& options = line.enrollOptions;
    line.enroll = line.app.add_subcommand("enroll", "Store a record as a finger of an identity");
    CLI::Option* name = line.enroll->add_option("NAME", options.name, "Identity");
    CLI::Option* finger = line.enroll->add_option("FINGER", options.finger, "Like right-index");
    CLI::Option* record = line.enroll->add_option("RECORD", options.record, "Record file (*.fmr)");
    line.enroll
        ->add_option(
            "--list", options.listFile, "File of NAME<TAB>FINGER<TAB>RECORD lines; - is stdin")
        ->excludes(name)
        ->excludes(finger)
        ->excludes(record);
    line.enroll->add_flag(
        "--allow-duplicate", options.allowDuplicate, "Store a finger that is enrolled elsewhere");
    line.enroll->callback([&options] {
        if (options.listFile.empty() && options.record.empty()) {
            throw CLI::ValidationError("enroll", "needs NAME, FINGER and RECORD, or --list FILE");
        }
    });
}

void describeVerifyAndIdentify(CommandLine& line) {
    line.verify = line.app.add_subcommand("verify", "Is a record that finger of an identity?");
    line.verify->add_option("NAME", line.verifyOptions.name, "Identity")->required();
    line.verify->add_option("FINGER", line.verifyOptions.finger, "Like right-index, or any")
        ->required();
    line.verify->add_option("RECORD", line.verifyOptions.record, "Record file (*.fmr)")->required();
    line.identify = line.app.add_subcommand("identify", "Whose finger is a record?");
    line.identify->add_option("RECORD", line.identifyOptions.record, "Record file (*.fmr)")
        ->required();
}

void describeListAndDelete(CommandLine& line) {
    DeleteOptions& options = line.deleteOptions;
    line.list = line.app.add_subcommand("list", "Show what is enrolled");
    line.remove = line.app.add_subcommand("delete", "Remove records");
    CLI::Option* name = line.remove->add_option("NAME", options.name, "Identity");
    CLI::Option* finger =
        line.remove->add_option("FINGER", options.finger, "One finger; default: all")
            ->capture_default_str();
    line.remove->add_flag("--all", options.all, "Everything that is enrolled")
        ->excludes(name)
        ->excludes(finger);
    line.remove->callback([&options] {
        if (options.name.empty() && !options.all) {
            throw CLI::ValidationError("delete", "needs NAME, or --all");
        }
    });
}

void describeDemo(CommandLine& line) {
    DemoOptions& options = line.demoOptions;
    line.demo = line.app.add_subcommand(
        "demo", "Enroll, verify and identify a folder of records, and show a summary");
    line.demo
        ->add_option(
            "--data", options.folder, "Folder of FINGER_IMPRESSION.fmr; default: the samples")
        ->check(refusalOfEmpty);
    line.demo->add_option("--impostors", options.impostorLimit, "Most impostor comparisons to make")
        ->capture_default_str()
        ->transform(tools::wholeNumber<std::size_t>());
}

void describe(CommandLine& line) {
    line.app.name("orl-unit");
    line.app.set_version_flag("--version", "orl-unit " ORL_VERSION);
    line.app.require_subcommand(0, 1);
    line.app.final_callback([&line] {
        if (line.app.get_subcommands().empty()) {
            throw CLI::RequiredError("A command");
        }
    });
    line.app.fallthrough();  // the options of the unit may stand behind the command
    // On Windows too, a word that begins with "/" is a file's name.
    line.app.allow_windows_style_options(false);
    describeUnit(line);
    describeEnroll(line);
    describeVerifyAndIdentify(line);
    describeListAndDelete(line);
    describeDemo(line);
}

ExitStatus runCommand(CommandLine& line, std::ostream& out, std::ostream& err) {
    if (line.enroll->parsed()) {
        const bool allDone = runEnroll(line.unitOptions, line.enrollOptions, out, err);
        return allDone ? ExitStatus::kDone : ExitStatus::kFailed;
    }
    if (line.verify->parsed()) {
        runVerify(line.unitOptions, line.verifyOptions, out);
    } else if (line.identify->parsed()) {
        runIdentify(line.unitOptions, line.identifyOptions, out);
    } else if (line.list->parsed()) {
        runList(line.unitOptions, out);
    } else if (line.remove->parsed()) {
        runDelete(line.unitOptions, line.deleteOptions, out);
    } else {
        line.demoOptions.storeGiven = line.store->count() > 0;
        runDemoCommand(line.unitOptions, line.demoOptions, out);
    }
    return ExitStatus::kDone;
}

ExitStatus parseAndRun(CommandLine& line,
                       std::vector<std::string> arguments,
                       std::ostream& out,
                       std::ostream& err) {
    try {
        std::reverse(arguments.begin(), arguments.end());  // the order in which parse takes them
        line.app.parse(arguments);
    } catch (const CLI::Success& asked) {  // --help, --version
        line.app.exit(asked, out, err);
        return ExitStatus::kDone;
    }
    return runCommand(line, out, err);
}

}  // namespace

ExitStatus runCommandLine(const std::vector<std::string>& arguments,
                          std::ostream& out,
                          std::ostream& err) {
    CommandLine line;
    describe(line);
    try {
        const ExitStatus end = parseAndRun(line, arguments, out, err);
        if (!out.flush()) {
            throw OutputError();
        }
        return end;
    } catch (const CLI::ParseError& error) {
        complain(err, std::string(error.what()) + ": see orl-unit --help");
        return ExitStatus::kWrongUsage;
    } catch (const CommandError& error) {
        complain(err, error.what());
        return ExitStatus::kFailed;
    }
}

}  // namespace orl::unit
