#include "tools/orl_finger/random_stream.h"

#include <cmath>
#include <set>

#include <gtest/gtest.h>

namespace orl::tools {
namespace {

// The sequence that the published formula gives for seed 1234567, worked out with unbounded
// integers.
TEST(RandomStream, FollowsThePublishedSequence) {
    RandomStream random(1234567);
    EXPECT_EQ(random.nextBits(), 6457827717110365317U);
    EXPECT_EQ(random.nextBits(), 3203168211198807973U);
    EXPECT_EQ(random.nextBits(), 9817491932198370423U);
}

TEST(RandomStream, GivesEveryPartItsOwnSequence) {
    std::set<std::uint64_t> first;
    for (std::uint64_t seed = 0; seed < 3; ++seed) {
        for (std::uint64_t finger = 101; finger < 111; ++finger) {
            for (std::uint64_t impression = 0; impression < 10; ++impression) {
                first.insert(RandomStream::forPart(seed, finger, impression).nextBits());
            }
        }
    }
    EXPECT_EQ(first.size(), 300U);
}

// Of 100,000 draws the mean and the deviation are within four standard errors of what they should
// be.
TEST(RandomStream, DrawsUniformAndNormalNumbersOfTheStatedMeanAndDeviation) {
    constexpr int kDraws = 100000;
    RandomStream random(42);
    double uniformSum = 0.0;
    double normalSum = 0.0;
    double normalSquares = 0.0;
    for (int i = 0; i < kDraws; ++i) {
        const double uniform = random.uniform();
        ASSERT_GE(uniform, 0.0);
        ASSERT_LT(uniform, 1.0);
        uniformSum += uniform;
        const double normal = random.normal(10.0, 2.0);
        normalSum += normal;
        normalSquares += (normal - 10.0) * (normal - 10.0);
    }
    const double standardError = 1.0 / std::sqrt(kDraws);
    EXPECT_NEAR(uniformSum / kDraws, 0.5, 4 * standardError / std::sqrt(12.0));
    EXPECT_NEAR(normalSum / kDraws, 10.0, 4 * 2.0 * standardError);
    EXPECT_NEAR(std::sqrt(normalSquares / kDraws), 2.0, 4 * 2.0 * standardError);
}

TEST(RandomStream, DrawsWholeNumbersWithBothEnds) {
    RandomStream random(9);
    std::set<int> drawn;
    for (int i = 0; i < 1000; ++i) {
        drawn.insert(random.wholeBetween(-2, 3));
    }
    EXPECT_EQ(drawn, (std::set<int>{-2, -1, 0, 1, 2, 3}));
    EXPECT_EQ(random.wholeBetween(5, 5), 5);
}

}  // namespace
}  // namespace orl::tools
