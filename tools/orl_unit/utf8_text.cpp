#include "tools/orl_unit/utf8_text.h"

#include <array>
#include <cstddef>

namespace orl::unit {
namespace {

// A row of the table of well-formed sequences: lead bytes first..last are followed by one byte in
// secondFirst..secondLast and, for longer sequences, by further bytes 80..BF.
struct SequenceForm {
    unsigned char first;
    unsigned char last;
    std::size_t byteCount;
    unsigned char secondFirst;
    unsigned char secondLast;
};

constexpr auto kForms = std::to_array<SequenceForm>({
    {0x00, 0x7F, 1, 0x00, 0x00},
    {0xC2, 0xDF, 2, 0x80, 0xBF},
    {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F},
    {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF},
    {0xF4, 0xF4, 4, 0x80, 0x8F},
});
constexpr unsigned char kContinuationFirst = 0x80;
constexpr unsigned char kContinuationLast = 0xBF;

bool isWithin(char letter, unsigned char first, unsigned char last) {
    const auto byte = static_cast<unsigned char>(letter);
    return byte >= first && byte <= last;
}

bool fits(std::string_view sequence, const SequenceForm& form) {
    if (!isWithin(sequence[0], form.first, form.last) || sequence.size() < form.byteCount) {
        return false;
    }
    if (form.byteCount >= 2 && !isWithin(sequence[1], form.secondFirst, form.secondLast)) {
        return false;
    }
    for (std::size_t i = 2; i < form.byteCount; ++i) {
        if (!isWithin(sequence[i], kContinuationFirst, kContinuationLast)) {
            return false;
        }
    }
    return true;
}

// The length of the sequence that text begins with; 0 when it is ill-formed.
std::size_t sequenceBytes(std::string_view text) {
    for (const SequenceForm& form : kForms) {
        if (fits(text, form)) {
            return form.byteCount;
        }
    }
    return 0;
}

}  // namespace

bool isWellFormedUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t byteCount = sequenceBytes(text);
        if (byteCount == 0) {
            return false;
        }
        text.remove_prefix(byteCount);
    }
    return true;
}

}  // namespace orl::unit
