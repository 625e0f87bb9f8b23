#include "tests/answers/answer_digest.h"

#include <cmath>
#include <cstdio>

#include <nlohmann/json.hpp>

namespace orl::test {
namespace {

constexpr std::size_t kAnswersALine = 500;

std::string RecordsLine(const RecordPairs& set) {
    Fnv1a digest;
    for (const std::vector<std::uint8_t>& record : set.records) {
        digest.Add(record);
        digest.Add("\n");
    }
    nlohmann::ordered_json line;
    line["records"] = set.name;
    line["count"] = set.records.size();
    line["bytes"] = digest.Text();
    return line.dump();
}

}  // namespace

void Fnv1a::AddByte(std::uint8_t byte) {
    constexpr std::uint64_t kPrime = 0x100000001B3U;
    state_ = (state_ ^ byte) * kPrime;
}

void Fnv1a::Add(std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        AddByte(byte);
    }
}

void Fnv1a::Add(std::string_view text) {
    for (const char letter : text) {
        AddByte(static_cast<std::uint8_t>(letter));
    }
}

std::string Fnv1a::Text() const {
    constexpr std::size_t kDigits = 16;
    char text[kDigits + 1];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(state_));
    return text;
}

void AnswerDigest::Add(const Answer& answer) {
    ++answers_;
    matched_ += answer.result.decision;
    ++statuses_[answer.triangulated ? std::to_string(answer.result.status) : "thrown"];
    whole_.Add(WholeTextOf(answer));
    whole_.Add("\n");
    const std::vector<float> fractions = FractionsOf(answer);
    for (std::size_t i = 0; i < kFractions; ++i) {
        sums_[i] += std::abs(static_cast<double>(fractions[i]));
    }
}

std::string AnswerDigest::JsonText(const std::string& name) const {
    nlohmann::ordered_json line;
    line["answers"] = name;
    line["count"] = answers_;
    line["statuses"] = statuses_;
    line["matched"] = matched_;
    line["whole"] = whole_.Text();
    for (std::size_t i = 0; i < kFractions; ++i) {
        line[kFractionNames[i]] = sums_[i];
    }
    return line.dump();
}

std::vector<std::string> DigestLines(const RecordPairs& set) {
    std::vector<std::string> lines{RecordsLine(set)};
    AnswerDigest digest;
    ForEachAnswer(set, [&](const Answer& answer) {
        digest.Add(answer);
        if (digest.Answers() == kAnswersALine) {
            lines.push_back(digest.JsonText(set.name));
            digest = {};
        }
    });
    if (digest.Answers() > 0) {
        lines.push_back(digest.JsonText(set.name));
    }
    return lines;
}

}  // namespace orl::test
