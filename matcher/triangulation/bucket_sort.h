#pragma once

// A stable sort for short lists whose keys spread evenly: the items are dealt out to buckets, in
// order, and an insertion sort settles the rest. Takes time in proportion to the items when few
// share a bucket, to their square when all do. Takes no heap memory.

#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>

namespace orl::matcher {

// Turns the counts of buckets into the place where each bucket starts.
// REQUIRES: the counts add up to at most 255.
template <std::size_t kBuckets>
void StartsFromCounts(std::array<std::uint8_t, kBuckets>& buckets) {
    if constexpr (std::endian::native == std::endian::little) {
        // Eight buckets at once: byte k of `sums` is the sum of bytes 0..k of `counts`.
        constexpr std::uint64_t kOnes = 0x0101010101010101;
        constexpr unsigned kBitsPerByte = 8;
        constexpr unsigned kTopByte = 56;
        static_assert(kBuckets % sizeof(std::uint64_t) == 0);
        std::uint64_t before = 0;
        for (std::size_t k = 0; k < kBuckets; k += sizeof(std::uint64_t)) {
            std::uint64_t counts = 0;
            std::memcpy(&counts, &buckets[k], sizeof counts);
            const std::uint64_t sums = counts * kOnes;
            const std::uint64_t starts = (sums << kBitsPerByte) + before * kOnes;
            before += sums >> kTopByte;
            std::memcpy(&buckets[k], &starts, sizeof starts);
        }
    } else {
        std::uint8_t start = 0;
        for (std::uint8_t& bucket : buckets) {
            const std::uint8_t count = bucket;
            bucket = start;
            start = static_cast<std::uint8_t>(start + count);
        }
    }
}

// Writes `items` to sorted[0..items.size()), ascending by less(left, right); equal items keep their
// order. bucketOf(item) lies in 0..kBuckets - 1 and does not fall from an item to a greater one.
// REQUIRES: at most 255 items; `sorted` does not overlap them; kBuckets is a multiple of 8, at most
// 256.
template <std::size_t kBuckets, typename Item, typename BucketOf, typename Less>
void BucketSort(std::span<const Item> items, Item* sorted, BucketOf bucketOf, Less less) {
    constexpr std::size_t kMaxItems = std::numeric_limits<std::uint8_t>::max();
    assert(items.size() <= kMaxItems);
    std::array<std::uint8_t, kBuckets> next{};  // where the bucket's next item goes
    // Uninitialised: filled as far as it is read
    std::array<std::uint8_t, kMaxItems> buckets;
    for (std::size_t k = 0; k < items.size(); ++k) {
        const std::size_t bucket = bucketOf(items[k]);
        buckets[k] = static_cast<std::uint8_t>(bucket);
        ++next[bucket];
    }
    StartsFromCounts(next);
    for (std::size_t k = 0; k < items.size(); ++k) {
        sorted[next[buckets[k]]++] = items[k];
    }
    for (std::size_t k = 1; k < items.size(); ++k) {
        if (!less(sorted[k], sorted[k - 1])) {
            continue;
        }
        const Item item = sorted[k];
        std::size_t place = k;
        do {
            sorted[place] = sorted[place - 1];
            --place;
        } while (place > 0 && less(item, sorted[place - 1]));
        sorted[place] = item;
    }
}

}  // namespace orl::matcher
