#include "matcher/matching/candidate_index.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/triangle_feature.h"
#include "matcher/matching/scratch.h"
#include "tests/support/naive_matching.h"
#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

// An index with the finger it was made from.
class Indexed {
  public:
    explicit Indexed(std::vector<TriangleFeature> triangles)
        : triangles_(std::move(triangles)),
          scratch_(new Scratch),
          finger_(orientedFinger(triangles_, *scratch_)),
          index_(finger_, *scratch_) {}

    const CandidateIndex& index() const { return index_; }

    // Whether triangle `u` is found for the triangle.
    bool finds(const TriangleFeature& first, std::size_t u) const {
        const TriangleBits bits = found(first, u / kTrianglesPerStretch);
        const std::size_t bit = u % kTrianglesPerStretch;
        return (bits[bit / 64] >> bit % 64 & 1U) != 0;
    }

    // All that is found of a stretch, under any cyclic order.
    TriangleBits found(const TriangleFeature& first, std::size_t stretch) const {
        const std::size_t offset = stretch * kTrianglesPerStretch;
        const std::size_t end = std::min(triangles_.size() - offset, kTrianglesPerStretch);
        const auto orders = index_.find(CandidateIndex::Query(codeOf(first)), stretch, 0, end);
        return orders[0] | orders[1] | orders[2];
    }

  private:
    std::vector<TriangleFeature> triangles_;
    std::unique_ptr<Scratch> scratch_;
    OrientedFinger finger_;
    CandidateIndex index_;
};

struct Tally {
    int alike = 0;
    int found = 0;
    int tested = 0;
};

// Every pair that the plain test passes in any orientation must be found.
void ExpectNoneMissed(const std::vector<TriangleFeature>& first,
                      const std::vector<TriangleFeature>& second,
                      Tally& tally) {
    const Indexed indexed(second);
    for (int turns = 0; turns < 4; ++turns) {
        const auto turned = turns == 0 ? second : naive::Turned(second, turns);
        for (std::size_t u = 0; u < second.size(); ++u) {
            for (const TriangleFeature& triangle : first) {
                const bool isAlike =
                    !naive::SearchTrianglePairs(std::span(&triangle, 1), std::span(&turned[u], 1))
                         .empty();
                const bool isFound = indexed.finds(triangle, u);
                ASSERT_TRUE(isFound || !isAlike) << "triangle " << u << ", " << turns << " turns";
                tally.alike += isAlike ? 1 : 0;
                tally.found += isFound ? 1 : 0;
                ++tally.tested;
            }
        }
    }
}

// Copies whose directions and corners are moved a little: alike, and often just so.
std::vector<TriangleFeature> Moved(std::mt19937& random, std::vector<TriangleFeature> triangles) {
    for (TriangleFeature& triangle : triangles) {
        auto [a, b, c] = triangle.vertices;
        for (TriangleVertex* vertex : {&a, &b, &c}) {
            vertex->angle = static_cast<std::uint8_t>(vertex->angle + random() % 36);
            vertex->x = static_cast<std::uint8_t>(
                std::min<int>(vertex->x + static_cast<int>(random() % 5), 255));
        }
        triangle = MakeTriangleFeature(a, b, c);
    }
    test::SortTriangles(triangles);
    return triangles;
}

TEST(CandidateIndex, MissesNoTriangleOfRandomFingers) {
    Tally tally;
    for (std::uint32_t seed = 0; seed < 6; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const MinutiaList finger = test::RandomMinutiaList(random, 25);
        const MinutiaList other = test::Impression(
            random,
            finger,
            {.rotationDegrees = 90.0 * (seed % 4), .jitterPixels = 4, .jitterDegrees = 14});
        ExpectNoneMissed(
            test::BuiltFinger(finger).triangles, test::BuiltFinger(other).triangles, tally);
    }
    EXPECT_GT(tally.alike, 100);
    EXPECT_LT(tally.found, tally.tested / 25);  // and finds few others
}

TEST(CandidateIndex, MissesNoTriangleWhateverItsVertices) {
    Tally tally;
    for (std::uint32_t seed = 0; seed < 12; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const unsigned extent = seed % 4 == 0 ? 256 : seed % 4 == 1 ? 40 : seed % 4 == 2 ? 6 : 2;
        const auto triangles = test::RandomTriangles(random, 70, extent);
        ExpectNoneMissed(Moved(random, triangles), triangles, tally);
        ExpectNoneMissed(triangles, triangles, tally);
    }
    EXPECT_GT(tally.alike, 1000);
}

// Corners in the grid's corners: sides of 255 and 361, the latter read as 105.
TEST(CandidateIndex, MissesNoTriangleThatSpansTheGrid) {
    std::mt19937 random(77);
    std::vector<TriangleFeature> triangles;
    for (int i = 0; i < 120; ++i) {
        const auto corner = [&] {
            return TriangleVertex{static_cast<std::uint8_t>(255 * (random() % 2)),
                                  static_cast<std::uint8_t>(255 * (random() % 2)),
                                  static_cast<std::uint8_t>(random()),
                                  0};
        };
        const TriangleVertex a = corner();
        const TriangleVertex b = corner();
        triangles.push_back(MakeTriangleFeature(a, b, corner()));
    }
    test::SortTriangles(triangles);
    Tally tally;
    ExpectNoneMissed(triangles, triangles, tally);
    ExpectNoneMissed(Moved(random, triangles), triangles, tally);
    EXPECT_GT(tally.alike, 250);
}

TEST(CandidateIndex, MissesNoFlatTriangle) {
    std::mt19937 random(78);
    std::vector<TriangleFeature> triangles;
    for (int i = 0; i < 120; ++i) {
        const int dx = static_cast<int>(random() % 3) - 1;
        const int dy = static_cast<int>(random() % 3) - 1;
        const auto onLine = [&] {
            const int step = static_cast<int>(random() % 61) - 30;
            return TriangleVertex{static_cast<std::uint8_t>(128 + dx * step),
                                  static_cast<std::uint8_t>(128 + dy * step),
                                  static_cast<std::uint8_t>(random() % 90),
                                  0};
        };
        const TriangleVertex a = onLine();
        const TriangleVertex b = onLine();
        triangles.push_back(MakeTriangleFeature(a, b, onLine()));
    }
    test::SortTriangles(triangles);
    Tally tally;
    ExpectNoneMissed(triangles, triangles, tally);
    EXPECT_GT(tally.alike, 400);
}

TEST(CandidateIndex, FindsEachTriangleOfALongListByItself) {
    std::mt19937 random(80);
    const auto triangles = test::RandomTriangles(random, 300, 256);
    const Indexed indexed(triangles);
    for (std::size_t u = 0; u < triangles.size(); ++u) {
        EXPECT_TRUE(indexed.finds(triangles[u], u)) << u;
    }
    // Nothing stands behind the last triangle: 300 = 2 * 128 + 44.
    const TriangleBits last = indexed.found(triangles[299], 2);
    EXPECT_EQ(last[0] >> 44U, 0U);
    EXPECT_EQ(last[1], 0U);
}

TEST(CandidateIndex, FindsNothingOutsideTheTrianglesAskedFor) {
    std::mt19937 random(81);
    const std::vector<TriangleFeature> triangles(128,
                                                 test::RandomTriangles(random, 1, 256).front());
    const Indexed indexed(triangles);
    const CandidateIndex::Query query(codeOf(triangles.front()));
    const auto bitsFrom = [](std::size_t begin, std::size_t end) {
        TriangleBits bits{};
        for (std::size_t u = begin; u < end; ++u) {
            bits[u / 64] |= std::uint64_t{1} << u % 64;
        }
        return bits;
    };
    for (std::size_t begin = 0; begin <= 128; begin += 7) {
        for (std::size_t end = begin; end <= 128; ++end) {
            const auto orders = indexed.index().find(query, 0, begin, end);
            const TriangleBits found = orders[0] | orders[1] | orders[2];
            const TriangleBits expected = bitsFrom(begin, end);
            ASSERT_EQ(found[0], expected[0]) << begin << " to " << end;
            ASSERT_EQ(found[1], expected[1]) << begin << " to " << end;
        }
    }
}

TEST(CandidateIndex, TellsUnderWhichCyclicOrderATriangleWasFound) {
    // Directions 80 steps apart, so that no two orders resemble each other.
    const TriangleFeature triangle =
        MakeTriangleFeature({100, 100, 10, 0}, {150, 105, 90, 0}, {95, 160, 230, 0});
    for (std::size_t shift = 0; shift < kCorners; ++shift) {
        TriangleFeature shifted = triangle;
        for (std::size_t j = 0; j < kCorners; ++j) {
            shifted.vertices[j] = triangle.vertices[(j + shift) % kCorners];
        }
        const Indexed indexed({shifted});
        const auto orders = indexed.index().find(CandidateIndex::Query(codeOf(triangle)), 0, 0, 1);
        for (std::size_t order = 0; order < kCorners; ++order) {
            EXPECT_EQ(orders[order][0], order == shift ? 1U : 0U) << order << ", " << shift;
        }
    }
}

TEST(CandidateIndex, FindsNoTriangleWhoseSidesDifferBy18) {
    const TriangleFeature triangle =
        MakeTriangleFeature({100, 100, 10, 0}, {150, 100, 60, 0}, {100, 160, 120, 0});
    for (std::size_t side = 0; side < 3; ++side) {
        TriangleFeature near = triangle;
        near.sides[side] = static_cast<std::uint8_t>(near.sides[side] + 17);
        EXPECT_TRUE(Indexed({near}).finds(triangle, 0)) << side;
        ++near.sides[side];
        EXPECT_FALSE(Indexed({near}).finds(triangle, 0)) << side;
    }
}

}  // namespace
}  // namespace orl::matcher
