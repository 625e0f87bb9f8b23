#include "matcher/matching/triangle_code.h"

#include <cassert>

#include "matcher/matching/kernels/triangle_code_kernels.h"

namespace orl::matcher {
namespace {

// Byte-wise sum modulo 256.
std::uint32_t byteSum(std::uint32_t a, std::uint32_t b) {
    constexpr std::uint32_t kHighBits = 0x80808080;
    return ((a & ~kHighBits) + (b & ~kHighBits)) ^ ((a ^ b) & kHighBits);
}

// Byte-wise a - b modulo 256.
std::uint32_t byteDifference(std::uint32_t a, std::uint32_t b) {
    constexpr std::uint32_t kHighBits = 0x80808080;
    return ((a | kHighBits) - (b & ~kHighBits)) ^ ((a ^ ~b) & kHighBits);
}

std::uint8_t mirrored(std::uint8_t coordinate) {
    constexpr int kLastGridUnit = 255;
    return static_cast<std::uint8_t>(kLastGridUnit - coordinate);
}

}  // namespace

TriangleCode codeOf(const TriangleFeature& triangle) {
    QuarterTurnCodes codes;
    kernels::codesOfQuarterTurns(triangle, QuarterTurnBearings::Table(), codes);
    return codes[0];
}

CyclicCodes cyclicCodesOf(const TriangleFeature& triangle) {
    const TriangleCode code = codeOf(triangle);
    return {code, kernels::turnedCode(code, 1), kernels::turnedCode(code, 2)};
}

bool sidesAreNear(std::uint32_t secondSides, std::uint32_t firstSides) {
    constexpr std::uint32_t kReach = 0x00111111;       // 17 grid units in each byte
    constexpr std::uint32_t kAboveRange = 0x005D5D5D;  // 127 - 34: carries into the high bit above
    constexpr std::uint32_t kLowBits = 0x007F7F7F;
    constexpr std::uint32_t kHighBits = 0x00808080;
    // A difference of -17..17 lies in 0..34 once 17 is added.
    const std::uint32_t raised = byteSum(byteDifference(secondSides, firstSides), kReach);
    return ((((raised & kLowBits) + kAboveRange) | raised) & kHighBits) == 0;
}

TriangleVertex turnedVertex(const TriangleVertex& vertex, std::size_t quarterTurns) {
    assert(quarterTurns < kOrientations);
    constexpr std::size_t kQuarterTurnSteps = 64;  // 256-step turn
    TriangleVertex turned = vertex;
    turned.angle = static_cast<std::uint8_t>(vertex.angle + quarterTurns * kQuarterTurnSteps);
    switch (quarterTurns) {
        case 1:
            turned.x = mirrored(vertex.y);
            turned.y = vertex.x;
            break;
        case 2:
            turned.x = mirrored(vertex.x);
            turned.y = mirrored(vertex.y);
            break;
        case 3:
            turned.x = vertex.y;
            turned.y = mirrored(vertex.x);
            break;
        default:
            break;
    }
    return turned;
}

}  // namespace orl::matcher
