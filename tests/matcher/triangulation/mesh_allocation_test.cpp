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

std::vector<double> SomePoints() {
    constexpr std::size_t kCoordinates = 120;
    std::mt19937 random(23);
    std::vector<double> points;
    while (points.size() < kCoordinates) {
        points.push_back(static_cast<double>(random() % 400));
    }
    return points;
}

TEST(DelaunayMeshOutOfMemory, ThrowsBadAllocAndLeaksNothingWhicheverAllocationFails) {
    const std::vector<double> points = SomePoints();
    const std::vector<PointIndex> expected = DelaunayMesh(points).vertices();
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
                sameMesh = DelaunayMesh(points).vertices() == expected;
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
    EXPECT_GE(thrown, 7);  // seven arrays of its own, and the order of the points
}

TEST(DelaunayMeshOutOfMemory, TakesNoMemoryPerPointButForTheGrowthOfTheFlipStack) {
    const std::vector<double> points = SomePoints();
    std::int64_t allocations = 0;
    {
        const test::FailingNew counting(0);
        const DelaunayMesh mesh(points);
        allocations = counting.Allocations();
    }
    // Eight arrays, the buffer of the sort, and a stack that doubles: 1, 2, 4, 8, 16.
    EXPECT_LE(allocations, 8 + 1 + 5);
}

}  // namespace
}  // namespace orl::matcher
