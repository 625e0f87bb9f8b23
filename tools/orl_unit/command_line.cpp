#include "tools/orl_unit/command_line.h"

#include <algorithm>
#include <ostream>

#include <CLI/CLI.hpp>

#include "tools/orl_unit/delete_command.h"
#include "tools/orl_unit/demo_command.h"
#include "tools/orl_unit/enroll_command.h"
#include "tools/orl_unit/identify_command.h"
#include "tools/orl_unit/list_command.h"
#include "tools/orl_unit/verify_command.h"

namespace orl::unit {
namespace {

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

void describeUnit(CommandLine& line) {
    UnitOptions& options = line.unitOptions;
    options.store = defaultStore();
    line.app.add_option(
        "--module", options.module, "Engine adapter module; default: the one built beside");
    line.store = line.app.add_option("--store", options.store, "Store file, or :memory:")
                     ->capture_default_str()
                     ->check([](const std::string& path) {
                         return path.empty() ? "needs a file name" : std::string();
                     });
    line.app.add_flag("--read-only", options.readOnly, "Open the store without ever changing it");
    line.app
        .add_option("--wait", options.lockWaitSeconds, "Seconds to wait for a store that is in use")
        ->capture_default_str()
        ->check(CLI::Range(0.0, kMaxLockWaitSeconds));
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
    line.demo->add_option(
        "--data", options.folder, "Folder of FINGER_IMPRESSION.fmr; default: the samples");
    line.demo->add_option("--impostors", options.impostorLimit, "Most impostor comparisons to make")
        ->capture_default_str();
}

void describe(CommandLine& line) {
    line.app.name("orl-unit");
    line.app.set_version_flag("--version", "orl-unit " ORL_VERSION);
    line.app.require_subcommand(1);
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
        return allDone ? ExitStatus::Done : ExitStatus::Failed;
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
    return ExitStatus::Done;
}

}  // namespace

void complain(std::ostream& err, const std::string& reason) {
    err << "orl-unit: " << reason << '\n';
}

ExitStatus runCommandLine(std::vector<std::string> arguments,
                          std::ostream& out,
                          std::ostream& err) {
    CommandLine line;
    describe(line);
    try {
        std::reverse(arguments.begin(), arguments.end());  // the order in which parse takes them
        line.app.parse(arguments);
    } catch (const CLI::ParseError& end) {
        const bool asked = line.app.exit(end, out, err) == 0;  // --help, --version
        return asked ? ExitStatus::Done : ExitStatus::WrongUsage;
    }
    try {
        const ExitStatus end = runCommand(line, out, err);
        if (!out.flush()) {
            throw CommandError("standard output could not be written");
        }
        return end;
    } catch (const CommandError& error) {
        complain(err, error.what());
        return ExitStatus::Failed;
    }
}

}  // namespace orl::unit
