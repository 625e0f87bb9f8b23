#include "tools/orl_finger/match_command.h"

#include <exception>
#include <sstream>
#include <vector>

#include "matcher/api/match_facade.h"
#include "tools/orl_finger/match_report.h"
#include "tools/orl_finger/record_file.h"

namespace orl::tools {
namespace {

matcher::TemplateMatchResult zeroResult() {
    matcher::TemplateMatchResult result;
    result.threshold = 0;
    result.fingerAgreement = false;
    return result;
}

MatchReport matchRecords(const std::string& probeName,
                         const std::vector<std::uint8_t>& probe,
                         const std::string& candidateName,
                         const std::vector<std::uint8_t>& candidate,
                         std::int32_t threshold) {
    MatchReport report;
    report.probe = probeName;
    report.candidate = candidateName;
    try {
        report.status = matcher::matchBuffers(probe.data(),
                                              probe.size(),
                                              candidate.data(),
                                              candidate.size(),
                                              report.result,
                                              report.message,
                                              threshold);
    } catch (const std::exception& error) {
        report.status = kExceptionStatus;
        report.message = error.what();
        report.result = zeroResult();
    }
    return report;
}

bool readRecord(const std::string& name, std::vector<std::uint8_t>& bytes, std::ostream& err) {
    std::string reason;
    if (readFile(name, bytes, reason)) {
        return true;
    }
    complain(err, name, reason);
    return false;
}

ExitStatus matchPair(const std::string& probeName,
                     const std::string& candidateName,
                     const MatchOptions& options,
                     std::ostream& out,
                     std::ostream& err) {
    std::vector<std::uint8_t> probe;
    std::vector<std::uint8_t> candidate;
    if (!readRecord(probeName, probe, err) || !readRecord(candidateName, candidate, err)) {
        return ExitStatus::kUnusable;
    }
    const MatchReport report =
        matchRecords(probeName, probe, candidateName, candidate, options.threshold);
    if (options.json) {
        out << jsonFromReport(report) << '\n';
    } else {
        out << textFromReport(report);
    }
    if (report.status == 0) {
        return ExitStatus::kDone;
    }
    complain(err, subjectOfFailure(report), report.message);
    return ExitStatus::kUnusable;
}

// Splits PROBE<TAB>CANDIDATE; false when there is not exactly one tab with text on both sides.
bool splitPair(const std::string& line, std::string& probe, std::string& candidate) {
    const std::size_t tab = line.find('\t');
    if (tab == std::string::npos || line.find('\t', tab + 1) != std::string::npos) {
        return false;
    }
    probe = line.substr(0, tab);
    candidate = line.substr(tab + 1);
    return !probe.empty() && !candidate.empty();
}

ExitStatus matchPairs(std::istream& pairs,
                      const std::string& pairsName,
                      const MatchOptions& options,
                      std::ostream& out,
                      std::ostream& err) {
    ExitStatus end = ExitStatus::kDone;
    std::string line;
    for (std::size_t lineNumber = 1; std::getline(pairs, line); ++lineNumber) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        if (line.empty()) {
            continue;
        }
        std::string probe;
        std::string candidate;
        if (splitPair(line, probe, candidate)) {
            end = worse(end, matchPair(probe, candidate, options, out, err));
        } else {
            complain(
                err, pairsName + ":" + std::to_string(lineNumber), "expected PROBE<TAB>CANDIDATE");
            end = ExitStatus::kUnusable;
        }
    }
    return end;
}

}  // namespace

ExitStatus runMatch(const MatchOptions& options,
                    std::istream& in,
                    std::ostream& out,
                    std::ostream& err) {
    if (options.pairsFile.empty()) {
        return matchPair(options.probe, options.candidate, options, out, err);
    }
    if (options.pairsFile == "-") {
        return matchPairs(in, "standard input", options, out, err);
    }
    std::vector<std::uint8_t> bytes;
    if (!readRecord(options.pairsFile, bytes, err)) {
        return ExitStatus::kUnusable;
    }
    std::istringstream pairs(std::string(bytes.begin(), bytes.end()));
    return matchPairs(pairs, options.pairsFile, options, out, err);
}

}  // namespace orl::tools
