#include "bench/point_sets.h"

#include <cstdint>
#include <random>

#include "bench/loaded_record.h"

namespace orl::bench {

std::vector<PointSet> RandomPointSets(std::size_t points) {
    constexpr std::size_t kPointSets = 64;
    constexpr std::uint32_t kSeed = 20240229;
    constexpr unsigned kSidePixels = 400;
    std::mt19937 random(kSeed);
    std::vector<PointSet> sets(kPointSets);
    for (PointSet& set : sets) {
        while (set.size() < 2 * points) {
            set.push_back(static_cast<double>(random() % kSidePixels));
        }
    }
    return sets;
}

std::vector<matcher::MinutiaList> MinutiaeOf(const RecordSet& set) {
    std::vector<matcher::MinutiaList> fingers;
    for (const Record& record : set.records) {
        fingers.push_back(Load<matcher::FullLoadedTemplate>(record).fingers.front().minutiae);
    }
    return fingers;
}

std::vector<PointSet> PointSetsOf(const RecordSet& set) {
    std::vector<PointSet> sets;
    for (const matcher::MinutiaList& minutiae : MinutiaeOf(set)) {
        PointSet points;
        for (const matcher::Minutia& minutia : minutiae) {
            points.push_back(minutia.x);
            points.push_back(minutia.y);
        }
        sets.push_back(std::move(points));
    }
    return sets;
}

std::size_t MeanPoints(const std::vector<PointSet>& sets) {
    std::size_t points = 0;
    for (const PointSet& set : sets) {
        points += set.size() / 2;
    }
    return points / sets.size();
}

}  // namespace orl::bench
