#include "tools/orl_finger/match_command.h"

#include <exception>
#include <vector>

#include "matcher/api/match_facade.h"
#include "tools/command_line/text_lines.h"
#include "tools/orl_finger/complaint.h"
#include "tools/orl_finger/file_bytes.h"
#include "tools/orl_finger/match_report.h"

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

ExitStatus matchPair(const std::string& probeName,
                     const std::string& candidateName,
                     const MatchOptions& options,
                     std::ostream& out,
                     std::ostream& err) {
    std::vector<std::uint8_t> probe;
    std::vector<std::uint8_t> candidate;
    if (!readOrComplain(probeName, probe, err) || !readOrComplain(candidateName, candidate, err)) {
        return ExitStatus::kFailed;
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
    return ExitStatus::kFailed;
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

ExitStatus matchPairs(TextLines& pairs,
                      const MatchOptions& options,
                      std::ostream& out,
                      std::ostream& err) {
    ExitStatus end = ExitStatus::kDone;
    for (std::string line; pairs.next(line);) {
        if (line.empty()) {
            continue;
        }
        std::string probe;
        std::string candidate;
        if (splitPair(line, probe, candidate)) {
            end = worse(end, matchPair(probe, candidate, options, out, err));
        } else {
            complain(err,
                     pairs.name() + ":" + std::to_string(pairs.number()),
                     "expected PROBE<TAB>CANDIDATE");
            end = ExitStatus::kFailed;
        }
    }
    if (!pairs.failure().empty()) {
        complain(err, pairs.name(), pairs.failure());
        end = ExitStatus::kFailed;
    }
    return end;
}

}  // namespace

ExitStatus runMatch(const MatchOptions& options, std::ostream& out, std::ostream& err) {
    if (options.pairsFile.empty()) {
        return matchPair(options.probe, options.candidate, options, out, err);
    }
    TextLines pairs(options.pairsFile);
    return matchPairs(pairs, options, out, err);
}

}  // namespace orl::tools
