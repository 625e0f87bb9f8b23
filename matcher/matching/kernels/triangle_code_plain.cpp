#include <algorithm>

#include "matcher/features/angles.h"
#include "matcher/matching/kernels/triangle_code_kernels.h"

namespace orl::matcher::plain {
namespace {

constexpr std::array<std::size_t, 4> kGroups = {
    kTurnGroup, kNextEdgeGroup, kPreviousEdgeGroup, kSideGroup};

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
        code.bytes[kSideGroup + j] = triangle.sides[j];
    }
    return code;
}

}  // namespace

void codesOfQuarterTurns(const TriangleFeature& triangle,
                         const QuarterTurnBearings& bearings,
                         QuarterTurnCodes& codes) {
    for (std::size_t quarterTurns = 0; quarterTurns < kOrientations; ++quarterTurns) {
        codes[quarterTurns] = codeOfQuarterTurns(triangle, quarterTurns, bearings);
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

std::array<TriangleVertex, kCorners> turnedVertices(const TriangleFeature& triangle,
                                                    std::size_t quarterTurns) {
    return {turnedVertex(triangle.vertices[0], quarterTurns),
            turnedVertex(triangle.vertices[1], quarterTurns),
            turnedVertex(triangle.vertices[2], quarterTurns)};
}

unsigned agreeingQuarterTurns(const QuarterTurnCodes& second, const TriangleCode& first) {
    unsigned agreeing = 0;
    for (std::size_t m = 0; m < kOrientations; ++m) {
        const CodeDifference difference = largestDifferences(second[m], first);
        if (difference.turn <= kMaxTurnDifferenceSteps &&
            difference.edge <= kMaxEdgeDifferenceSteps) {
            agreeing |= 1U << m;
        }
    }
    return agreeing;
}

CodeDifference largestDifferences(const TriangleCode& second, const TriangleCode& first) {
    CodeDifference largest{0, 0, 0};
    for (std::size_t j = 0; j < kCorners; ++j) {
        const auto circular = [&](std::size_t group) {
            return std::int32_t{
                CircularDifference(second.bytes[group + j], first.bytes[group + j])};
        };
        largest.turn = std::max(largest.turn, circular(kTurnGroup));
        largest.edge =
            std::max({largest.edge, circular(kNextEdgeGroup), circular(kPreviousEdgeGroup)});
        largest.side = std::max(largest.side,
                                std::int32_t{AbsoluteDifference(second.bytes[kSideGroup + j],
                                                                first.bytes[kSideGroup + j])});
    }
    return largest;
}

}  // namespace orl::matcher::plain
