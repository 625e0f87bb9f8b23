#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/triangulation/delaunay_mesh.h"
#include "tests/support/failing_new.h"

namespace orl::matcher {
namespace {

std::vector<double> SomePoints(std::size_t count) {
    std::mt19937 random(23);
    std::vector<double> points;
    while (points.size() < 2 * count) {
        points.push_back(static_cast<double>(random() % 400));
    }
    return points;
}

std::int64_t AllocationsOf(const std::vector<double>& points) {
    const test::FailingNew counting(0);
    const DelaunayMesh mesh(points);
    return counting.Allocations();
}

TEST(DelaunayMeshOutOfMemory, ThrowsBadAllocAndLeaksNothingWhicheverAllocationFails) {
    const std::vector<double> points = SomePoints(200);
    const DelaunayMesh expected(points);
    constexpr std::int64_t kMoreThanItMakes = 100;
    int thrown = 0;
    bool failed = true;
    for (std::int64_t n = 1; failed && n < kMoreThanItMakes; ++n) {
        const std::int64_t liveBefore = test::LiveBlocks();
        bool threw = false;
        bool sameMesh = false;
        {
            const test::FailingNew failing(n);
            try {
                const DelaunayMesh mesh(points);
                sameMesh = std::ranges::equal(mesh.vertices(), expected.vertices());
            } catch (const std::bad_alloc&) {
                threw = true;
            }
            failed = failing.Failed();
        }
        EXPECT_EQ(test::LiveBlocks(), liveBefore) << "allocation " << n;
        // A sort does without its buffer, so one allocation may fail unnoticed.
        EXPECT_TRUE(threw || sameMesh) << "allocation " << n;
        thrown += threw ? 1 : 0;
    }
    EXPECT_FALSE(failed) << "the build never got through";
    EXPECT_GE(thrown, 8);  // seven arrays of its own, and the order of the points
}

TEST(DelaunayMeshOutOfMemory, TakesNoMemoryForAFingersPoints) {
    for (const std::size_t count : {3U, 60U, 127U, 128U}) {
        EXPECT_EQ(AllocationsOf(SomePoints(count)), 0) << count << " points";
    }
}

TEST(DelaunayMeshOutOfMemory, TakesNoMemoryPerPointOfALargerSet) {
    // Hull entries (4), buckets, vertices, twins, the order of the points and its sort's buffer.
    EXPECT_LE(AllocationsOf(SomePoints(129)), 9);
    EXPECT_LE(AllocationsOf(SomePoints(5000)), 9);
}

}  // namespace
}  // namespace orl::matcher
