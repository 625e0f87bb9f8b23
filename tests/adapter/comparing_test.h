#pragma once

// What the tests of all calls that compare a record with stored ones share: records to store, and
// the matcher's answers.

#include <cstdint>
#include <utility>

#include "tests/adapter/adapter_test.h"

namespace orl::test {

// A unit with a ready matcher.
class ComparingTest : public UnitTest {
  protected:
    void SetUp() override {
        UnitTest::SetUp();
        TheFakeMatcher().initialized = true;
    }

    // Stores a record of 4 minutiae.
    void Store(std::uint32_t identity, WINBIO_BIOMETRIC_SUBTYPE subFactor, std::uint8_t filler) {
        TheUnit().storage.records.push_back({.identity = IdentityNumber(identity),
                                             .subFactor = subFactor,
                                             .templateBlob = BirOf(4, filler)});
    }

    // The matcher's answer to its next call that has none yet.
    static void Answer(MatchAnswer answer) {
        TheFakeMatcher().answers.push_back(std::move(answer));
    }
};

}  // namespace orl::test
