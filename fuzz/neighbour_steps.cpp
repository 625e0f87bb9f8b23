#include <iterator>
#include <new>
#include <stdexcept>

#include "fuzz/engine_steps.h"
#include "fuzz/read_records.h"
#include "tests/adapter/fake_matcher.h"
#include "tests/adapter/watched_new.h"
#include "tests/support/counting_heap.h"

namespace orl::fuzz {
namespace {

using orl::test::CountingHeap;
using orl::test::TheFakeMatcher;
using orl::test::WatchedNew;

constexpr std::size_t kMostRecords = 6;  // in the storage at a time

orl::test::MatchAnswer FakeAnswer(Comparison comparison) {
    switch (comparison) {
        case Comparison::kMatch:
            return {.status = 0, .matched = 1, .score = 400};
        case Comparison::kNoMatch:
            return {.status = 0, .matched = 0, .score = 20};
        case Comparison::kFailedStatus:
            return {.status = 3, .matched = 1, .score = 999};
        case Comparison::kStandardException:
            return {.matched = 1, .raise = [] { throw std::runtime_error("not triangulation"); }};
        case Comparison::kOtherException:
            break;
    }
    return {.matched = 1, .raise = [] { throw 7; }};
}

}  // namespace

void SwitchStorage(ModelledUnit& unit, InputReader& /*input*/) {
    unit.ConnectStorage(!unit.model.hasStorage);
}

void ScriptRecords(ModelledUnit& unit, InputReader& input) {
    unit.storage.records.clear();
    const std::size_t count = input.Below(kMostRecords + 1);
    for (std::size_t i = 0; i < count; ++i) {
        unit.storage.records.push_back(ReadRecord(input));
    }
    unit.model.storage.records = unit.storage.records;
}

void ScriptAnswers(ModelledUnit& unit, InputReader& input) {
    constexpr HRESULT kAnswers[] = {S_OK,
                                    S_OK,
                                    S_FALSE,
                                    WINBIO_I_MORE_DATA,
                                    WINBIO_E_DATABASE_NO_RESULTS,
                                    WINBIO_E_DATABASE_NO_MORE_RECORDS,
                                    WINBIO_E_DATABASE_CORRUPTED,
                                    WINBIO_E_DUPLICATE_ENROLLMENT,
                                    E_OUTOFMEMORY};
    const std::size_t count = input.Below(16);
    unit.storage.answers.clear();
    for (std::size_t i = 0; i < count; ++i) {
        unit.storage.answers.push_back(kAnswers[input.Below(std::size(kAnswers))]);
    }
    unit.model.storage.answers = unit.storage.answers;
}

void ScriptMatcher(ModelledUnit& unit, InputReader& input) {
    auto& fake = TheFakeMatcher();
    fake.answers.clear();
    unit.model.comparisons.clear();
    const std::size_t count = input.Below(8);
    for (std::size_t i = 0; i < count; ++i) {
        const auto comparison = static_cast<Comparison>(input.Below(5));
        unit.model.comparisons.push_back(comparison);
        fake.answers.push_back(FakeAnswer(comparison));
    }
    unit.model.initialization = static_cast<Initialization>(input.Below(3));
    fake.initializeStatus = unit.model.initialization == Initialization::kFails ? 3 : 0;
    fake.initializeText = "the matcher's reason";
    fake.initializeRaise = nullptr;
    if (unit.model.initialization == Initialization::kThrows) {
        fake.initializeRaise = [] { throw std::bad_alloc(); };
    }
}

void FailProcessHeap(ModelledUnit& unit, InputReader& input) {
    const std::size_t successes = input.Below(4);
    CountingHeap::FailAfter(successes);
    unit.model.processHeap.FailAfter(successes);
}

void FailGeneralHeap(ModelledUnit& unit, InputReader& input) {
    const std::size_t successes = input.Below(4);
    WatchedNew::FailNothrowAfter(successes);
    unit.model.generalHeap.FailAfter(successes);
}

}  // namespace orl::fuzz
