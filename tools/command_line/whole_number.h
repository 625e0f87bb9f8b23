#pragma once

// Whole numbers of the command line, read more strictly than the parser reads them: it takes an
// empty word for 0, a leading 0 for base 8, and a number below or above the type's range for one
// within.

#include <charconv>
#include <limits>
#include <string>

#include <CLI/CLI.hpp>

namespace orl::tools {

// For an option's transform(): takes decimal digits, after a minus where `low` is negative, that
// say a number of low..high, and hands it on without leading zeros. Refuses everything else, with
// the reason.
template <typename Number>
CLI::Validator wholeNumber(Number low = std::numeric_limits<Number>::min(),
                           Number high = std::numeric_limits<Number>::max()) {
    const std::string range = std::to_string(low) + " to " + std::to_string(high);
    const auto read = [low, high, range](std::string& word) -> std::string {
        Number number{};
        const char* const end = word.data() + word.size();
        const auto [last, error] = std::from_chars(word.data(), end, number);
        if (error != std::errc{} || last != end || number < low || number > high) {
            return "'" + word + "' is not a whole number from " + range;
        }
        word = std::to_string(number);
        return {};
    };
    using Limits = std::numeric_limits<Number>;
    const bool isLimited = low != Limits::min() || high != Limits::max();
    return CLI::Validator(read, isLimited ? range : std::string(), "whole number");
}

}  // namespace orl::tools
