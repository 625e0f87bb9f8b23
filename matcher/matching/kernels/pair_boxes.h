#pragma once

// Bounding boxes, on the grid, of minutia pairs' first and second vertices. Two forms with the same
// results: `plain` says what is computed, `sse2` ranges over a pair's eight bytes at once; tests
// compare them. All bytes are ranged over, which is quicker than picking the coordinates.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "matcher/matching/match_context.h"

namespace orl::matcher {

using PairBytes = std::array<std::uint8_t, sizeof(MinutiaPair)>;

struct PairBoxAreas {
    float first;  // grid units squared; a single position covers 1
    float second;

    friend bool operator==(const PairBoxAreas&, const PairBoxAreas&) = default;

    // At most 65536, so exact as floats.
    static PairBoxAreas of(const PairBytes& least, const PairBytes& most) {
        const auto area = [&](std::size_t vertex) {
            const std::size_t x = vertex + offsetof(TriangleVertex, x);
            const std::size_t y = vertex + offsetof(TriangleVertex, y);
            return static_cast<float>((most[x] - least[x] + 1) * (most[y] - least[y] + 1));
        };
        return {area(offsetof(MinutiaPair, first)), area(offsetof(MinutiaPair, second))};
    }
};

namespace plain {

class PairBoxes {
  public:
    explicit PairBoxes(const MinutiaPair& pair)
        : least_(std::bit_cast<PairBytes>(pair)), most_(least_) {}

    void extend(const MinutiaPair& pair) {
        const auto bytes = std::bit_cast<PairBytes>(pair);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            least_[i] = std::min(least_[i], bytes[i]);
            most_[i] = std::max(most_[i], bytes[i]);
        }
    }

    PairBoxAreas areas() const { return PairBoxAreas::of(least_, most_); }

  private:
    PairBytes least_;
    PairBytes most_;
};

}  // namespace plain

#if defined(__SSE2__)
namespace sse2 {

class PairBoxes {
  public:
    explicit PairBoxes(const MinutiaPair& pair) : least_(bytesOf(pair)), most_(least_) {}

    void extend(const MinutiaPair& pair) {
        least_ = _mm_min_epu8(least_, bytesOf(pair));
        most_ = _mm_max_epu8(most_, bytesOf(pair));
    }

    PairBoxAreas areas() const {
        PairBytes least;
        PairBytes most;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(least.data()), least_);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(most.data()), most_);
        return PairBoxAreas::of(least, most);
    }

  private:
    static __m128i bytesOf(const MinutiaPair& pair) {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(&pair));
    }

    __m128i least_;
    __m128i most_;
};

}  // namespace sse2

using PairBoxes = sse2::PairBoxes;
#else
using PairBoxes = plain::PairBoxes;
#endif

}  // namespace orl::matcher
