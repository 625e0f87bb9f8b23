#include "tools/orl_finger/portable_math.h"

#include <cmath>

namespace orl::tools {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kTurn = 2.0 * kPi;
constexpr double kQuarterTurn = 0.25;
constexpr double kHalfTurn = 0.5;

// sin(x) = x - x^3/3! + x^5/5! - ... to x^17/17!, whose next term is below 1e-13 at pi/2.
constexpr double sineNearZero(double x) {
    constexpr int kLastFactor = 17;
    const double square = x * x;
    double sum = 1.0;
    for (int n = kLastFactor; n > 1; n -= 2) {
        sum = 1.0 - sum * square / static_cast<double>(n * (n - 1));
    }
    return x * sum;
}

// atan(r) = r - r^3/3 + r^5/5 - ... to r^25/25, for |r| up to tan(pi/8); the next term is below
// 2e-12.
constexpr double arctangentNearZero(double r) {
    constexpr int kLastDivisor = 25;
    const double square = r * r;
    double sum = 0.0;
    for (int n = kLastDivisor; n >= 1; n -= 2) {
        sum = 1.0 / static_cast<double>(n) - sum * square;
    }
    return r * sum;
}

// Direction in turns of a vector of the first octant: 0 <= y <= x, x above 0.
double turnsInFirstOctant(double y, double x) {
    constexpr double kTangentOfEighthOfPi = 0.41421356237309503;
    constexpr double kEighthOfTurn = 0.125;
    const double ratio = y / x;
    if (ratio <= kTangentOfEighthOfPi) {
        return arctangentNearZero(ratio) / kTurn;
    }
    return kEighthOfTurn + arctangentNearZero((y - x) / (y + x)) / kTurn;
}

}  // namespace

double wrappedTurns(double turns) {
    const double part = turns - std::floor(turns);
    return part < 1.0 ? part : 0.0;
}

double sineOfTurns(double turns) {
    const double part = wrappedTurns(turns);
    if (part <= kQuarterTurn) {
        return sineNearZero(part * kTurn);
    }
    if (part <= kHalfTurn + kQuarterTurn) {
        return sineNearZero((kHalfTurn - part) * kTurn);
    }
    return sineNearZero((part - 1.0) * kTurn);
}

double cosineOfTurns(double turns) {
    return sineOfTurns(turns + kQuarterTurn);
}

double turnsOfVector(double y, double x) {
    const double width = x < 0 ? -x : x;
    const double height = y < 0 ? -y : y;
    if (width == 0 && height == 0) {
        return 0.0;
    }
    double turns = height <= width ? turnsInFirstOctant(height, width)
                                   : kQuarterTurn - turnsInFirstOctant(width, height);
    if (x < 0) {
        turns = kHalfTurn - turns;
    }
    return y < 0 ? -turns : turns;
}

Vector rotated(const Vector& v, double turns) {
    const double c = cosineOfTurns(turns);
    const double s = sineOfTurns(turns);
    return {v.x * c - v.y * s, v.x * s + v.y * c};
}

double lengthOf(const Vector& v) {
    return std::sqrt(v.x * v.x + v.y * v.y);
}

int roundedToInt(double value) {
    constexpr double kHalf = 0.5;
    return static_cast<int>(std::floor(value + kHalf));
}

}  // namespace orl::tools
