// The first matches of a process, all at once: every table that is built on its first use is built
// while several threads wait for it.

#include <array>
#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/api/match_facade.h"
#include "tests/support/record_builder.h"

namespace orl::matcher {
namespace {

constexpr std::size_t kThreads = 8;

TemplateMatchResult MatchOnce() {
    constexpr std::int32_t kThreshold = 300;
    const auto probe = test::BuildRecord(test::RandomMinutiae(91, 40));
    auto part = test::RandomMinutiae(91, 40);
    part.resize(30);
    const auto candidate = test::BuildRecord(part);
    TemplateMatchResult result;
    std::string message;
    matchBuffers(probe.data(),
                 probe.size(),
                 candidate.data(),
                 candidate.size(),
                 result,
                 message,
                 kThreshold);
    return result;
}

TEST(FirstMatch, IsTheSameOnThreadsThatAllBeginWithItAsOnOneLater) {
    std::array<TemplateMatchResult, kThreads> results;
    std::atomic<std::size_t> ready{0};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (TemplateMatchResult& mine : results) {
        threads.emplace_back([&ready, &mine] {
            ++ready;
            while (ready.load() < kThreads) {
                std::this_thread::yield();
            }
            mine = MatchOnce();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const TemplateMatchResult later = MatchOnce();
    EXPECT_GT(later.score, 0);
    for (const TemplateMatchResult& result : results) {
        EXPECT_EQ(result, later);
    }
}

}  // namespace
}  // namespace orl::matcher
