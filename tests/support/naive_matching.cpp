#include "tests/support/naive_matching.h"

#include <algorithm>
#include <optional>
#include <tuple>

#include "tests/support/naive_score.h"

namespace orl::naive {
namespace {

auto OrderOf(const FingerMatchResult& r) {
    return std::tuple(r.score, r.matchedCount, r.matchedRatio, r.coverage, -r.distanceMedian);
}

}  // namespace

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
