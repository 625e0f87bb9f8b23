#pragma once

// Bearings, distances, cosines and sines by table. Each table is built once per process, by the
// first lookup that needs it (other threads wait for it); afterwards lookups only read and take no
// lock. All angles are steps of the 255-step turn. The lookups check no index: callers keep to the
// stated ranges.

#include <array>
#include <cstddef>
#include <cstdint>

#include "matcher/features/finger_model.h"

namespace orl::matcher {

// Direction of the vector (dx, dy) in steps: 0 along +x, growing toward +y, -127..128, and 0 for
// the null vector. REQUIRES: dy and dx in -255..255.
std::int16_t Bearing(std::int16_t dy, std::int16_t dx);

// The tables behind Bearing and Distance, for loops: reaching one costs a test whether it is built,
// so hoist it out. Table() is the process-wide one, built by the first call, from any thread.
class BearingTable {
  public:
    static const BearingTable& Table();

    // A grid point, or a vector, as one number; the number of a vector is the difference of those
    // of its ends. REQUIRES: y and x in -255..255.
    static constexpr int Place(int y, int x) { return y * kSpan + x; }
    static constexpr std::uint32_t Place(std::uint32_t y, std::uint32_t x) {
        return y * std::uint32_t{kSpan} + x;
    }

    // Bearing of the vector from one place to another.
    std::int16_t FromTo(int from, int to) const {
        const int rank = entries_[static_cast<std::size_t>(to - from + Place(kReach, kReach))];
        return static_cast<std::int16_t>(rank - kRankOfZero);
    }

    // Numbers from 0 to 255 that rise with the bearings of the vectors from one grid point to
    // others, by their places.
    using Ranks = const std::uint8_t*;
    Ranks RanksFrom(std::uint32_t from) const {
        return entries_.data() + (std::uint32_t{Place(kReach, kReach)} - from);
    }

  private:
    static constexpr int kReach = 255;
    static constexpr int kSpan = 2 * kReach + 1;
    static constexpr int kRankOfZero = 127;  // of the bearing 0; the least is -127

    BearingTable();

    // Ranks in rows dy, from -255.
    std::array<std::uint8_t, static_cast<std::size_t>(kSpan) * kSpan> entries_;
};

class DistanceTable {
  public:
    static const DistanceTable& Table();

    // Distance along (dx, dy). REQUIRES: dy and dx in -255..255.
    std::uint8_t operator()(int dy, int dx) const {
        return entries_[static_cast<std::size_t>(dx * dx + dy * dy)];
    }

  private:
    static constexpr std::size_t kSquaredDistances = 131072;  // 2 * 255^2 = 130050 is the largest

    DistanceTable();

    std::array<std::uint8_t, kSquaredDistances> entries_;  // by squared distance
};

// The low bytes of the bearings of a vector and of its quarter turns: byte m (from the lowest) is
// that of (dx, dy) turned m times by (dx, dy) -> (-dy, dx), so byte 2 belongs to the opposite
// vector. Hoist the table out of loops: reaching it costs a test whether it is built.
class QuarterTurnBearings {
  public:
    // The process-wide table; built by the first call, from any thread.
    static const QuarterTurnBearings& Table();

    // REQUIRES: dy and dx in -255..255.
    std::uint32_t operator()(int dy, int dx) const {
        return entries_[static_cast<std::size_t>((dy + kReach) * kSpan + dx + kReach)];
    }

  private:
    static constexpr int kReach = 255;
    static constexpr int kSpan = 2 * kReach + 1;

    QuarterTurnBearings();

    std::array<std::uint32_t, static_cast<std::size_t>(kSpan) * kSpan> entries_;
};

// Distance between two grid points in grid units, rounded half away from zero and kept modulo 256:
// (0,0)-(255,255) is 360.6 long and reads as 105. The wrap is part of the stored side lengths; do
// not clamp.
std::uint8_t Distance(const TriangleVertex& p, const TriangleVertex& q);

// Cosine and sine of an angle in steps, as the platform's cosf and sinf give them.
// REQUIRES: steps in -255..255.
float Cos(std::int16_t steps);
float Sin(std::int16_t steps);

}  // namespace orl::matcher
