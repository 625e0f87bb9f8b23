#pragma once

// A second, plain construction of the triangulation, written step by step with bare arrays and
// nothing shared with the shipped code: what the mesh is compared with, entry by entry. It also
// tells when an edge flip looked for a hull entry and did not find it.

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace orl::test {

struct PlainSweep {
    std::vector<std::uint64_t> vertices;
    std::vector<std::uint64_t> twins;
    std::vector<std::uint64_t> hullNext;
    std::uint64_t hullStart = 0;

    // Flips at the hull whose walk found no entry to move: afterwards twins, hull entries and the
    // shape of the mesh are not guaranteed.
    int lostHullEntries = 0;
    // The most flips that joining one triangle took.
    int mostFlips = 0;
};

// Triangulates x0, y0, x1, y1, ...; nothing when no triangle can be formed.
std::optional<PlainSweep> SweepPlainly(std::span<const double> points);

}  // namespace orl::test
