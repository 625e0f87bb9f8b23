// The second matcher's alignment: every pair as an anchor, every alignment counted in full.

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

#include "tests/support/naive_arithmetic.h"
#include "tests/support/naive_matching.h"

namespace orl::naive {
namespace {

// Box area of one finger's vertices, in whole grid units.
template <typename Side>
float AreaOf(const std::vector<MinutiaPair>& pairs, Side side) {
    std::set<int> xs;
    std::set<int> ys;
    for (const MinutiaPair& pair : pairs) {
        xs.insert(side(pair).x);
        ys.insert(side(pair).y);
    }
    return static_cast<float>((*xs.rbegin() - *xs.begin() + 1) * (*ys.rbegin() - *ys.begin() + 1));
}

const TriangleVertex& SideA(const MinutiaPair& pair) {
    return pair.first;
}
const TriangleVertex& SideB(const MinutiaPair& pair) {
    return pair.second;
}

float Median(const std::multiset<float>& values) {
    if (values.empty()) {
        return 0.0F;
    }
    const std::vector<float> sorted(values.begin(), values.end());
    const std::size_t n = sorted.size();
    return n % 2 == 1 ? sorted[n / 2] : (sorted[n / 2] + sorted[n / 2 - 1]) * 0.5F;
}

float UnitClamped(float value) {
    return value < 0.0F ? 0.0F : value > 1.0F ? 1.0F : value;
}

// Squared residual in grid units and direction residual in steps of a pair that agrees.
using Residual = std::pair<float, int>;

// A rotation with its cosine and sine.
struct Rotation {
    explicit Rotation(int turnSteps)
        : steps(turnSteps),
          c(std::cos(static_cast<float>(turnSteps) * kRadiansPerStep)),
          s(std::sin(static_cast<float>(turnSteps) * kRadiansPerStep)) {}

    static constexpr float kRadiansPerStep = 0.024639942F;  // 2 pi / 255
    int steps;
    float c;
    float s;
};

std::optional<Residual> Agreement(const MinutiaPair& anchor,
                                  const MinutiaPair& pair,
                                  const Rotation& rotation) {
    const auto& [steps, c, s] = rotation;
    const auto& [a0, b0] = anchor;
    const auto& [a, b] = pair;
    const float dx = static_cast<float>(a.x) - static_cast<float>(a0.x);
    const float dy = static_cast<float>(a.y) - static_cast<float>(a0.y);
    const float x = (static_cast<float>(b0.x) + dx * c) - dy * s;
    const float y = (static_cast<float>(b0.y) + dx * s) + dy * c;
    const float bx = b.x;
    const float by = b.y;
    const float squared = (x - bx) * (x - bx) + (y - by) * (y - by);
    const int direction = LinesApart(b.angle, Mod256(a.angle + steps));
    const int relative = Apart(Fold(a.angle, a0.angle), Fold(b.angle, b0.angle));
    if (squared > 324.0F || direction >= 44 || relative >= 36) {
        return std::nullopt;
    }
    return Residual{squared, direction};
}

auto OrderOf(const Evaluation& e) {
    return std::tuple(e.count, e.matchedRatio, e.coverage, -e.distanceMedian, -e.angleMedian);
}

}  // namespace

Evaluation Evaluate(const std::vector<MinutiaPair>& pairs,
                    std::size_t anchor,
                    int rotation,
                    std::uint64_t countA,
                    std::uint64_t countB) {
    std::vector<MinutiaPair> agreeing = {pairs[anchor]};
    std::multiset<float> distances;
    std::multiset<float> angles;
    const Rotation turn(rotation);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const auto residual = Agreement(pairs[anchor], pairs[i], turn);
        if (i != anchor && residual) {
            agreeing.push_back(pairs[i]);
            distances.insert(std::sqrt(residual->first));
            angles.insert(static_cast<float>(residual->second) * 1.40625F);
        }
    }
    const float coverageA = UnitClamped(AreaOf(agreeing, SideA) / AreaOf(pairs, SideA));
    const float coverageB = UnitClamped(AreaOf(agreeing, SideB) / AreaOf(pairs, SideB));
    const std::uint64_t divisor = std::max<std::uint64_t>(std::min(countA, countB), 1);
    const float ratio = static_cast<float>(agreeing.size()) / static_cast<float>(divisor);
    return {static_cast<int>(agreeing.size()),
            anchor,
            rotation,
            Median(distances),
            Median(angles),
            (coverageA + coverageB) * 0.5F,
            UnitClamped(ratio)};
}

Evaluation BestAlignment(const std::vector<MinutiaPair>& pairs,
                         std::uint64_t countA,
                         std::uint64_t countB,
                         bool refine) {
    std::multimap<int, Evaluation, std::greater<>> hypotheses;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const int straight = pairs[i].second.angle - pairs[i].first.angle;
        for (int rotation : {straight, Mod256(straight + 128)}) {
            const Evaluation e = Evaluate(pairs, i, rotation, countA, countB);
            hypotheses.emplace(e.count, e);
        }
    }
    Evaluation best = hypotheses.begin()->second;
    int rank = 0;
    for (auto it = hypotheses.begin(); refine && it != hypotheses.end() && rank < 10;
         ++it, ++rank) {
        for (int k = -24; k <= 24; k += 2) {
            const int delta = static_cast<int>(std::lroundf(static_cast<float>(k) * 0.7111111F));
            const int rotation = Mod256(it->second.rotation + delta);
            const Evaluation e = Evaluate(pairs, it->second.anchor, rotation, countA, countB);
            best = OrderOf(e) > OrderOf(best) ? e : best;
        }
    }
    return best;
}

}  // namespace orl::naive
