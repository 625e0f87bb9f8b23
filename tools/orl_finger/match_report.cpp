#include "tools/orl_finger/match_report.h"

#include "matcher/api/finger_matcher.h"
#include "tools/orl_finger/json_line.h"

namespace orl::tools {
namespace {

bool isMatch(const matcher::TemplateMatchResult& result) {
    constexpr unsigned kDecisionByte = 0xFF;
    return (result.decision & kDecisionByte) != 0;
}

std::string numberText(float value) {
    return JsonLine().number(value).str();
}

}  // namespace

std::string jsonFromReport(const MatchReport& report) {
    const matcher::TemplateMatchResult& result = report.result;
    JsonLine line;
    line.beginObject();
    line.key("probe").text(report.probe);
    line.key("candidate").text(report.candidate);
    line.key("status").number(std::int64_t{report.status});
    line.key("message").text(report.message);
    line.key("matched").boolean(isMatch(result));
    line.key("score").number(std::int64_t{result.score});
    line.key("threshold").number(std::int64_t{result.threshold});
    line.key("fingerAgreement").boolean(result.fingerAgreement);
    line.key("firstFingerIndex").number(static_cast<std::int64_t>(result.firstFingerIndex));
    line.key("secondFingerIndex").number(static_cast<std::int64_t>(result.secondFingerIndex));
    line.key("pairCount").number(std::int64_t{result.pairCount});
    line.key("matchedCount").number(std::int64_t{result.matchedCount});
    line.key("rotationDegrees").number(result.rotationDegrees);
    line.key("orientation").number(std::int64_t{result.orientation});
    line.key("distanceMedian").number(result.distanceMedian);
    line.key("angleMedian").number(result.angleMedian);
    line.key("coverage").number(result.coverage);
    line.key("matchedRatio").number(result.matchedRatio);
    line.key("refined").boolean(result.refined != 0);
    line.endObject();
    return line.str();
}

std::string textFromReport(const MatchReport& report) {
    const matcher::TemplateMatchResult& result = report.result;
    std::string text = report.probe + "  " + report.candidate + "\n";
    if (report.status != 0) {
        return text + "  not compared: " + report.message + "\n";
    }
    text += std::string("  ") + (isMatch(result) ? "MATCH" : "no match") + ", score " +
            std::to_string(result.score) + " of 1000 (threshold " +
            std::to_string(result.threshold) + ")\n";
    text += "  minutiae: " + std::to_string(result.matchedCount) + " of " +
            std::to_string(result.pairCount) + " paired agree, ratio " +
            numberText(result.matchedRatio) + ", coverage " + numberText(result.coverage) + "\n";
    text += "  residuals: " + numberText(result.distanceMedian) + " grid units, " +
            numberText(result.angleMedian) + " degrees\n";
    text += "  alignment: " + numberText(result.rotationDegrees) + " degrees, " +
            std::to_string(result.orientation) + " quarter turns" +
            (result.refined != 0 ? ", refined" : "") + "\n";
    return text;
}

std::string subjectOfFailure(const MatchReport& report) {
    switch (report.status) {
        case ORLFingerMatcher_StatusProbeNotLoaded:
        case ORLFingerMatcher_StatusProbeEmpty:
            return report.probe;
        case ORLFingerMatcher_StatusCandidateNotLoaded:
        case ORLFingerMatcher_StatusCandidateEmpty:
            return report.candidate;
        default:
            return report.probe + ", " + report.candidate;
    }
}

}  // namespace orl::tools
