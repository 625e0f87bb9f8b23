#include <array>

#include "matcher/features/angles.h"
#include "matcher/matching/kernels/triangle_code_kernels.h"

namespace orl::matcher::plain {
namespace {

constexpr std::array<std::size_t, 4> kGroups = {
    kTurnGroup, kNextEdgeGroup, kPreviousEdgeGroup, kSideGroup};

struct Vector {
    int x;
    int y;
};

int crossProduct(const Vector& a, const Vector& b) {
    return a.x * b.y - a.y * b.x;
}

int dotProduct(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y;
}

// The weighted centre of a turned triangle, turned back. Where a coordinate has been mirrored the
// centre was rounded the other way.
int weightedCentre(int a, int b, int c, bool isMirrored) {
    const int up = isMirrored ? 1 : 0;
    return (((a + b + up) >> 1) + c + up) >> 1;
}

// A vector's y after quarter turns.
int turnedY(const Vector& vector, std::size_t quarterTurns) {
    switch (quarterTurns) {
        case 1:
            return vector.x;
        case 2:
            return -vector.y;
        case 3:
            return -vector.x;
        default:
            return vector.y;
    }
}

// Whether `b` lies ahead of `a` by less than half a turn, and by more than 3.5 degrees, which is
// more than two steps.
bool isWellAhead(const Vector& b, const Vector& a) {
    constexpr int kCotangent = 16;
    const int cross = crossProduct(a, b);
    return cross > 0 && cross * kCotangent > dotProduct(a, b);
}

// The first vertex of one turned triangle; kCorners when it cannot be told.
std::size_t startOfQuarterTurns(const TriangleFeature& triangle, std::size_t quarterTurns) {
    const auto& [a, b, c] = triangle.vertices;
    const bool isMirroredX = quarterTurns >= 2;
    const bool isMirroredY = quarterTurns == 1 || quarterTurns == 2;
    const int centreX = weightedCentre(a.x, b.x, c.x, isMirroredX);
    const int centreY = weightedCentre(a.y, b.y, c.y, isMirroredY);
    std::array<Vector, kCorners> vectors{};
    for (std::size_t j = 0; j < kCorners; ++j) {
        vectors[j] = {triangle.vertices[j].x - centreX, triangle.vertices[j].y - centreY};
    }
    std::size_t start = kCorners;
    for (std::size_t j = 0; j < kCorners; ++j) {
        const Vector& previous = vectors[(j + 2) % kCorners];
        if (!isWellAhead(vectors[j], previous)) {
            return kCorners;
        }
        if (turnedY(vectors[j], quarterTurns) < 0 && turnedY(previous, quarterTurns) >= 0) {
            start = j;
        }
    }
    return start;
}

std::uint8_t turnBetween(std::uint8_t from, std::uint8_t to) {
    return static_cast<std::uint8_t>(ForwardDifference(from, to));
}

std::uint8_t edgeBearing(const TriangleVertex& from,
                         const TriangleVertex& to,
                         std::size_t quarterTurns,
                         const QuarterTurnBearings& bearings) {
    return static_cast<std::uint8_t>(bearings(to.y - from.y, to.x - from.x) >> (8 * quarterTurns));
}

TriangleCode codeOfQuarterTurns(const TriangleFeature& triangle,
                                std::size_t quarterTurns,
                                std::size_t start,
                                const QuarterTurnBearings& bearings) {
    constexpr std::size_t kStepsPerQuarterTurn = 64;
    const auto direction = [&](std::size_t corner) {
        return static_cast<std::uint8_t>(triangle.vertices[corner].angle +
                                         quarterTurns * kStepsPerQuarterTurn);
    };
    TriangleCode code{};
    for (std::size_t j = 0; j < kCorners; ++j) {
        const std::size_t next = (j + 1) % kCorners;
        const std::size_t previous = (j + 2) % kCorners;
        const auto& vertices = triangle.vertices;
        code.bytes[kTurnGroup + j] = turnBetween(direction(j), direction(next));
        code.bytes[kNextEdgeGroup + j] = turnBetween(
            direction(j), edgeBearing(vertices[next], vertices[j], quarterTurns, bearings));
        code.bytes[kPreviousEdgeGroup + j] = turnBetween(
            direction(j), edgeBearing(vertices[previous], vertices[j], quarterTurns, bearings));
        code.bytes[kSideGroup + (start + j) % kCorners] = triangle.sides[j];
    }
    return code;
}

}  // namespace

bool startsOfQuarterTurns(const TriangleFeature& triangle, QuarterTurnStarts& starts) {
    // A list's own order is what it compares by, so nothing is read off orientation 0 but that it
    // has a centre like the others.
    for (std::size_t m = 0; m < kOrientations; ++m) {
        const std::size_t start = startOfQuarterTurns(triangle, m);
        if (start == kCorners) {
            return false;
        }
        starts[m] = m == 0 ? std::uint8_t{0} : static_cast<std::uint8_t>(start);
    }
    return true;
}

TriangleCode codeOf(const TriangleFeature& triangle, const QuarterTurnBearings& bearings) {
    return codeOfQuarterTurns(triangle, 0, 0, bearings);
}

void codesOfQuarterTurns(const TriangleFeature& triangle,
                         const QuarterTurnStarts& starts,
                         const QuarterTurnBearings& bearings,
                         QuarterTurnCodes& codes) {
    for (std::size_t quarterTurns = 0; quarterTurns < kOrientations; ++quarterTurns) {
        codes[quarterTurns] =
            codeOfQuarterTurns(triangle, quarterTurns, starts[quarterTurns], bearings);
    }
}

TriangleCode turnedCode(const TriangleCode& code, std::size_t start) {
    TriangleCode turned{};
    for (const std::size_t group : kGroups) {
        for (std::size_t j = 0; j < kCorners; ++j) {
            turned.bytes[group + j] = code.bytes[group + (start + j) % kCorners];
        }
    }
    return turned;
}

}  // namespace orl::matcher::plain
