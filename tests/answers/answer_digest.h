#pragma once

// Answers summed up so that a change in any of them shows: a digest of all whole-number figures,
// and the sum of each fractional figure's sizes.

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/answers/answer.h"
#include "tests/answers/record_pairs.h"

namespace orl::test {

// FNV-1a, 64 bits: a checksum against accidents.
class Fnv1a {
  public:
    void Add(std::span<const std::uint8_t> bytes);
    void Add(std::string_view text);

    // 16 hexadecimal digits.
    std::string Text() const;

  private:
    void AddByte(std::uint8_t byte);

    std::uint64_t state_ = 0xCBF29CE484222325U;  // the published offset basis
};

class AnswerDigest {
  public:
    void Add(const Answer& answer);

    std::size_t Answers() const { return answers_; }
    std::size_t Matched() const { return matched_; }
    std::string WholeDigest() const { return whole_.Text(); }

    // One JSON object: how many answers, how many of each status ("thrown" for "not
    // triangulation"), how many matched, the digest of all that is whole, and the sums.
    std::string JsonText(const std::string& name) const;

  private:
    std::size_t answers_ = 0;
    std::size_t matched_ = 0;
    std::map<std::string, std::size_t> statuses_;
    Fnv1a whole_;
    double sums_[kFractions] = {};
};

// The set in lines of JSON: its records' digest, then a digest for each run of 500 answers.
std::vector<std::string> DigestLines(const RecordPairs& set);

}  // namespace orl::test
