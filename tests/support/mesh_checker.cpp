#include "tests/support/mesh_checker.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

namespace orl::test {

namespace {

using matcher::HalfEdge;
using matcher::NextHalfEdge;
using matcher::NoIndex;
using matcher::PointIndex;
using matcher::PrevHalfEdge;

// Products of four coordinates of 26 bits need more than 64.
__extension__ using Wide = __int128;

using Spot = std::pair<std::int64_t, std::int64_t>;  // x, y

// Twice the signed area of a, b, c.
std::int64_t DoubledArea(const Spot& a, const Spot& b, const Spot& c) {
    return (b.first - a.first) * (c.second - a.second) -
           (b.second - a.second) * (c.first - a.first);
}

// How far p lies inside the circle through the corners of a triangle in the mesh's winding: above 0
// inside, 0 on the circle. `magnitude` is the sum of the terms without their signs, a measure of
// what rounding can do to the value.
struct CirclePosition {
    Wide inside;
    Wide magnitude;
};

CirclePosition PositionInCircle(const Spot& a, const Spot& b, const Spot& c, const Spot& p) {
    CirclePosition position{0, 0};
    const auto addTerms = [&](const Spot& lifted, const Spot& q, const Spot& r) {
        const Wide x = lifted.first - p.first;
        const Wide y = lifted.second - p.second;
        const Wide qx = q.first - p.first;
        const Wide qy = q.second - p.second;
        const Wide rx = r.first - p.first;
        const Wide ry = r.second - p.second;
        const auto magnitude = [](Wide value) { return value < 0 ? -value : value; };
        position.inside -= (x * x + y * y) * (qx * ry - qy * rx);
        position.magnitude += (x * x + y * y) * (magnitude(qx * ry) + magnitude(qy * rx));
    };
    addTerms(a, b, c);
    addTerms(b, c, a);
    addTerms(c, a, b);
    return position;
}

class Checker {
  public:
    Checker(const matcher::DelaunayMesh& mesh, std::span<const double> points) : mesh_(mesh) {
        for (std::size_t i = 0; i + 1 < points.size(); i += 2) {
            spots_.emplace_back(static_cast<std::int64_t>(points[i]),
                                static_cast<std::int64_t>(points[i + 1]));
        }
        distinct_.insert(spots_.begin(), spots_.end());
    }

    std::string FirstBrokenRule() {
        using Rule = std::string (Checker::*)();
        constexpr Rule kRules[] = {&Checker::CheckSizes,
                                   &Checker::CheckCorners,
                                   &Checker::CheckWinding,
                                   &Checker::CheckTwins,
                                   &Checker::CheckRing,
                                   &Checker::CheckRingEdges,
                                   &Checker::CheckConvexity,
                                   &Checker::CheckEverySpotOnce,
                                   &Checker::CheckCount,
                                   &Checker::CheckArea,
                                   &Checker::CheckEdgesAgainstOpposites,
                                   &Checker::CheckCirclesAgainstAll};
        for (const Rule rule : kRules) {
            if (std::string broken = (this->*rule)(); !broken.empty()) {
                return broken;
            }
        }
        return {};
    }

  private:
    std::string CheckSizes();
    std::string CheckCorners();
    std::string CheckWinding();
    std::string CheckTwins();
    std::string CheckRing();
    std::string CheckRingEdges();
    std::string CheckConvexity();
    std::string CheckEverySpotOnce();
    std::string CheckCount();
    std::string CheckArea();
    std::string CheckEdgesAgainstOpposites();
    std::string CheckCirclesAgainstAll();

    std::size_t HalfEdges() const { return mesh_.vertices().size(); }
    PointIndex Start(HalfEdge e) const { return mesh_.vertices()[e]; }
    PointIndex End(HalfEdge e) const { return mesh_.vertices()[NextHalfEdge(e)]; }
    const Spot& SpotOf(PointIndex i) const { return spots_[i]; }
    std::vector<Spot> Outline() const;
    bool ValuesAreExact() const;

    const matcher::DelaunayMesh& mesh_;
    std::vector<Spot> spots_;
    std::set<Spot> distinct_;
    std::vector<PointIndex> ring_;
};

std::string Named(const std::string& what, std::uint64_t index, const std::string& rule) {
    return what + " " + std::to_string(index) + " " + rule;
}

std::string Checker::CheckSizes() {
    if (HalfEdges() == 0 || HalfEdges() % matcher::kHalfEdgesPerTriangle != 0) {
        return "the list of corners is no list of triangles";
    }
    return mesh_.twins().size() == HalfEdges() ? "" : "there is not one twin for every half-edge";
}

std::string Checker::CheckCorners() {
    for (HalfEdge e = 0; e < HalfEdges(); ++e) {
        if (Start(e) >= spots_.size()) {
            return Named("half-edge", e, "starts at no point of the set");
        }
    }
    for (HalfEdge e = 0; e < HalfEdges(); ++e) {
        if (SpotOf(Start(e)) == SpotOf(End(e))) {
            return Named("half-edge", e, "joins two points at one spot");
        }
    }
    return {};
}

std::string Checker::CheckWinding() {
    for (HalfEdge e = 0; e < HalfEdges(); e += matcher::kHalfEdgesPerTriangle) {
        if (DoubledArea(SpotOf(Start(e)), SpotOf(Start(e + 1)), SpotOf(Start(e + 2))) >= 0) {
            return Named("triangle", matcher::TriangleOf(e), "has the wrong winding");
        }
    }
    return {};
}

std::string Checker::CheckTwins() {
    for (HalfEdge e = 0; e < HalfEdges(); ++e) {
        const HalfEdge twin = mesh_.twins()[e];
        if (twin == NoIndex) {
            continue;
        }
        if (twin >= HalfEdges() || mesh_.twins()[twin] != e) {
            return Named("half-edge", e, "has a twin that does not name it");
        }
        if (Start(e) != End(twin) || Start(twin) != End(e)) {
            return Named("half-edge", e, "and its twin run along different edges");
        }
    }
    return {};
}

std::string Checker::CheckRing() {
    PointIndex i = mesh_.hullStart();
    do {
        if (i >= spots_.size() || ring_.size() == spots_.size()) {
            return "the hull ring does not come back to its start";
        }
        ring_.push_back(i);
        i = mesh_.hullNext()[i];
    } while (i != mesh_.hullStart());
    std::set<PointIndex> visited(ring_.begin(), ring_.end());
    return visited.size() == ring_.size() ? "" : "the hull ring visits a point twice";
}

std::string Checker::CheckRingEdges() {
    std::set<std::pair<PointIndex, PointIndex>> ringEdges;
    for (const PointIndex i : ring_) {
        ringEdges.emplace(i, mesh_.hullNext()[i]);
    }
    for (HalfEdge e = 0; e < HalfEdges(); ++e) {
        if (mesh_.twins()[e] == NoIndex && ringEdges.erase({Start(e), End(e)}) == 0) {
            return Named("half-edge", e, "has no twin and is no edge of the hull ring");
        }
    }
    return ringEdges.empty() ? "" : "an edge of the hull ring is no half-edge without a twin";
}

std::string Checker::CheckConvexity() {
    for (const PointIndex i : ring_) {
        for (const Spot& spot : distinct_) {
            if (DoubledArea(SpotOf(i), SpotOf(mesh_.hullNext()[i]), spot) > 0) {
                return Named("hull point", i, "starts a ring edge with a point outside");
            }
        }
    }
    return {};
}

std::string Checker::CheckEverySpotOnce() {
    const std::set<PointIndex> corners(mesh_.vertices().begin(), mesh_.vertices().end());
    std::set<Spot> used;
    for (const PointIndex i : corners) {
        if (!used.insert(SpotOf(i)).second) {
            return Named("point", i, "is a corner beside another one at its spot");
        }
    }
    return used == distinct_ ? "" : "a spot of the set is no corner";
}

// Spots on the outline of the set's convex hull, those within a straight side included: an upper
// and a lower chain over the spots from left to right, turning one way or not at all.
std::vector<Spot> Checker::Outline() const {
    std::set<Spot> outline;
    for (const std::int64_t side : {1, -1}) {
        std::vector<Spot> chain;
        for (const Spot& spot : distinct_) {
            while (chain.size() >= 2 &&
                   side * DoubledArea(chain[chain.size() - 2], chain.back(), spot) > 0) {
                chain.pop_back();
            }
            chain.push_back(spot);
        }
        outline.insert(chain.begin(), chain.end());
    }
    return {outline.begin(), outline.end()};
}

std::string Checker::CheckCount() {
    const std::size_t triangles = HalfEdges() / matcher::kHalfEdgesPerTriangle;
    const std::size_t expected = 2 * distinct_.size() - Outline().size() - 2;
    if (triangles == expected) {
        return {};
    }
    return "there are " + std::to_string(triangles) + " triangles, not " + std::to_string(expected);
}

std::string Checker::CheckArea() {
    std::int64_t triangles = 0;
    for (HalfEdge e = 0; e < HalfEdges(); e += matcher::kHalfEdgesPerTriangle) {
        triangles += DoubledArea(SpotOf(Start(e)), SpotOf(Start(e + 1)), SpotOf(Start(e + 2)));
    }
    std::int64_t hull = 0;
    const Spot& anchor = SpotOf(ring_.front());
    for (const PointIndex i : ring_) {
        hull += DoubledArea(anchor, SpotOf(i), SpotOf(mesh_.hullNext()[i]));
    }
    return triangles == hull ? "" : "the triangles do not add up to the hull's area";
}

std::string Checker::CheckEdgesAgainstOpposites() {
    // A double holds whole numbers of 53 bits. Of larger values each of the at most eight roundings
    // behind a sum of terms loses at most one part in 2^53.
    constexpr int kExactBits = 53;
    constexpr int kRoundingsBits = 3;
    for (HalfEdge e = 0; e < HalfEdges(); ++e) {
        const HalfEdge twin = mesh_.twins()[e];
        if (twin == NoIndex) {
            continue;
        }
        const CirclePosition position = PositionInCircle(SpotOf(Start(e)),
                                                         SpotOf(End(e)),
                                                         SpotOf(Start(PrevHalfEdge(e))),
                                                         SpotOf(Start(PrevHalfEdge(twin))));
        const bool exact = position.magnitude >> kExactBits == 0;
        const Wide tolerance = exact ? 0 : position.magnitude >> (kExactBits - kRoundingsBits);
        if (position.inside > tolerance) {
            return Named("half-edge", e, "has the opposite point of its twin inside its circle");
        }
    }
    return {};
}

bool Checker::ValuesAreExact() const {
    constexpr std::int64_t kExactWidth = 4096;
    const auto [left, right] = std::minmax_element(distinct_.begin(), distinct_.end());
    const auto [low, high] =
        std::minmax_element(distinct_.begin(), distinct_.end(), [](const Spot& p, const Spot& q) {
            return p.second < q.second;
        });
    return right->first - left->first < kExactWidth && high->second - low->second < kExactWidth;
}

std::string Checker::CheckCirclesAgainstAll() {
    if (!ValuesAreExact()) {
        return {};
    }
    for (HalfEdge e = 0; e < HalfEdges(); e += matcher::kHalfEdgesPerTriangle) {
        for (const Spot& spot : distinct_) {
            const auto position = PositionInCircle(
                SpotOf(Start(e)), SpotOf(Start(e + 1)), SpotOf(Start(e + 2)), spot);
            if (position.inside > 0) {
                return Named("triangle", matcher::TriangleOf(e), "has a point inside its circle");
            }
        }
    }
    return {};
}

}  // namespace

std::string CheckMesh(const matcher::DelaunayMesh& mesh, std::span<const double> points) {
    return Checker(mesh, points).FirstBrokenRule();
}

}  // namespace orl::test
