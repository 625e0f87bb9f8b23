#include "tests/support/naive_score.h"

#include <algorithm>

namespace orl::naive {

std::int64_t CountScore(std::int64_t n, std::int64_t a, std::int64_t b) {
    if (n < 4 || a == 0 || b == 0) {
        return 0;
    }
    std::int64_t score = n * n * 1000 / (a * b);
    if (std::min(a, b) < 18) {
        score = score * std::min(a, b) / 18;
    }
    return std::min(score, std::int64_t{1000});
}

std::int64_t FinalScore(const Evaluation& e, std::int64_t score) {
    if (score >= 180 && score <= 310 && e.coverage >= 0.4F && e.matchedRatio >= 0.45F &&
        e.distanceMedian <= 10.5F && e.angleMedian <= 12.0F) {
        score += 10;
    }
    if (score < 290 || score > 400) {
        return score;
    }
    std::int64_t level = 1;
    if (e.coverage >= 0.4F && e.matchedRatio >= 0.45F && e.distanceMedian <= 9.5F &&
        e.angleMedian <= 12.0F) {
        level = 0;
    }
    if (e.coverage < 0.38F || e.distanceMedian > 11.0F || e.angleMedian > 14.0F) {
        level = 2;
    }
    if (e.coverage < 0.32F || e.distanceMedian > 12.5F || e.angleMedian > 18.0F) {
        level = 3;
    }
    if (e.coverage < 0.4F && e.matchedRatio > 0.55F) {
        level = 4;
    }
    return score - 10 * level;
}

float Degrees(int rotation) {
    float degrees = static_cast<float>(rotation) * 1.40625F;
    while (degrees > 180.0F) {
        degrees -= 360.0F;
    }
    while (degrees <= -180.0F) {
        degrees += 360.0F;
    }
    return degrees;
}

}  // namespace orl::naive
