#include "matcher/triangulation/index_array.h"

#include <cstdint>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

using testing::ElementsAre;

bool IsInside(const IndexArray<4>& array) {
    const auto* const first = reinterpret_cast<const std::uint64_t*>(&array);
    return array.data() >= first && array.data() < first + sizeof(array) / sizeof(*first);
}

TEST(IndexArray, KeepsItsInlineEntriesInsideItself) {
    IndexArray<4> array;
    EXPECT_TRUE(array.empty());
    EXPECT_EQ(array.capacity(), 4U);
    for (std::uint64_t value = 1; value <= 4; ++value) {
        array.push_back(value);
    }
    EXPECT_THAT(array, ElementsAre(1, 2, 3, 4));
    EXPECT_TRUE(IsInside(array));
}

TEST(IndexArray, MovesItsEntriesToTheHeapWhenTheyNoLongerFit) {
    IndexArray<4> array;
    for (std::uint64_t value = 1; value <= 9; ++value) {
        array.push_back(value);
    }
    EXPECT_THAT(array, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9));
    EXPECT_FALSE(IsInside(array));
    EXPECT_EQ(array.capacity(), 16U);
}

TEST(IndexArray, ReservesExactlyWhatIsAskedForAndNeverLess) {
    IndexArray<4> array;
    array.push_back(7);
    array.reserve(3);
    EXPECT_EQ(array.capacity(), 4U);
    array.reserve(21);
    EXPECT_EQ(array.capacity(), 21U);
    EXPECT_THAT(array, ElementsAre(7));
}

TEST(IndexArray, ExtendsByMoreThanTwiceItsSize) {
    IndexArray<4> array;
    array.push_back(7);
    std::uint64_t* const first = array.Extend(20);
    EXPECT_EQ(array.size(), 21U);
    EXPECT_EQ(first, array.begin() + 1);
    EXPECT_EQ(array[0], 7U);
}

TEST(IndexArray, TakesTheLastEntryOff) {
    IndexArray<4> array;
    array.assign(3, 5);
    array.push_back(6);
    EXPECT_EQ(array.PopBack(), 6U);
    EXPECT_THAT(array, ElementsAre(5, 5, 5));
}

TEST(IndexArray, KeepsItsRoomWhenCleared) {
    IndexArray<4> array;
    array.assign(10, 5);
    array.clear();
    EXPECT_TRUE(array.empty());
    EXPECT_EQ(array.capacity(), 10U);
}

}  // namespace
}  // namespace orl::matcher
