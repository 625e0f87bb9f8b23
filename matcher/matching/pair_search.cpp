#include "matcher/matching/pair_search.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "matcher/features/angles.h"
#include "matcher/features/lookup_tables.h"

namespace orl::matcher {
namespace {

using CornerOrder = std::array<std::size_t, 3>;

constexpr std::array<CornerOrder, 3> kCyclicOrders = {{{0, 1, 2}, {1, 2, 0}, {2, 0, 1}}};

constexpr int kKeyReachGridUnits = 18;           // half the width of the key range
constexpr int kMaxDescriptorDifference = 17;     // grid units, between candidates
constexpr int kDirectionRejectedFromSteps = 43;  // axial, each vertex after the rotation
constexpr int kDescriptorRejectedFromGridUnits = 18;
constexpr int kRelativeRejectedFromSteps = 35;  // directions of neighbouring vertices
constexpr int kEdgeRejectedFromSteps = 35;      // edges against the direction of their end
constexpr std::int32_t kCostScale = 1024;       // a factor at its limit would cost this much
constexpr std::int32_t kNoPassingOrderCost = std::int32_t{1} << 30;
constexpr std::int32_t kMaxSimilarity = 1024;
constexpr std::int32_t kCostPerSimilarityPoint = std::int32_t{1} << 20;
constexpr std::size_t kMinTrianglePairs = 3;
constexpr std::size_t kMinMinutiaPairs = 3;
constexpr std::size_t kDescriptorBytes = 3;  // of the four side bytes; the last carries no length

std::uint8_t lowByte(int value) {
    return static_cast<std::uint8_t>(value);
}

std::int8_t lowByteAsSigned(int value) {
    return static_cast<std::int8_t>(lowByte(value));
}

std::int8_t searchKey(const TriangleFeature& triangle) {
    return static_cast<std::int8_t>(triangle.sides[0]);
}

// Direction of the vector between two vertices as a byte.
//
// Deliberate: a negative bearing keeps its low 8 bits, -64 reads as 192, although its turn has 255
// steps.
std::uint8_t edgeDirection(const TriangleVertex& from, const TriangleVertex& to) {
    return lowByte(Bearing(static_cast<std::int16_t>(to.y - from.y),
                           static_cast<std::int16_t>(to.x - from.x)));
}

// Each test below compares the second triangle's corner j with the first triangle's corner
// order[j]. Those with a result give the largest difference met, or nothing when one is too large.

// Whether the vertices' directions agree as undirected lines, once the first triangle is turned so
// that its leading corner has the direction of the second's.
bool directionsAgree(const TriangleFeature& first,
                     const TriangleFeature& second,
                     const CornerOrder& order) {
    const int rotation = second.vertices[0].angle - first.vertices[order[0]].angle;
    for (std::size_t j = 0; j < order.size(); ++j) {
        const std::uint8_t expected = lowByte(rotation + first.vertices[order[j]].angle);
        if (AxialDifference(expected, second.vertices[j].angle) >= kDirectionRejectedFromSteps) {
            return false;
        }
    }
    return true;
}

std::optional<std::int32_t> largestDescriptorDifference(const TriangleFeature& first,
                                                        const TriangleFeature& second,
                                                        const CornerOrder& order) {
    std::int32_t largest = 0;
    for (std::size_t j = 0; j < order.size(); ++j) {
        const std::int32_t difference = AbsoluteDifference(second.sides[j], first.sides[order[j]]);
        if (difference >= kDescriptorRejectedFromGridUnits) {
            return std::nullopt;
        }
        largest = std::max(largest, difference);
    }
    return largest;
}

// The turn from each vertex's direction to the next one's, forward at 255 steps.
std::optional<std::int32_t> largestRelativeDifference(const TriangleFeature& first,
                                                      const TriangleFeature& second,
                                                      const CornerOrder& order) {
    std::int32_t largest = 0;
    for (std::size_t j = 0; j < order.size(); ++j) {
        const std::size_t next = (j + 1) % order.size();
        const std::int16_t secondTurn =
            ForwardDifference(second.vertices[j].angle, second.vertices[next].angle);
        const std::int16_t firstTurn =
            ForwardDifference(first.vertices[order[j]].angle, first.vertices[order[next]].angle);
        const std::int32_t difference = CircularDifference(firstTurn, secondTurn);
        if (difference >= kRelativeRejectedFromSteps) {
            return std::nullopt;
        }
        largest = std::max(largest, difference);
    }
    return largest;
}

// The turn from the direction of vertex `to` to that of the edge that ends there.
std::int16_t edgeTurn(const TriangleVertex& from, const TriangleVertex& to) {
    return ForwardDifference(to.angle, edgeDirection(from, to));
}

std::optional<std::int32_t> largestEdgeDifference(const TriangleFeature& first,
                                                  const TriangleFeature& second,
                                                  const CornerOrder& order) {
    std::int32_t largest = 0;
    for (std::size_t to = 0; to < order.size(); ++to) {
        for (std::size_t from = 0; from < order.size(); ++from) {
            if (from == to) {
                continue;
            }
            const std::int16_t secondTurn = edgeTurn(second.vertices[from], second.vertices[to]);
            const std::int16_t firstTurn =
                edgeTurn(first.vertices[order[from]], first.vertices[order[to]]);
            const std::int32_t difference = CircularDifference(firstTurn, secondTurn);
            if (difference >= kEdgeRejectedFromSteps) {
                return std::nullopt;
            }
            largest = std::max(largest, difference);
        }
    }
    return largest;
}

// Cost of one cyclic order, 0 .. 994 * 994 * 967, or the mark when a test rejects it.
std::int32_t orderCost(const TriangleFeature& first,
                       const TriangleFeature& second,
                       const CornerOrder& order) {
    if (!directionsAgree(first, second, order)) {
        return kNoPassingOrderCost;
    }
    const auto descriptor = largestDescriptorDifference(first, second, order);
    if (!descriptor) {
        return kNoPassingOrderCost;
    }
    const auto relative = largestRelativeDifference(first, second, order);
    if (!relative) {
        return kNoPassingOrderCost;
    }
    const auto edge = largestEdgeDifference(first, second, order);
    if (!edge) {
        return kNoPassingOrderCost;
    }
    return (*edge * kCostScale / kEdgeRejectedFromSteps) *
           (*relative * kCostScale / kRelativeRejectedFromSteps) *
           (*descriptor * kCostScale / kDescriptorRejectedFromGridUnits);
}

std::uint16_t positionKey(const TriangleVertex& vertex) {
    constexpr int kKeysPerColumn = 256;
    return static_cast<std::uint16_t>(vertex.x * kKeysPerColumn + vertex.y);
}

// Appends the correspondence unless both positions are taken.
//
// Deliberate: a position of the first finger counts as taken from its first mention on, and one
// taken position alone does not bar a pair, so a minutia may stand in several correspondences.
void addMinutiaPair(MatchContext& context, const MinutiaPair& pair) {
    const bool firstIsNew = context.firstPositions.insert(positionKey(pair.first)).second;
    const bool secondIsNew = context.secondPositions.insert(positionKey(pair.second)).second;
    if (secondIsNew || firstIsNew) {
        context.minutiaPairs.push_back(pair);
    }
}

}  // namespace

std::span<const TriangleFeature> trianglesInKeyRange(std::span<const TriangleFeature> sorted,
                                                     std::int8_t key) {
    // Deliberate: the limits wrap in 8 bits instead of stopping at the ends of the range, so that
    // triangles whose key lies within 18 of an end find nothing.
    const std::int8_t lowest = lowByteAsSigned(key - kKeyReachGridUnits);
    const std::int8_t highest = lowByteAsSigned(key + kKeyReachGridUnits);
    const auto begin = std::lower_bound(sorted.begin(),
                                        sorted.end(),
                                        lowest,
                                        [](const TriangleFeature& triangle, std::int8_t limit) {
                                            return searchKey(triangle) < limit;
                                        });
    const auto end = std::upper_bound(
        begin, sorted.end(), highest, [](std::int8_t limit, const TriangleFeature& triangle) {
            return limit < searchKey(triangle);
        });
    return {begin, end};
}

bool areCandidates(const TriangleFeature& first, const TriangleFeature& second) {
    for (std::size_t i = 0; i < kDescriptorBytes; ++i) {
        const std::int8_t difference = lowByteAsSigned(second.sides[i] - first.sides[i]);
        if (difference < -kMaxDescriptorDifference || difference > kMaxDescriptorDifference) {
            return false;
        }
    }
    return true;
}

void searchTrianglePairs(MatchContext& context, std::span<const TriangleFeature> secondTriangles) {
    for (const TriangleFeature& first : context.firstTriangles) {
        for (const TriangleFeature& second :
             trianglesInKeyRange(secondTriangles, searchKey(first))) {
            if (areCandidates(first, second)) {
                scoreTrianglePair(second, context.trianglePairs, first);
            }
        }
    }
}

void scoreTrianglePair(const TriangleFeature& second,
                       std::vector<TrianglePair>& pairs,
                       const TriangleFeature& first) {
    std::int32_t cost = kNoPassingOrderCost;
    for (const CornerOrder& order : kCyclicOrders) {
        cost = std::min(cost, orderCost(first, second, order));
        if (cost == 0) {
            break;
        }
    }
    if (cost < kNoPassingOrderCost) {
        pairs.push_back({kMaxSimilarity - cost / kCostPerSimilarityPoint, &first, &second});
    }
}

bool consolidatePairs(MatchContext& context) {
    context.firstPositions.clear();
    context.secondPositions.clear();
    context.minutiaPairs.clear();
    if (context.trianglePairs.size() < kMinTrianglePairs) {
        return false;
    }
    std::stable_sort(context.trianglePairs.begin(),
                     context.trianglePairs.end(),
                     [](const TrianglePair& left, const TrianglePair& right) {
                         return left.similarity > right.similarity;
                     });
    for (const TrianglePair& pair : context.trianglePairs) {
        // Deliberate: corners pair up as they stand, whichever cyclic order made the triangles
        // alike.
        for (std::size_t corner = 0; corner < 3; ++corner) {
            addMinutiaPair(context, {pair.first->vertices[corner], pair.second->vertices[corner]});
        }
    }
    return context.minutiaPairs.size() >= kMinMinutiaPairs;
}

}  // namespace orl::matcher
