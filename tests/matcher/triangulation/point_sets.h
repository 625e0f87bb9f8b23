#pragma once

// Families of point sets that triangulations find easy and hard, drawn from a seeded generator. The
// same seed gives the same sets on every platform.

#include <cstdint>
#include <ostream>
#include <random>
#include <span>
#include <vector>

namespace orl::test {

struct PointSetFamily {
    const char* name;
    std::vector<double> (*draw)(std::mt19937& random);  // x0, y0, x1, y1, ..., whole numbers
    int sets;
    // How many of the sets may lose a hull entry to a ring that is broken while a point is joined.
    // It takes points that see several hull edges past a thin triangle: sets that are nearly a
    // line.
    int mayLoseHullEntries;
};

std::ostream& operator<<(std::ostream& out, const PointSetFamily& family);

std::span<const PointSetFamily> PointSetFamilies();

}  // namespace orl::test
