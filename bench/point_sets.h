#pragma once

// The point sets that triangulations are measured on: x0, y0, x1, y1, ..., whole numbers.

#include <cstddef>
#include <vector>

#include "bench/bench_records.h"
#include "matcher/features/finger_model.h"

namespace orl::bench {

using PointSet = std::vector<double>;

// Many sets, to be taken in turn, so that no branch is learned by heart; the same in every run.
std::vector<PointSet> RandomPointSets(std::size_t points);

// The minutiae of the first finger of each record. Throws: std::runtime_error for a record that
// does not load.
std::vector<matcher::MinutiaList> MinutiaeOf(const RecordSet& set);

// Their positions.
std::vector<PointSet> PointSetsOf(const RecordSet& set);

// The mean number of points of a set.
std::size_t MeanPoints(const std::vector<PointSet>& sets);

}  // namespace orl::bench
