#pragma once

// Stands in for the matcher's call surface: a program that links fake_matcher.cpp gets its
// ORLFingerMatcher_ functions from there. It records what it is given and answers as told.

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace orl::test {

struct MatchAnswer {
    std::int32_t status = 0;
    std::int32_t matched = 0;
    std::uint16_t score = 0;
    std::function<void()> raise = {};  // called instead of answering, to throw
};

struct MatchCall {
    std::vector<std::uint8_t> probe;
    std::vector<std::uint8_t> candidate;
    std::int32_t threshold;
    std::int32_t errorTextSize;
    bool errorTextWasZero;
};

struct FakeMatcher {
    bool initialized = false;
    std::int32_t initializeStatus = 0;
    std::string initializeText;                  // written to the error buffer on failure
    std::function<void()> initializeRaise = {};  // called before initialising, to throw
    std::deque<MatchAnswer> answers;             // for the coming matches; no match when empty

    std::vector<MatchCall> matches;
    int initializations = 0;  // calls, failed ones included
    int shutdowns = 0;
    std::int32_t initializeErrorTextSize = 0;
    bool initializeErrorTextWasZero = false;
};

// The one fake of the program. Assign {} to reset it.
FakeMatcher& TheFakeMatcher();

}  // namespace orl::test
