#include "tests/answers/answer.h"

#include <charconv>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "matcher/api/match_facade.h"

namespace orl::test {
namespace {

constexpr std::int32_t kDefaultThreshold = 300;
constexpr std::string_view kNotTriangulation = "not triangulation";
constexpr char kMessageMark = ':';

std::string TextOf(float number) {
    constexpr std::size_t kLongestNumber = 64;
    char text[kLongestNumber];
    const auto end = std::to_chars(text, text + kLongestNumber, number);
    return {text, end.ptr};
}

bool ReadNumber(std::istream& in, float& number) {
    std::string text;
    in >> text;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return !text.empty() && read.ec == std::errc() && read.ptr == end;
}

bool ReadFractions(std::istream& in, matcher::TemplateMatchResult& result) {
    return ReadNumber(in, result.rotationDegrees) && ReadNumber(in, result.distanceMedian) &&
           ReadNumber(in, result.angleMedian) && ReadNumber(in, result.coverage) &&
           ReadNumber(in, result.matchedRatio);
}

}  // namespace

Answer AnswerTo(std::string pair,
                std::span<const std::uint8_t> probe,
                std::span<const std::uint8_t> candidate) {
    Answer answer{.pair = std::move(pair)};
    try {
        matcher::matchBuffers(probe.data(),
                              probe.size(),
                              candidate.data(),
                              candidate.size(),
                              answer.result,
                              answer.message,
                              kDefaultThreshold);
    } catch (const std::runtime_error& error) {
        if (error.what() != kNotTriangulation) {
            throw;
        }
        answer = {.pair = std::move(answer.pair), .triangulated = false};
    }
    return answer;
}

std::vector<float> FractionsOf(const Answer& answer) {
    const matcher::TemplateMatchResult& result = answer.result;
    return {result.rotationDegrees,
            result.distanceMedian,
            result.angleMedian,
            result.coverage,
            result.matchedRatio};
}

std::string WholeTextOf(const Answer& answer) {
    const matcher::TemplateMatchResult& result = answer.result;
    std::ostringstream out;
    out << answer.pair << ' ' << answer.triangulated << ' ' << result.status << ' '
        << result.decision << ' ' << result.score << ' ' << result.threshold << ' '
        << result.fingerAgreement << ' ' << result.firstFingerIndex << ' '
        << result.secondFingerIndex << ' ' << result.pairCount << ' ' << result.matchedCount << ' '
        << result.orientation << ' ' << result.refined << ' ' << kMessageMark << answer.message;
    return out.str();
}

std::string LineOf(const Answer& answer) {
    std::string line;
    for (const float fraction : FractionsOf(answer)) {
        line += TextOf(fraction) + ' ';
    }
    return line + WholeTextOf(answer);
}

Answer AnswerOfLine(const std::string& line) {
    std::istringstream in(line);
    Answer answer;
    matcher::TemplateMatchResult& result = answer.result;
    std::string set;
    std::string probe;
    std::string candidate;
    char mark = 0;
    if (!ReadFractions(in, result) ||
        !(in >> set >> probe >> candidate >> answer.triangulated >> result.status >>
          result.decision >> result.score >> result.threshold >> result.fingerAgreement >>
          result.firstFingerIndex >> result.secondFingerIndex >> result.pairCount >>
          result.matchedCount >> result.orientation >> result.refined >> mark) ||
        mark != kMessageMark) {
        throw std::runtime_error("no answer: " + line);
    }
    answer.pair = set + ' ' + probe + ' ' + candidate;
    std::getline(in, answer.message);
    return answer;
}

}  // namespace orl::test
