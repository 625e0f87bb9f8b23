#include "matcher/triangulation/fixed_index_array.h"

#include <cstdint>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

using testing::ElementsAre;

TEST(FixedIndexArray, GrowsUpToItsRoom) {
    FixedIndexArray<4> array;
    EXPECT_TRUE(array.empty());
    array.push_back(7);
    std::uint16_t* const first = array.Extend(3);
    first[0] = first[1] = first[2] = 8;
    EXPECT_THAT(array, ElementsAre(7, 8, 8, 8));
    EXPECT_EQ(array.size(), array.capacity());
}

TEST(FixedIndexArray, RefusesWhatItHasNoRoomForAndStaysAsItWas) {
    FixedIndexArray<4> array;
    array.assign(3, 5);
    EXPECT_THROW(array.Extend(2), std::length_error);
    array.push_back(6);
    EXPECT_THROW(array.push_back(7), std::length_error);
    EXPECT_THAT(array, ElementsAre(5, 5, 5, 6));
}

TEST(FixedIndexArray, HoldsCopiesOfAValueOnceAssigned) {
    FixedIndexArray<4> array;
    array.push_back(7);
    array.assign(2, 9);
    EXPECT_THAT(array, ElementsAre(9, 9));
    array.clear();
    EXPECT_TRUE(array.empty());
}

}  // namespace
}  // namespace orl::matcher
