#include "tests/support/plain_sweep.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

namespace orl::test {

namespace {

using Index = std::uint64_t;
constexpr Index kNone = ~Index{0};
constexpr double kLargest = 1.7976931348623157e308;
constexpr double kSmallest = 2.2250738585072014e-308;
constexpr double kTolerance = 2.220446049250313e-16;

class Sweep {
  public:
    explicit Sweep(std::span<const double> points) : xy_(points), n_(points.size() / 2) {}

    bool Build();
    PlainSweep TakeResult() {
        result_.hullNext = next_;
        result_.hullStart = hullStart_;
        return std::move(result_);
    }

  private:
    double X(Index i) const { return xy_[2 * i]; }
    double Y(Index i) const { return xy_[2 * i + 1]; }
    bool Sees(Index p, Index q, Index r) const;
    bool InsideCircle(Index a, Index b, Index c, Index p) const;
    std::array<double, 3> Circle(Index a, Index b, Index c) const;  // squared radius, centre
    double ToCentre(Index i) const;
    bool SameSpot(Index i, Index j) const;
    Index Bucket(Index i) const;
    bool FindSeed(std::array<Index, 3>& seed) const;
    void StartRing(const std::array<Index, 3>& seed);
    std::vector<Index> Order() const;
    void Join(Index i);
    Index RingNear(Index i) const;
    Index FillForward(Index i, Index next);
    Index FillBackward(Index i, Index e);
    Index Append(std::array<Index, 3> corners, std::array<Index, 3> neighbours);
    void Pair(Index a, Index b);
    Index FlipFrom(Index a);
    void FlipOne(Index a, Index b);

    std::span<const double> xy_;
    Index n_;
    PlainSweep result_;
    std::vector<Index> prev_, next_, edge_, buckets_;
    Index hullStart_ = 0;
    double centreX_ = 0.0, centreY_ = 0.0;
};

bool Sweep::Sees(Index p, Index q, Index r) const {
    return (Y(q) - Y(p)) * (X(r) - X(q)) - (X(q) - X(p)) * (Y(r) - Y(q)) < 0;
}

bool Sweep::InsideCircle(Index a, Index b, Index c, Index p) const {
    const double dx = X(a) - X(p), dy = Y(a) - Y(p);
    const double ex = X(b) - X(p), ey = Y(b) - Y(p);
    const double fx = X(c) - X(p), fy = Y(c) - Y(p);
    const double ap = dx * dx + dy * dy, bp = ex * ex + ey * ey, cp = fx * fx + fy * fy;
    return dx * (ey * cp - bp * fy) - dy * (ex * cp - bp * fx) + ap * (ex * fy - ey * fx) < 0;
}

std::array<double, 3> Sweep::Circle(Index a, Index b, Index c) const {
    const double dx = X(b) - X(a), dy = Y(b) - Y(a), ex = X(c) - X(a), ey = Y(c) - Y(a);
    const double bl = dx * dx + dy * dy, cl = ex * ex + ey * ey, d = dx * ey - dy * ex;
    if (bl == 0 || cl == 0 || d == 0) {
        return {kLargest, 0, 0};
    }
    const double x = ey * bl - dy * cl, y = dx * cl - ex * bl;
    return {((x * x + y * y) * ((1 / d) * 0.25)) / d,
            X(a) + (x * 0.5) * (1 / d),
            Y(a) + (y * 0.5) * (1 / d)};
}

double Sweep::ToCentre(Index i) const {
    const double dx = X(i) - centreX_, dy = Y(i) - centreY_;
    return dx * dx + dy * dy;
}

bool Sweep::SameSpot(Index i, Index j) const {
    return std::fabs(X(i) - X(j)) <= kTolerance && std::fabs(Y(i) - Y(j)) <= kTolerance;
}

Index Sweep::Bucket(Index i) const {
    const double dx = X(i) - centreX_, dy = Y(i) - centreY_;
    if (dx == 0 && dy == 0) {
        return 0;
    }
    const double p = dx / (std::fabs(dx) + std::fabs(dy));
    const double angle = dy > 0 ? (3 - p) * 0.25 : (1 + p) * 0.25;
    const auto key = static_cast<Index>(std::floor(angle * static_cast<double>(buckets_.size())));
    return key >= buckets_.size() ? key % buckets_.size() : key;
}

bool Sweep::FindSeed(std::array<Index, 3>& seed) const {
    double minX = kLargest, minY = kLargest, maxX = kSmallest, maxY = kSmallest;
    for (Index i = 0; i < n_; ++i) {
        minX = std::min(minX, X(i));
        minY = std::min(minY, Y(i));
        maxX = std::max(maxX, X(i));
        maxY = std::max(maxY, Y(i));
    }
    const double boxX = (minX + maxX) * 0.5, boxY = (minY + maxY) * 0.5;
    const auto smallest = [this](auto&& measure) {
        Index best = kNone;
        double bestValue = kLargest;
        for (Index i = 0; i < n_; ++i) {
            if (const double value = measure(i); value < bestValue) {
                bestValue = value;
                best = i;
            }
        }
        return best;
    };
    const auto squared = [](double dx, double dy) { return dx * dx + dy * dy; };
    const Index i0 = smallest([&](Index i) { return squared(X(i) - boxX, Y(i) - boxY); });
    if (i0 == kNone) {
        return false;
    }
    const Index i1 = smallest([&](Index i) {
        const double distance = squared(X(i) - X(i0), Y(i) - Y(i0));
        return distance > 0 ? distance : kLargest;
    });
    if (i1 == kNone) {
        return false;
    }
    const Index i2 =
        smallest([&](Index i) { return i == i0 || i == i1 ? kLargest : Circle(i0, i1, i)[0]; });
    if (i2 == kNone) {
        return false;
    }
    seed = Sees(i0, i1, i2) ? std::array{i0, i2, i1} : std::array{i0, i1, i2};
    return true;
}

void Sweep::StartRing(const std::array<Index, 3>& seed) {
    prev_.assign(n_, 0);
    next_.assign(n_, 0);
    edge_.assign(n_, 0);
    buckets_.assign(static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(n_)))), kNone);
    hullStart_ = seed[0];
    for (std::size_t corner = 0; corner < 3; ++corner) {
        next_[seed[corner]] = seed[(corner + 1) % 3];
        prev_[seed[corner]] = seed[(corner + 2) % 3];
        edge_[seed[corner]] = corner;
        buckets_[Bucket(seed[corner])] = seed[corner];
    }
    Append(seed, {kNone, kNone, kNone});
}

std::vector<Index> Sweep::Order() const {
    std::vector<Index> order(n_);
    std::iota(order.begin(), order.end(), Index{0});
    // Insertion sort: a point moves left past every point that it comes before.
    const auto before = [this](Index i, Index j) {
        if (const double diff = ToCentre(i) - ToCentre(j); diff != 0) {
            return diff < 0;
        }
        if (const double diff = X(i) - X(j); diff != 0) {
            return diff < 0;
        }
        return Y(i) - Y(j) < 0;
    };
    for (std::size_t k = 1; k < order.size(); ++k) {
        for (std::size_t m = k; m > 0 && before(order[m], order[m - 1]); --m) {
            std::swap(order[m], order[m - 1]);
        }
    }
    return order;
}

bool Sweep::Build() {
    std::array<Index, 3> seed{};
    if (!FindSeed(seed)) {
        return false;
    }
    const auto circle = Circle(seed[0], seed[1], seed[2]);
    centreX_ = circle[1];
    centreY_ = circle[2];
    StartRing(seed);
    Index previous = kNone;
    for (const Index i : Order()) {
        if (previous != kNone && SameSpot(i, previous)) {
            continue;
        }
        previous = i;
        if (!SameSpot(i, seed[0]) && !SameSpot(i, seed[1]) && !SameSpot(i, seed[2])) {
            Join(i);
        }
    }
    return true;
}

void Sweep::Join(Index i) {
    const Index start = RingNear(i);
    Index e = start;
    while (!Sees(i, e, next_[e])) {
        e = next_[e];
        if (e == start) {
            return;
        }
    }
    const Index t = Append({e, i, next_[e]}, {kNone, kNone, edge_[e]});
    edge_[i] = FlipFrom(t + 2);
    edge_[e] = t;
    const Index next = FillForward(i, next_[e]);
    if (e == start) {
        e = FillBackward(i, e);
    }
    prev_[i] = e;
    hullStart_ = e;
    prev_[next] = i;
    next_[e] = i;
    next_[i] = next;
    buckets_[Bucket(i)] = i;
    buckets_[Bucket(e)] = e;
}

// Where the search for an edge that the point sees begins.
Index Sweep::RingNear(Index i) const {
    Index s = kNone;
    for (std::size_t j = 0; j < buckets_.size(); ++j) {
        s = buckets_[(Bucket(i) + j) % buckets_.size()];
        if (s != kNone && next_[s] != s) {
            break;
        }
    }
    return prev_[s];
}

// Triangles with the edges from `next` on that the point sees; the ring's first point behind them.
Index Sweep::FillForward(Index i, Index next) {
    for (Index q = next_[next]; Sees(i, next, q); q = next_[next]) {
        const Index t = Append({next, i, q}, {edge_[i], kNone, edge_[next]});
        edge_[i] = FlipFrom(t + 2);
        next_[next] = next;
        next = q;
    }
    return next;
}

// The same from `e` backward; the ring's last point ahead of them.
Index Sweep::FillBackward(Index i, Index e) {
    for (Index q = prev_[e]; Sees(i, q, e); q = prev_[e]) {
        const Index t = Append({q, i, e}, {kNone, edge_[e], edge_[q]});
        FlipFrom(t + 2);
        edge_[q] = t;
        next_[e] = e;
        e = q;
    }
    return e;
}

Index Sweep::Append(std::array<Index, 3> corners, std::array<Index, 3> neighbours) {
    const Index t = result_.vertices.size();
    result_.vertices.insert(result_.vertices.end(), corners.begin(), corners.end());
    result_.twins.resize(t + 3, kNone);
    for (std::size_t corner = 0; corner < 3; ++corner) {
        Pair(t + corner, neighbours[corner]);
    }
    return t;
}

void Sweep::Pair(Index a, Index b) {
    result_.twins[a] = b;
    if (b != kNone) {
        result_.twins[b] = a;
    }
}

Index Sweep::FlipFrom(Index a) {
    std::vector<Index> waiting;
    int flips = 0;
    while (true) {
        const Index b = result_.twins[a];
        const Index before = a - a % 3 + (a + 2) % 3;
        const std::vector<Index>& v = result_.vertices;
        if (b != kNone &&
            InsideCircle(v[before], v[a], v[a - a % 3 + (a + 1) % 3], v[b - b % 3 + (b + 2) % 3])) {
            FlipOne(a, b);
            waiting.push_back(b - b % 3 + (b + 1) % 3);
            result_.mostFlips = std::max(result_.mostFlips, ++flips);
        } else if (waiting.empty()) {
            return before;
        } else {
            a = waiting.back();
            waiting.pop_back();
        }
    }
}

void Sweep::FlipOne(Index a, Index b) {
    const Index ar = a - a % 3 + (a + 2) % 3;
    const Index bl = b - b % 3 + (b + 2) % 3;
    result_.vertices[a] = result_.vertices[bl];
    result_.vertices[b] = result_.vertices[ar];
    const Index outer = result_.twins[bl];
    if (outer == kNone) {
        Index e = hullStart_;
        bool found = edge_[e] == bl;
        while (!found && next_[e] != hullStart_ && next_[e] != e) {
            e = next_[e];
            found = edge_[e] == bl;
        }
        if (found) {
            edge_[e] = a;
        } else {
            ++result_.lostHullEntries;
        }
    }
    Pair(a, outer);
    Pair(b, result_.twins[ar]);
    Pair(ar, bl);
}

}  // namespace

std::optional<PlainSweep> SweepPlainly(std::span<const double> points) {
    Sweep sweep(points);
    if (!sweep.Build()) {
        return std::nullopt;
    }
    return sweep.TakeResult();
}

}  // namespace orl::test
