// Matches on several threads while others initialise and shut down. Meant for ThreadSanitizer as
// much as for its own assertions.

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <latch>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/api/finger_matcher.h"
#include "tests/support/record_builder.h"

namespace {

using orl::test::BuildRecord;
using orl::test::RandomMinutiae;
using Bytes = std::vector<std::uint8_t>;

constexpr int kMatchThreads = 8;
constexpr int kMatchesPerThread = 12;

struct Pair {
    Bytes probe;
    Bytes candidate;
    MatchResult expected;
};

std::int32_t MatchPair(const Pair& pair, MatchResult& result, char (&text)[64]) {
    return ORLFingerMatcher_Match(pair.probe.data(),
                                  static_cast<std::int32_t>(pair.probe.size()),
                                  pair.candidate.data(),
                                  static_cast<std::int32_t>(pair.candidate.size()),
                                  0,
                                  &result,
                                  text,
                                  sizeof text);
}

// Pairs of different records, with what each gives on one thread.
std::vector<Pair> PairsWithResults() {
    std::vector<Pair> pairs;
    for (const std::uint32_t seed : {71U, 72U, 73U}) {
        const Bytes whole = BuildRecord(RandomMinutiae(seed, 30));
        auto part = RandomMinutiae(seed, 30);
        part.resize(20);
        pairs.push_back({.probe = whole, .candidate = BuildRecord(part), .expected = {}});
    }
    char text[64];
    for (Pair& pair : pairs) {
        EXPECT_EQ(MatchPair(pair, pair.expected, text), 0);
        EXPECT_GT(pair.expected.Score, 0);
    }
    return pairs;
}

// Runs each task on a thread of its own; none begins before all threads are there.
void RunTogether(const std::vector<std::function<void()>>& tasks) {
    std::latch ready(static_cast<std::ptrdiff_t>(tasks.size()));
    std::vector<std::thread> threads;
    threads.reserve(tasks.size());
    for (const auto& task : tasks) {
        threads.emplace_back([&ready, &task] {
            ready.arrive_and_wait();
            task();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(FingerMatcherThreads, MatchAtOnceAsTheyMatchAlone) {
    ORLFingerMatcher_Initialize(nullptr, 0);
    const std::vector<Pair> pairs = PairsWithResults();
    std::atomic<int> wrong = 0;
    const auto match = [&] {
        for (int i = 0; i < kMatchesPerThread; ++i) {
            const Pair& pair = pairs[static_cast<std::size_t>(i) % pairs.size()];
            MatchResult result;
            char text[64];
            const std::int32_t status = MatchPair(pair, result, text);
            const bool isAsExpected = status == 0 && result.Matched == pair.expected.Matched &&
                                      result.Score == pair.expected.Score;
            wrong += isAsExpected ? 0 : 1;
        }
    };
    RunTogether(std::vector<std::function<void()>>(kMatchThreads, match));
    EXPECT_EQ(wrong, 0);
    ORLFingerMatcher_Shutdown();
}

// How far threads that match have got beside threads that initialise and shut down. All stop when
// they have seen enough of both, or when their time is over.
struct Progress {
    static constexpr int kOfEachAtLeast = 100;
    static constexpr int kCyclesAtLeast = 1000;

    const std::chrono::steady_clock::time_point end =
        std::chrono::steady_clock::now() + std::chrono::seconds(60);
    std::atomic<int> wrong = 0;
    std::atomic<int> cycles = 0;
    std::atomic<int> matchersWithBoth = 0;  // that were refused and let in so many times

    bool mayStop() const {
        const bool hasSeenAll = matchersWithBoth == kMatchThreads && cycles >= kCyclesAtLeast;
        return hasSeenAll || std::chrono::steady_clock::now() > end;
    }
};

enum class Outcome { kRefused, kMatched, kWrong };

Outcome OutcomeOf(const Pair& pair) {
    MatchResult result;
    char text[64];
    const std::int32_t status = MatchPair(pair, result, text);
    if (status == 10 && result.Score == 0 && result.Matched == 0 &&
        std::string_view(text) == "Call Initialize first.") {
        return Outcome::kRefused;
    }
    const bool isMatched = status == 0 && result.Matched == pair.expected.Matched &&
                           result.Score == pair.expected.Score && text[0] == '\0';
    return isMatched ? Outcome::kMatched : Outcome::kWrong;
}

void MatchUntilAllStop(const std::vector<Pair>& pairs, Progress& progress) {
    int refused = 0;
    int matched = 0;
    const auto hasBoth = [&] {
        return refused >= Progress::kOfEachAtLeast && matched >= Progress::kOfEachAtLeast;
    };
    for (std::size_t i = 0; !progress.mayStop(); ++i) {
        const Outcome outcome = OutcomeOf(pairs[i % pairs.size()]);
        const bool hadBoth = hasBoth();
        progress.wrong += outcome == Outcome::kWrong ? 1 : 0;
        refused += outcome == Outcome::kRefused ? 1 : 0;
        matched += outcome == Outcome::kMatched ? 1 : 0;
        progress.matchersWithBoth += hasBoth() && !hadBoth ? 1 : 0;
        std::this_thread::yield();
    }
}

void InitializeAndShutDownUntilAllStop(Progress& progress) {
    while (!progress.mayStop()) {
        char text[64] = "left over";
        const bool isReady = ORLFingerMatcher_Initialize(text, sizeof text) == 0 && text[0] == '\0';
        progress.wrong += isReady ? 0 : 1;
        std::this_thread::yield();
        ORLFingerMatcher_IsInitialized();
        ORLFingerMatcher_Shutdown();
        ++progress.cycles;
        std::this_thread::yield();
    }
}

TEST(FingerMatcherThreads, MatchOrAreRefusedWhileOthersInitializeAndShutDown) {
    ORLFingerMatcher_Initialize(nullptr, 0);
    const std::vector<Pair> pairs = PairsWithResults();
    Progress progress;
    std::vector<std::function<void()>> tasks(kMatchThreads,
                                             [&] { MatchUntilAllStop(pairs, progress); });
    tasks.insert(tasks.end(), 2, [&] { InitializeAndShutDownUntilAllStop(progress); });
    RunTogether(tasks);
    EXPECT_EQ(progress.wrong, 0);
    EXPECT_EQ(progress.matchersWithBoth, kMatchThreads) << "each was refused and let in some times";
    EXPECT_GE(progress.cycles, Progress::kCyclesAtLeast);
    EXPECT_FALSE(ORLFingerMatcher_IsInitialized());
}

}  // namespace
