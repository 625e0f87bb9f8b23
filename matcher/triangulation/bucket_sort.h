#pragma once

// A stable sort for short lists whose keys spread evenly: the items are dealt out to buckets, in
// order, and an insertion sort settles the rest. Takes time in proportion to the items when few
// share a bucket, to their square when all do. Takes no heap memory.

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace orl::matcher {

// Writes `items` to sorted[0..items.size()), ascending by less(left, right); equal items keep their
// order. bucketOf(item) lies in 0..kBuckets - 1 and does not fall from an item to a greater one.
// REQUIRES: fewer than 65,536 items; `sorted` does not overlap them.
template <std::size_t kBuckets, typename Item, typename BucketOf, typename Less>
void BucketSort(std::span<const Item> items, Item* sorted, BucketOf bucketOf, Less less) {
    using Count = std::uint16_t;
    assert(items.size() <= std::numeric_limits<Count>::max());
    std::array<Count, kBuckets> next{};  // where the bucket's next item goes
    for (const Item& item : items) {
        ++next[bucketOf(item)];
    }
    Count start = 0;
    for (Count& entry : next) {
        const Count count = entry;
        entry = start;
        start = static_cast<Count>(start + count);
    }
    for (const Item& item : items) {
        sorted[next[bucketOf(item)]++] = item;
    }
    for (std::size_t k = 1; k < items.size(); ++k) {
        const Item item = sorted[k];
        std::size_t place = k;
        for (; place > 0 && less(item, sorted[place - 1]); --place) {
            sorted[place] = sorted[place - 1];
        }
        sorted[place] = item;
    }
}

}  // namespace orl::matcher
