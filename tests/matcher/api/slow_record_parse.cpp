#include "tests/matcher/api/slow_record_parse.h"

#include <cmath>
#include <stdexcept>

namespace orl::matcher {
namespace {

// Bytes by position; std::out_of_range beyond the end.
unsigned ByteAt(const std::vector<std::uint8_t>& record, std::size_t at) {
    return record.at(at);
}

unsigned WordAt(const std::vector<std::uint8_t>& record, std::size_t at) {
    return 256 * ByteAt(record, at) + ByteAt(record, at + 1);
}

bool HasSoundHeader(const std::vector<std::uint8_t>& record) {
    if (record.size() < 24) {
        return false;
    }
    const bool isRecord = record[0] == 'F' && record[1] == 'M' && record[2] == 'R' &&
                          record[3] == 0 && record[4] == ' ' && record[5] == '2' &&
                          record[6] == '0' && record[7] == 0;
    const std::uint64_t length = 65536ULL * WordAt(record, 8) + WordAt(record, 10);
    return isRecord && length == record.size();
}

Minutia SlowMinutia(const std::vector<std::uint8_t>& record, std::size_t at) {
    const unsigned x = WordAt(record, at);
    const unsigned y = WordAt(record, at + 2);
    // 256 steps a turn, reversed; 360/256 is exact in binary, so nothing is rounded here.
    const double degrees = std::floor(360.0 - ByteAt(record, at + 4) * 360.0 / 256.0);
    ByteAt(record, at + 5);  // the quality byte must be there, too
    return {.type = x / 16384,
            .x = static_cast<std::uint16_t>(x % 16384),
            .y = static_cast<std::uint16_t>(y % 16384),
            .angle = static_cast<std::uint16_t>(degrees)};
}

// The minutiae of the view at `at`, which moves behind it.
MinutiaList SlowView(const std::vector<std::uint8_t>& record, std::size_t& at) {
    const std::size_t count = ByteAt(record, at + 3);
    MinutiaList all;
    for (std::size_t i = 0; i < count; ++i) {
        all.push_back(SlowMinutia(record, at + 4 + 6 * i));
    }
    if (all.size() > 128) {
        all.resize(128);
    }
    const std::size_t extended = WordAt(record, at + 4 + 6 * count);
    at += 6 + 6 * count + extended;
    if (at > record.size()) {
        throw std::out_of_range("extended data");
    }
    return all;
}

}  // namespace

std::optional<SlowRecord> SlowParse(const std::vector<std::uint8_t>& record) {
    if (!HasSoundHeader(record) || record.size() > 6200) {
        return std::nullopt;
    }
    SlowRecord result;
    result.imageSize = {.width = static_cast<std::uint16_t>(WordAt(record, 14)),
                        .height = static_cast<std::uint16_t>(WordAt(record, 16))};
    std::size_t at = 24;
    try {
        for (unsigned view = 0; view < record[22]; ++view) {
            result.fingers.push_back(SlowView(record, at));
        }
    } catch (const std::out_of_range&) {
        return std::nullopt;
    }
    if (!result.fingers.empty() && WordAt(record, 14) == 0 && WordAt(record, 16) == 0) {
        return std::nullopt;
    }
    return result;
}

std::optional<std::vector<std::uint8_t>> SlowScan(const std::vector<std::uint8_t>& record) {
    if (!HasSoundHeader(record)) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> positions;
    std::size_t at = 24;
    try {
        while (positions.size() < record[20] && at + 4 <= record.size()) {
            positions.push_back(record[at]);
            SlowView(record, at);
        }
    } catch (const std::out_of_range&) {
        return std::nullopt;
    }
    return positions;
}

}  // namespace orl::matcher
