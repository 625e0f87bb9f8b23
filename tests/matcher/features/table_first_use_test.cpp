#include <array>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/lookup_tables.h"
#include "tests/support/failing_new.h"

namespace orl::matcher {
namespace {

constexpr std::size_t kThreads = 8;

struct FirstLookups {
    std::int16_t bearing = 0;
    std::uint8_t distance = 0;
    float cosine = 0.0F;
    float sine = 0.0F;
    const BearingTable* bearings = nullptr;
    const DistanceTable* distances = nullptr;
    const QuarterTurnBearings* quarterTurnBearings = nullptr;
};

FirstLookups lookUp() {
    return {.bearing = Bearing(-1, -255),
            .distance = Distance({.x = 0, .y = 0}, {.x = 255, .y = 255}),
            .cosine = Cos(-255),
            .sine = Sin(64),
            .bearings = &BearingTable::Table(),
            .distances = &DistanceTable::Table(),
            .quarterTurnBearings = &QuarterTurnBearings::Table()};
}

TEST(LookupTables, AreRightAndTheSameForThreadsThatAllUseThemFirstAndTakeNoHeapMemory) {
    std::array<FirstLookups, kThreads> seen;
    std::atomic<std::size_t> ready{0};
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (FirstLookups& mine : seen) {
        threads.emplace_back([&ready, &go, &mine] {
            ++ready;
            while (!go.load()) {
                std::this_thread::yield();
            }
            mine = lookUp();
        });
    }
    while (ready.load() < kThreads) {
        std::this_thread::yield();
    }
    std::int64_t allocations = 0;
    {
        const test::FailingNew counting(0);
        go = true;
        for (std::thread& thread : threads) {
            thread.join();
        }
        allocations = counting.Allocations();
    }
    EXPECT_EQ(allocations, 0);
    for (const FirstLookups& lookups : seen) {
        EXPECT_EQ(lookups.bearing, -127);
        EXPECT_EQ(lookups.distance, 105);
        EXPECT_EQ(lookups.cosine, std::cos(-255.0F * 0.024639942F));
        EXPECT_EQ(lookups.sine, std::sin(64.0F * 0.024639942F));
        EXPECT_EQ(lookups.bearings, seen[0].bearings);
        EXPECT_EQ(lookups.distances, seen[0].distances);
        EXPECT_EQ(lookups.quarterTurnBearings, seen[0].quarterTurnBearings);
    }
}

}  // namespace
}  // namespace orl::matcher
