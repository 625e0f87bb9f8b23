#include "tools/orl_unit/finger_names.h"

#include <algorithm>
#include <array>

#include "platform/wbf.h"

namespace orl::unit {
namespace {

struct FingerName {
    std::uint8_t subFactor;
    std::string_view name;
};

constexpr std::uint8_t kFirstSingleFinger = 1;
constexpr std::uint8_t kLastSingleFinger = 10;

constexpr auto kFingerNames = std::to_array<FingerName>({
    {1, "right-thumb"},      {2, "right-index"},         {3, "right-middle"},
    {4, "right-ring"},       {5, "right-little"},        {6, "left-thumb"},
    {7, "left-index"},       {8, "left-middle"},         {9, "left-ring"},
    {10, "left-little"},     {13, "right-four-fingers"}, {14, "left-four-fingers"},
    {15, "two-thumbs"},      {0xF5, "unspecified-1"},    {0xF6, "unspecified-2"},
    {0xF7, "unspecified-3"}, {0xF8, "unspecified-4"},    {0xF9, "unspecified-5"},
    {0xFA, "unspecified-6"}, {0xFB, "unspecified-7"},    {0xFC, "unspecified-8"},
    {0xFD, "unspecified-9"}, {0xFE, "unspecified-10"},   {WINBIO_SUBTYPE_ANY, "any"},
});

char lowerCase(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool sameName(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
        return lowerCase(a) == lowerCase(b);
    });
}

}  // namespace

std::optional<std::uint8_t> subFactorFromName(std::string_view name) {
    for (const FingerName& known : kFingerNames) {
        if (sameName(known.name, name)) {
            return known.subFactor;
        }
    }
    return std::nullopt;
}

std::string subFactorName(std::uint8_t subFactor) {
    for (const FingerName& known : kFingerNames) {
        if (known.subFactor == subFactor) {
            return std::string(known.name);
        }
    }
    return "sub-factor-" + std::to_string(subFactor);
}

std::string enrollableFingerNames() {
    std::string names;
    for (const FingerName& known : kFingerNames) {
        if (known.subFactor != WINBIO_SUBTYPE_ANY) {
            names += names.empty() ? "" : ", ";
            names += known.name;
        }
    }
    return names;
}

std::string knownFingerNames() {
    return enrollableFingerNames() + ", " + subFactorName(WINBIO_SUBTYPE_ANY);
}

bool isSingleFinger(std::uint8_t position) {
    return position >= kFirstSingleFinger && position <= kLastSingleFinger;
}

}  // namespace orl::unit
