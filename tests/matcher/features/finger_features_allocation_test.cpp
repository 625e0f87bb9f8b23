#include <cstddef>
#include <cstdint>
#include <new>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/finger_features.h"
#include "tests/support/failing_new.h"

namespace orl::matcher {
namespace {

constexpr ImageSize kImage{.width = 400, .height = 400};

std::vector<MinutiaList> SomeFingers() {
    std::mt19937 random(29);
    std::vector<MinutiaList> fingers(3);
    for (MinutiaList& minutiae : fingers) {
        while (minutiae.size() < 40) {
            Minutia minutia;
            minutia.x = static_cast<std::uint16_t>(random() % 400);
            minutia.y = static_cast<std::uint16_t>(random() % 400);
            minutia.angle = static_cast<std::uint16_t>(1 + random() % 360);
            minutiae.push_back(minutia);
        }
    }
    return fingers;
}

// Whether `built` is the beginning of `whole`.
template <FeatureForm kForm>
bool IsBeginningOf(const std::vector<BasicFingerFeatures<kForm>>& built,
                   const std::vector<BasicFingerFeatures<kForm>>& whole) {
    for (std::size_t i = 0; i < built.size(); ++i) {
        if (built[i].triangles != whole[i].triangles ||
            built[i].minutiaCount != whole[i].minutiaCount) {
            return false;
        }
    }
    return built.size() <= whole.size();
}

template <FeatureForm kForm>
void FailEachAllocationInTurn() {
    const std::vector<MinutiaList> fingers = SomeFingers();
    std::vector<BasicFingerFeatures<kForm>> whole;
    ASSERT_TRUE(BuildFingerFeatures(whole, kImage, fingers));
    constexpr std::int64_t kMoreThanItMakes = 1000;
    int thrown = 0;
    bool failed = true;
    for (std::int64_t n = 1; failed && n < kMoreThanItMakes; ++n) {
        const std::int64_t liveBefore = test::LiveBlocks();
        bool wholeFingersOnly = false;
        {
            std::vector<BasicFingerFeatures<kForm>> features;
            bool threw = false;
            {
                const test::FailingNew failing(n);
                try {
                    BuildFingerFeatures(features, kImage, fingers);
                } catch (const std::bad_alloc&) {
                    threw = true;
                }
                failed = failing.Failed();
            }
            // A sort does without its buffer, so some allocations may fail unnoticed.
            wholeFingersOnly =
                IsBeginningOf(features, whole) && (threw || features.size() == whole.size());
            thrown += threw ? 1 : 0;
        }
        EXPECT_TRUE(wholeFingersOnly) << "allocation " << n;
        EXPECT_EQ(test::LiveBlocks(), liveBefore) << "allocation " << n;
    }
    EXPECT_FALSE(failed) << "the build never got through";
    EXPECT_GT(thrown, static_cast<int>(fingers.size()));
}

TEST(BuildFingerFeaturesOutOfMemory, KeepsWholeFingersAndLeaksNothingWhicheverAllocationFails) {
    FailEachAllocationInTurn<FeatureForm::kCompact>();
}

TEST(BuildFingerFeaturesOutOfMemory, KeepsWholeFingersOfTheFullFormToo) {
    FailEachAllocationInTurn<FeatureForm::kFull>();
}

}  // namespace
}  // namespace orl::matcher
