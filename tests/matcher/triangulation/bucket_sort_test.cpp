#include "matcher/triangulation/bucket_sort.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

struct Item {
    int key = 0;
    int number = 0;

    friend bool operator==(const Item&, const Item&) = default;
};

bool KeyLess(const Item& left, const Item& right) {
    return left.key < right.key;
}

constexpr std::size_t kBuckets = 16;
constexpr int kKeys = 256;

std::vector<Item> RandomItems(std::mt19937& random, std::size_t count, int keys) {
    std::vector<Item> items;
    while (items.size() < count) {
        const auto key = static_cast<int>(random() % static_cast<unsigned>(keys));
        items.push_back({.key = key, .number = static_cast<int>(items.size())});
    }
    return items;
}

template <typename BucketOf>
void ExpectStableSort(const std::vector<Item>& items, BucketOf bucketOf) {
    std::vector<Item> sorted(items.size());
    BucketSort<kBuckets>(std::span<const Item>(items), sorted.data(), bucketOf, KeyLess);
    std::vector<Item> expected = items;
    std::stable_sort(expected.begin(), expected.end(), KeyLess);
    EXPECT_EQ(sorted, expected);
}

TEST(BucketSort, SortsLikeAStableSortWhateverTheSizeAndTheTies) {
    std::mt19937 random(41);
    for (std::size_t count = 0; count < 256; ++count) {
        for (const int keys : {1, 3, 40, kKeys}) {
            ExpectStableSort(RandomItems(random, count, keys), [](const Item& item) {
                return static_cast<std::size_t>(item.key) * kBuckets / kKeys;
            });
        }
    }
}

TEST(BucketSort, SortsItemsThatAllShareABucket) {
    std::mt19937 random(43);
    ExpectStableSort(RandomItems(random, 200, kKeys), [](const Item&) { return std::size_t{0}; });
    ExpectStableSort(RandomItems(random, 200, kKeys), [](const Item&) { return kBuckets - 1; });
}

TEST(BucketSort, SortsListsThatAreInOrderAndInReverse) {
    const auto bucketOf = [](const Item& item) {
        return static_cast<std::size_t>(item.key) * kBuckets / kKeys;
    };
    std::vector<Item> items;
    for (int key = 0; key < kKeys - 1; ++key) {
        items.push_back({.key = key, .number = key});
    }
    ExpectStableSort(items, bucketOf);
    std::reverse(items.begin(), items.end());
    ExpectStableSort(items, bucketOf);
}

TEST(StartsFromCounts, GivesEachBucketTheSumOfThoseBeforeIt) {
    std::mt19937 random(47);
    for (int round = 0; round < 200; ++round) {
        std::array<std::uint8_t, 24> buckets{};
        const std::size_t items = random() % 256;
        for (std::size_t i = 0; i < items; ++i) {
            ++buckets[random() % (1 + random() % buckets.size())];
        }
        std::array<std::uint8_t, 24> expected{};
        for (std::size_t k = 1; k < buckets.size(); ++k) {
            expected[k] = static_cast<std::uint8_t>(expected[k - 1] + buckets[k - 1]);
        }
        StartsFromCounts(buckets);
        ASSERT_EQ(buckets, expected) << "round " << round;
    }
}

}  // namespace
}  // namespace orl::matcher
