#include "tests/support/naive_matching.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <tuple>

namespace orl::naive {
namespace {

// x - y when x is greater, else x - y + 255.
int Fold(int x, int y) {
    return x > y ? x - y : x - y + 255;
}

// Smaller arc between two values of the 255-step turn.
int Apart(int x, int y) {
    return std::min(255 - std::abs(x - y), std::abs(x - y));
}

// The same between undirected lines.
int LinesApart(int x, int y) {
    return std::min(128 - Apart(x, y), Apart(x, y));
}

int Mod256(int value) {
    return ((value % 256) + 256) % 256;
}

int Wrapped8(int value) {
    return Mod256(value) >= 128 ? Mod256(value) - 256 : Mod256(value);
}

int BearingSteps(int dy, int dx) {
    constexpr float kStepsPerRadian = 40.58451F;  // 255 / (2 pi)
    const float angle = std::atan2(static_cast<float>(dy), static_cast<float>(dx));
    return static_cast<int>(std::lroundf(angle * kStepsPerRadian));
}

int LengthByte(const TriangleVertex& p, const TriangleVertex& q) {
    const double dx = p.x - q.x;
    const double dy = p.y - q.y;
    return Mod256(static_cast<int>(std::lround(std::sqrt(dx * dx + dy * dy))));
}

int BearingByte(const TriangleVertex& from, const TriangleVertex& to) {
    return Mod256(BearingSteps(to.y - from.y, to.x - from.x));
}

// Largest difference of the three kinds, each below its limit, under one order; nothing otherwise.
std::optional<std::array<int, 3>> LargestDifferences(const TriangleFeature& a,
                                                     const TriangleFeature& b,
                                                     int shift) {
    const auto va = [&](int j) { return a.vertices[(j + shift) % 3]; };
    const auto vb = [&](int j) { return b.vertices[j % 3]; };
    int descriptor = 0;
    int relative = 0;
    int edge = 0;
    for (int j = 0; j < 3; ++j) {
        const int turned = Mod256(Mod256(vb(0).angle - va(0).angle) + va(j).angle);
        if (LinesApart(turned, vb(j).angle) >= 43) {
            return std::nullopt;
        }
        descriptor = std::max(descriptor, std::abs(b.sides[j] - a.sides[(j + shift) % 3]));
        relative =
            std::max(relative,
                     Apart(Fold(vb(j + 1).angle, vb(j).angle), Fold(va(j + 1).angle, va(j).angle)));
        for (int other : {j + 1, j + 2}) {
            edge = std::max(edge,
                            Apart(Fold(BearingByte(vb(other), vb(j)), vb(j).angle),
                                  Fold(BearingByte(va(other), va(j)), va(j).angle)));
        }
    }
    if (descriptor >= 18 || relative >= 35 || edge >= 35) {
        return std::nullopt;
    }
    return std::array<int, 3>{descriptor, relative, edge};
}

bool IsCandidate(const TriangleFeature& a, const TriangleFeature& b) {
    const int key = Wrapped8(a.sides[0]);
    const int other = Wrapped8(b.sides[0]);
    if (other < Wrapped8(key - 18) || other > Wrapped8(key + 18)) {
        return false;
    }
    bool near = true;
    for (int m = 0; m < 3; ++m) {
        near = near && std::abs(Wrapped8(b.sides[m] - a.sides[m])) <= 17;
    }
    return near;
}

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

TriangleFeature Rebuilt(std::array<TriangleVertex, 3> v) {
    const int cx = (((v[0].x + v[1].x) >> 1) + v[2].x) >> 1;
    const int cy = (((v[0].y + v[1].y) >> 1) + v[2].y) >> 1;
    const auto bearing = [&](const TriangleVertex& p) { return BearingSteps(p.y - cy, p.x - cx); };
    for (const auto& [i, j] : {std::pair{0U, 2U}, std::pair{0U, 1U}, std::pair{1U, 2U}}) {
        if (bearing(v[i]) > bearing(v[j])) {
            std::swap(v[i], v[j]);
        }
    }
    std::array<int, 3> lengths = {Wrapped8(LengthByte(v[0], v[1])),
                                  Wrapped8(LengthByte(v[1], v[2])),
                                  Wrapped8(LengthByte(v[2], v[0]))};
    std::sort(lengths.begin(), lengths.end(), std::greater<>());
    TriangleFeature feature{{v[0], v[1], v[2]}, {}};
    bool filled = false;
    for (unsigned i = 0; i < 3; ++i) {
        feature.sides[i] = filled ? std::uint8_t{255} : static_cast<std::uint8_t>(lengths[i]);
        filled = filled || lengths[i] < 0;
    }
    feature.sides[3] = filled ? std::uint8_t{255} : std::uint8_t{0};
    return feature;
}

TriangleVertex QuarterTurned(TriangleVertex v) {
    const auto x = static_cast<std::uint8_t>(255 - v.y);
    return {x, v.x, static_cast<std::uint8_t>(Mod256(v.angle + 64)), v.type};
}

auto OrderOf(const FingerMatchResult& r) {
    return std::tuple(r.score, r.matchedCount, r.matchedRatio, r.coverage, -r.distanceMedian);
}

auto OrderOf(const Evaluation& e) {
    return std::tuple(e.count, e.matchedRatio, e.coverage, -e.distanceMedian, -e.angleMedian);
}

}  // namespace

int TriangleSimilarity(const TriangleFeature& a, const TriangleFeature& b) {
    std::set<int> costs;
    for (int shift = 0; shift < 3; ++shift) {
        if (const auto d = LargestDifferences(a, b, shift)) {
            costs.insert(((*d)[2] * 1024 / 35) * ((*d)[1] * 1024 / 35) * ((*d)[0] * 1024 / 18));
        }
    }
    return costs.empty() ? 0 : 1024 - *costs.begin() / 1048576;
}

std::vector<TrianglePair> SearchTrianglePairs(std::span<const TriangleFeature> a,
                                              std::span<const TriangleFeature> b) {
    std::vector<TrianglePair> pairs;
    for (std::size_t i = 0; i < a.size(); ++i) {
        for (std::size_t j = 0; j < b.size(); ++j) {
            const int similarity = IsCandidate(a[i], b[j]) ? TriangleSimilarity(a[i], b[j]) : 0;
            if (similarity > 0) {
                pairs.push_back({similarity, i, j});
            }
        }
    }
    return pairs;
}

std::vector<TrianglePair> Ranked(const std::vector<TrianglePair>& pairs) {
    std::multimap<int, TrianglePair, std::greater<>> bySimilarity;
    for (const TrianglePair& pair : pairs) {
        bySimilarity.emplace(pair.similarity, pair);
    }
    std::vector<TrianglePair> ranked;
    for (const auto& [similarity, pair] : bySimilarity) {
        ranked.push_back(pair);
    }
    return ranked;
}

std::vector<MinutiaPair> Consolidate(const std::vector<TrianglePair>& trianglePairs,
                                     std::span<const TriangleFeature> a,
                                     std::span<const TriangleFeature> b) {
    std::vector<MinutiaPair> result;
    if (trianglePairs.size() < 3) {
        return result;
    }
    std::set<std::pair<int, int>> takenA;
    std::set<std::pair<int, int>> takenB;
    for (const TrianglePair& pair : Ranked(trianglePairs)) {
        for (int j = 0; j < 3; ++j) {
            const TriangleVertex& va = a[pair.a].vertices[j];
            const TriangleVertex& vb = b[pair.b].vertices[j];
            const bool bothTaken =
                takenA.count({va.x, va.y}) == 1 && takenB.count({vb.x, vb.y}) == 1;
            takenA.insert({va.x, va.y});
            takenB.insert({vb.x, vb.y});
            if (!bothTaken) {
                result.emplace_back(va, vb);
            }
        }
    }
    return result;
}

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

std::vector<TriangleFeature> Turned(std::span<const TriangleFeature> triangles, int quarterTurns) {
    std::multimap<std::tuple<int, int, int>, TriangleFeature> sorted;
    for (const TriangleFeature& triangle : triangles) {
        std::array<TriangleVertex, 3> v = {
            triangle.vertices[0], triangle.vertices[1], triangle.vertices[2]};
        for (int turn = 0; turn < quarterTurns; ++turn) {
            std::transform(v.begin(), v.end(), v.begin(), QuarterTurned);
        }
        const TriangleFeature f = Rebuilt(v);
        const auto key =
            std::tuple(Wrapped8(f.sides[0]), Wrapped8(f.sides[1]), Wrapped8(f.sides[2]));
        sorted.emplace(key, f);
    }
    std::vector<TriangleFeature> result;
    for (const auto& [key, feature] : sorted) {
        result.push_back(feature);
    }
    return result;
}

FingerMatchResult MatchFinger(const FingerFeatures& a, const FingerFeatures& b, int quarterTurns) {
    const std::vector<TriangleFeature> turned =
        quarterTurns == 0 ? b.triangles : Turned(b.triangles, quarterTurns);
    const auto pairs = Consolidate(SearchTrianglePairs(a.triangles, turned), a.triangles, turned);
    if (pairs.size() < 3) {
        return {};
    }
    Evaluation best = BestAlignment(pairs, a.minutiaCount, b.minutiaCount, false);
    if (best.count < 4) {
        return {};
    }
    const auto score = [&] {
        return CountScore(std::min(best.count, 65535),
                          static_cast<std::int64_t>(a.minutiaCount),
                          static_cast<std::int64_t>(b.minutiaCount));
    };
    const bool refined = score() >= 180 && score() <= 400;
    if (refined) {
        best = BestAlignment(pairs, a.minutiaCount, b.minutiaCount, true);
    }
    FingerMatchResult result;
    result.score = static_cast<std::uint16_t>(FinalScore(best, score()));
    result.pairCount = static_cast<std::uint16_t>(std::min<std::size_t>(pairs.size(), 65535));
    result.matchedCount = static_cast<std::uint16_t>(std::min(best.count, 65535));
    result.rotationDegrees = Degrees(best.rotation);
    result.orientation = static_cast<std::uint32_t>(quarterTurns);
    result.distanceMedian = best.distanceMedian;
    result.angleMedian = best.angleMedian;
    result.coverage = best.coverage;
    result.matchedRatio = best.matchedRatio;
    result.refined = refined ? 1U : 0U;
    return result;
}

TemplateMatchResult MatchTemplates(std::span<const FingerFeatures> first,
                                   std::span<const FingerFeatures> second) {
    std::optional<FingerMatchResult> winner;
    TemplateMatchResult result;
    for (std::size_t i = 0; i < first.size(); ++i) {
        for (std::size_t j = 0; j < second.size(); ++j) {
            FingerMatchResult best = MatchFinger(first[i], second[j], 0);
            for (int turns = 1; turns < 4; ++turns) {
                const FingerMatchResult r = MatchFinger(first[i], second[j], turns);
                best = OrderOf(r) > OrderOf(best) ? r : best;
            }
            if (!winner || OrderOf(best) > OrderOf(*winner)) {
                winner = best;
                result.firstFingerIndex = i;
                result.secondFingerIndex = j;
            }
        }
    }
    if (winner) {
        result.score = winner->score;
        result.pairCount = winner->pairCount;
        result.matchedCount = winner->matchedCount;
        result.rotationDegrees = winner->rotationDegrees;
        result.orientation = winner->orientation;
        result.distanceMedian = winner->distanceMedian;
        result.angleMedian = winner->angleMedian;
        result.coverage = winner->coverage;
        result.matchedRatio = winner->matchedRatio;
        result.refined = winner->refined;
    }
    return result;
}

}  // namespace orl::naive
