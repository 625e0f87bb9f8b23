#include "matcher/features/lookup_tables.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace orl::matcher {

namespace {

constexpr int kMaxDifference = 255;                    // of two grid bytes
constexpr std::size_t kSpan = 2 * kMaxDifference + 1;  // differences and angles -255..255
constexpr float kStepsPerRadian = 40.58451F;           // 255 / 2 pi
constexpr float kRadiansPerStep = 0.024639942F;        // 2 pi / 255

constexpr std::size_t Offset(int value) {
    const int offset = value + kMaxDifference;
    return static_cast<std::size_t>(offset);
}

// Each table is a function-local static: its first user builds it while others wait, and a build
// that fails is tried again by the next one. None takes heap memory or is ever released.

using WaveTable = std::array<float, kSpan>;  // by angle in steps

WaveTable BuildWaveTable(float (*wave)(float)) {
    WaveTable table{};
    for (int steps = -kMaxDifference; steps <= kMaxDifference; ++steps) {
        table[Offset(steps)] = wave(static_cast<float>(steps) * kRadiansPerStep);
    }
    return table;
}

}  // namespace

const BearingTable& BearingTable::Table() {
    static const BearingTable table;
    return table;
}

BearingTable::BearingTable() {
    std::size_t next = 0;
    for (int dy = -kReach; dy <= kReach; ++dy) {
        for (int dx = -kReach; dx <= kReach; ++dx) {
            const float radians = std::atan2(static_cast<float>(dy), static_cast<float>(dx));
            const long bearing = std::lround(radians * kStepsPerRadian);
            entries_[next++] = static_cast<std::uint8_t>(bearing + kRankOfZero);
        }
    }
}

std::int16_t Bearing(std::int16_t dy, std::int16_t dx) {
    return BearingTable::Table().FromTo(0, BearingTable::Place(dy, dx));
}

const QuarterTurnBearings& QuarterTurnBearings::Table() {
    static const QuarterTurnBearings table;
    return table;
}

QuarterTurnBearings::QuarterTurnBearings() {
    const auto bearingByte = [](int dy, int dx) {
        const auto bearing = Bearing(static_cast<std::int16_t>(dy), static_cast<std::int16_t>(dx));
        return std::uint32_t{static_cast<std::uint8_t>(bearing)};
    };
    std::size_t next = 0;
    for (int dy = -kReach; dy <= kReach; ++dy) {
        for (int dx = -kReach; dx <= kReach; ++dx) {
            entries_[next++] = bearingByte(dy, dx) | bearingByte(dx, -dy) << 8U |
                               bearingByte(-dy, -dx) << 16U | bearingByte(-dx, dy) << 24U;
        }
    }
}

const DistanceTable& DistanceTable::Table() {
    static const DistanceTable table;
    return table;
}

DistanceTable::DistanceTable() {
    for (std::size_t i = 0; i < kSquaredDistances; ++i) {
        entries_[i] = static_cast<std::uint8_t>(std::lround(std::sqrt(static_cast<double>(i))));
    }
}

std::uint8_t Distance(const TriangleVertex& p, const TriangleVertex& q) {
    return DistanceTable::Table()(p.y - q.y, p.x - q.x);
}

float Cos(std::int16_t steps) {
    static const WaveTable table = BuildWaveTable([](float radians) { return std::cos(radians); });
    return table[Offset(steps)];
}

float Sin(std::int16_t steps) {
    static const WaveTable table = BuildWaveTable([](float radians) { return std::sin(radians); });
    return table[Offset(steps)];
}

}  // namespace orl::matcher
