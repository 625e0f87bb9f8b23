#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "matcher/api/finger_record.h"
#include "matcher/triangulation/delaunay_mesh.h"
#include "tests/support/mesh_checker.h"
#include "tests/support/plain_sweep.h"
#include "tests/support/real_records.h"

namespace orl::matcher {
namespace {

TEST(MeshOfARealFinger, IsSoundAndThatOfThePlainSweep) {
    const auto files = test::RealRecordFiles();
    if (files.empty()) {
        GTEST_SKIP() << "ORL_RECORDS names no folder with records";
    }
    int fingers = 0;
    int fingersWithLostEntries = 0;
    for (const std::filesystem::path& file : files) {
        const std::vector<std::uint8_t> record = test::ReadWholeFile(file);
        FullLoadedTemplate loaded;
        try {
            parseFingerRecord(loaded, record.data(), record.size());
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "not triangulation") << file;
        }
        for (const FullFingerFeatures& finger : loaded.fingers) {
            std::vector<double> points;
            for (const Minutia& minutia : finger.minutiae) {
                points.push_back(minutia.x);
                points.push_back(minutia.y);
            }
            const DelaunayMesh mesh(points);
            const auto plain = test::SweepPlainly(points);
            ASSERT_TRUE(plain.has_value()) << file;
            ++fingers;
            fingersWithLostEntries += plain->lostHullEntries > 0 ? 1 : 0;
            EXPECT_THAT(mesh.vertices(), testing::ElementsAreArray(plain->vertices)) << file;
            if (plain->lostHullEntries == 0) {
                EXPECT_EQ(test::CheckMesh(mesh, points), "") << file;
            }
        }
    }
    EXPECT_GT(fingers, 0);
    // A handful in a million.
    EXPECT_LE(fingersWithLostEntries, 1 + fingers / 100000);
    RecordProperty("fingers", fingers);
}

}  // namespace
}  // namespace orl::matcher
