// orl-finger: the matcher at the command line.

#include <algorithm>
#include <exception>
#include <iostream>

#include <CLI/CLI.hpp>

#include "tools/command_line/exit_status.h"
#include "tools/command_line/standard_streams.h"
#include "tools/command_line/whole_number.h"
#include "tools/orl_finger/complaint.h"
#include "tools/orl_finger/generate_command.h"
#include "tools/orl_finger/inspect_command.h"
#include "tools/orl_finger/match_command.h"

namespace orl::tools {
namespace {

struct CommandLine {
    CLI::App app{"Matches, inspects and makes ISO/IEC 19794-2 finger minutiae records."};
    CLI::App* match = nullptr;
    CLI::App* inspect = nullptr;
    CLI::App* generate = nullptr;
    MatchOptions matchOptions;
    InspectOptions inspectOptions;
    GenerateOptions generateOptions;
};

void describeMatch(CommandLine& line) {
    MatchOptions& options = line.matchOptions;
    line.match = line.app.add_subcommand("match", "Compare two records, or many pairs of them");
    CLI::Option* probe = line.match->add_option("PROBE", options.probe, "The one record");
    CLI::Option* candidate =
        line.match->add_option("CANDIDATE", options.candidate, "The other record");
    CLI::Option* pairs = line.match->add_option(
        "--pairs", options.pairsFile, "File of PROBE<TAB>CANDIDATE lines; - is standard input");
    pairs->excludes(probe)->excludes(candidate);
    line.match
        ->add_option("--threshold", options.threshold, "Decision threshold (100 or less: tens)")
        ->capture_default_str()
        ->transform(wholeNumber<std::int32_t>());
    line.match->add_flag("--json", options.json, "Print one JSON object a line for each pair");
    line.match->callback([&options] {
        const bool onePair = !options.probe.empty() && !options.candidate.empty();
        if (!onePair && options.pairsFile.empty()) {
            throw CLI::ValidationError("match", "needs PROBE and CANDIDATE, or --pairs FILE");
        }
    });
}

// The parser splits a word in square brackets at its commas where an option takes several words. A
// zero byte before the bracket, which no argument holds, keeps the word whole.
std::string hideBracket(const std::string& word) {
    return word.starts_with('[') ? std::string(1, '\0') + word : word;
}

std::string unhideBracket(std::string& word) {
    if (word.starts_with('\0')) {
        word.erase(0, 1);
    }
    return {};
}

void describeInspect(CommandLine& line) {
    InspectOptions& options = line.inspectOptions;
    line.inspect = line.app.add_subcommand(
        "inspect", "Show the minutiae, triangulation and triangles of records");
    line.inspect->add_option("RECORD", options.records, "Records to show")
        ->required()
        ->transform(CLI::Validator(unhideBracket, ""));
    line.inspect->add_flag("--json", options.json, "Print one JSON object a line for each record");
}

void describeGenerate(CommandLine& line) {
    GenerateOptions& options = line.generateOptions;
    line.generate = line.app.add_subcommand("generate", "Write synthetic records to a folder");
    line.generate->add_option("DIR", options.directory, "The folder, made when missing")
        ->required();
    line.generate->add_option("--fingers", options.fingers, "Number of fingers")
        ->required()
        ->transform(wholeNumber(1, kMostFingers));
    line.generate->add_option("--impressions", options.impressions, "Impressions of each finger")
        ->required()
        ->transform(wholeNumber(1, kMostImpressions));
    line.generate->add_option("--seed", options.seed, "The same seed gives the same records")
        ->required()
        ->transform(wholeNumber<std::uint64_t>());
}

void describe(CommandLine& line) {
    line.app.name("orl-finger");
    line.app.set_version_flag("--version", "orl-finger " ORL_VERSION);
    line.app.require_subcommand(0, 1);
    line.app.final_callback([&line] {
        if (line.app.get_subcommands().empty()) {
            throw CLI::RequiredError("match, inspect or generate");
        }
    });
    // On Windows too, a word that begins with "/" is a file's name.
    line.app.allow_windows_style_options(false);
    describeMatch(line);
    describeInspect(line);
    describeGenerate(line);
}

ExitStatus runCommand(const CommandLine& line) {
    if (line.match->parsed()) {
        return runMatch(line.matchOptions, std::cout, std::cerr);
    }
    if (line.generate->parsed()) {
        return runGenerate(line.generateOptions, std::cout, std::cerr);
    }
    return runInspect(line.inspectOptions, std::cout, std::cerr);
}

void parse(CommandLine& line, std::vector<std::string> arguments) {
    if (!arguments.empty() && arguments.front() == "inspect") {
        std::transform(arguments.begin(), arguments.end(), arguments.begin(), hideBracket);
    }
    std::reverse(arguments.begin(), arguments.end());  // the order in which the parser takes them
    line.app.parse(arguments);
}

ExitStatus run(const std::vector<std::string>& arguments) {
    CommandLine line;
    describe(line);
    ExitStatus end = ExitStatus::kDone;
    try {
        parse(line, arguments);
        end = runCommand(line);
    } catch (const CLI::Success& asked) {  // --help, --version
        line.app.exit(asked, std::cout, std::cerr);
    } catch (const CLI::ParseError& error) {
        complain(std::cerr, error.what(), "see orl-finger --help");
        return ExitStatus::kWrongUsage;
    }
    if (!std::cout.flush()) {
        complain(std::cerr, "standard output", "could not be written");
        return ExitStatus::kFailed;
    }
    return end;
}

}  // namespace
}  // namespace orl::tools

int main(int argc, char** argv) {
    using orl::tools::ExitStatus;
    ExitStatus end = ExitStatus::kFailed;
    try {
        orl::tools::prepareStandardStreams();
        end = orl::tools::run(orl::tools::argumentsAsUtf8(argc, argv));
    } catch (const std::exception& error) {
        orl::tools::complain(std::cerr, "stopped", error.what());
    }
    return static_cast<int>(end);
}
