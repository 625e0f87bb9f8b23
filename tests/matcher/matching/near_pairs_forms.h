#pragma once

// The forms of the kernel that finds near pairs, and what one of them yields.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/matching/kernels/near_pairs.h"

namespace orl::test {

// All forms with their names, the plain one first.
inline std::vector<std::pair<std::string, matcher::NearPairs>> AllNearPairsForms() {
    std::vector<std::pair<std::string, matcher::NearPairs>> forms = {
        {"plain", matcher::plain::nearPairs}, {"fastest", matcher::fastestNearPairs()}};
#if defined(__SSE2__)
    forms.emplace_back("sse2", matcher::sse2::nearPairs);
#endif
#if defined(__SSE2__) && defined(__linux__)
    if (__builtin_cpu_supports("avx2")) {
        forms.emplace_back("avx2", matcher::avx2::nearPairs);
    }
#endif
    return forms;
}

struct NearPairsResult {
    std::vector<float> squaredResiduals;
    std::vector<std::uint64_t> near;
    friend bool operator==(const NearPairsResult&, const NearPairsResult&) = default;
};

// Checks on the way that nothing is written behind the room that a form may use.
inline NearPairsResult NearPairsOf(matcher::NearPairs form,
                                   const matcher::BoundPositions& positions,
                                   matcher::NearPairsTask task) {
    constexpr float kUnwritten = -7.0F;
    constexpr std::uint64_t kUnwrittenBits = 0xABCDEF;
    const std::size_t room = (task.count + matcher::kNearPairsLanes - 1) /
                             matcher::kNearPairsLanes * matcher::kNearPairsLanes;
    const std::size_t words =
        (task.count + matcher::kNearPairsWordBits - 1) / matcher::kNearPairsWordBits;
    NearPairsResult result{std::vector<float>(room + 1, kUnwritten),
                           std::vector<std::uint64_t>(words + 1, kUnwrittenBits)};
    form(positions,
         task,
         std::span(result.squaredResiduals).first(room),
         std::span(result.near).first(words));
    EXPECT_EQ(result.squaredResiduals.back(), kUnwritten);
    EXPECT_EQ(result.near.back(), kUnwrittenBits);
    result.squaredResiduals.resize(task.count);
    result.near.pop_back();
    return result;
}

// How many pairs the result calls near.
inline int MarkedIn(const NearPairsResult& result) {
    int marked = 0;
    for (const std::uint64_t word : result.near) {
        marked += std::popcount(word);
    }
    return marked;
}

}  // namespace orl::test
