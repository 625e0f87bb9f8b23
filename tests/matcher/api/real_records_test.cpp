// Real records, where the machine has some: all load as a plain reading of their bytes tells.

#include "tests/support/real_records.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "matcher/api/match_facade.h"
#include "matcher/api/template_loading.h"
#include "tests/matcher/api/slow_record_parse.h"

namespace orl::matcher {
namespace {

using Bytes = std::vector<std::uint8_t>;

class RealRecords : public testing::Test {
  protected:
    void SetUp() override {
        files_ = orl::test::RealRecordFiles();
        if (files_.empty()) {
            GTEST_SKIP() << "ORL_RECORDS names no folder with *.fmr records";
        }
    }
    std::vector<std::filesystem::path> files_;
};

TEST_F(RealRecords, LoadAsAPlainReadingTells) {
    for (const auto& file : files_) {
        SCOPED_TRACE(file.filename().string());
        const Bytes record = orl::test::ReadWholeFile(file);
        const std::optional<SlowRecord> expected = SlowParse(record);
        ASSERT_TRUE(expected.has_value());
        FullLoadedTemplate loaded;
        std::string message;
        try {
            ASSERT_EQ(loadTemplateFromBuffer(
                          record.data(), record.size(), "Probe", 2, 4, loaded, message),
                      0);
        } catch (const std::runtime_error&) {
            EXPECT_LT(expected->fingers.at(0).size(), 4U) << "too few to be all on one line";
            continue;
        }
        EXPECT_EQ(loaded.imageSize, expected->imageSize);
        ASSERT_EQ(loaded.fingers.size(), expected->fingers.size());
        for (std::size_t i = 0; i < loaded.fingers.size(); ++i) {
            EXPECT_EQ(loaded.fingers[i].minutiae, expected->fingers[i]);
            EXPECT_FALSE(loaded.fingers[i].triangles.empty());
        }
    }
}

TEST_F(RealRecords, LoadFromTheirFilesAsFromTheirBytes) {
    constexpr std::size_t kEvery = 20;
    for (std::size_t i = 0; i < files_.size(); i += kEvery) {
        SCOPED_TRACE(files_[i].filename().string());
        const Bytes record = orl::test::ReadWholeFile(files_[i]);
        const std::u8string name = files_[i].u8string();
        LoadedTemplate fromFile;
        LoadedTemplate fromBytes;
        std::string message;
        const auto fileStatus =
            loadTemplateFromFile(std::string(name.begin(), name.end()), 2, 4, fromFile, message);
        const auto bytesStatus =
            loadTemplateFromBuffer(record.data(), record.size(), "Probe", 2, 4, fromBytes, message);
        EXPECT_EQ(fileStatus, bytesStatus);
        ASSERT_EQ(fromFile.fingers.size(), fromBytes.fingers.size());
        for (std::size_t finger = 0; finger < fromFile.fingers.size(); ++finger) {
            EXPECT_EQ(fromFile.fingers[finger].triangles, fromBytes.fingers[finger].triangles);
        }
    }
}

TEST_F(RealRecords, MatchThemselves) {
    constexpr std::size_t kEvery = 20;
    for (std::size_t i = 0; i < files_.size(); i += kEvery) {
        const Bytes record = orl::test::ReadWholeFile(files_[i]);
        TemplateMatchResult result;
        std::string message;
        ASSERT_EQ(
            matchBuffers(
                record.data(), record.size(), record.data(), record.size(), result, message, 300),
            0);
        EXPECT_EQ(result.decision, 1U) << files_[i].filename().string();
    }
}

}  // namespace
}  // namespace orl::matcher
