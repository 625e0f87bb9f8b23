#include "tests/answers/record_pairs.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tests/answers/hostile_content.h"
#include "tests/answers/hostile_records.h"
#include "tests/support/real_records.h"

namespace orl::test {
namespace {

constexpr std::size_t kLeastGeneratedPairs = 20000;
constexpr std::size_t kSoundRecords = 26;  // among the hostile ones, an impression of each finger

// Every pair of indices is in bounds, and none comes twice, whichever way round.
void ExpectDistinctPairs(const RecordPairs& set) {
    std::set<std::pair<std::size_t, std::size_t>> seen;
    for (const RecordPairs::Pair& pair : set.pairs) {
        ASSERT_LT(pair.probe, set.records.size());
        ASSERT_LT(pair.candidate, set.records.size());
        ASSERT_TRUE(seen.emplace(std::minmax(pair.probe, pair.candidate)).second);
    }
}

TEST(GeneratedPairs, AreEveryPairOfTheRecords) {
    const RecordPairs set = GeneratedPairs();
    const std::size_t records = set.records.size();
    EXPECT_EQ(set.pairs.size(), records * (records + 1) / 2);
    EXPECT_GE(set.pairs.size(), kLeastGeneratedPairs);
    ExpectDistinctPairs(set);
}

TEST(HostilePairs, HoldEveryHostileRecordAgainstEveryRecord) {
    const RecordPairs set = HostilePairs();
    ExpectDistinctPairs(set);
    std::map<std::size_t, std::size_t> pairsOf;
    for (const RecordPairs::Pair& pair : set.pairs) {
        ++pairsOf[pair.probe];
        if (pair.candidate != pair.probe) {
            ++pairsOf[pair.candidate];
        }
    }
    const std::size_t hostile = set.records.size() - kSoundRecords;
    for (std::size_t i = 0; i < hostile; ++i) {
        EXPECT_EQ(pairsOf[i], set.records.size()) << "record " << i;
    }
}

TEST(HostilePairs, ReachEveryOutcomeAgainstSoundRecordsAlone) {
    RecordPairs set = HostilePairs();
    const std::size_t hostile = set.records.size() - kSoundRecords;
    std::erase_if(set.pairs, [hostile](const RecordPairs::Pair& pair) {
        return std::max(pair.probe, pair.candidate) < hostile;
    });
    std::set<std::string> outcomes;
    ForEachAnswer(set, [&](const Answer& answer) {
        outcomes.insert(answer.triangulated ? std::to_string(answer.result.status) : "thrown");
    });
    EXPECT_EQ(outcomes, (std::set<std::string>{"0", "1", "2", "3", "4", "5", "thrown"}));
}

TEST(HostileRecords, AreTheSameEachTimeAndDifferentForEachSeed) {
    tools::FingerRecord sound;
    sound.width = 388;
    sound.height = 374;
    sound.minutiae.resize(20, {.type = 1, .x = 10, .y = 20, .angle = 30, .quality = 40});
    const auto records = HostileRecords({sound}, 1);
    EXPECT_GT(records.size(), kHostileVariants * ContentChanges().size());
    EXPECT_EQ(records.size() % kHostileVariants, 0U);
    EXPECT_EQ(records, HostileRecords({sound}, 1));
    EXPECT_NE(records, HostileRecords({sound}, 2));
}

TEST(RealPairs, StayInsideTheirFolder) {
    const std::vector<RecordPairs> sets = RealPairs();
    if (sets.empty()) {
        GTEST_SKIP() << "ORL_RECORDS names no folder of records";
    }
    std::size_t records = 0;
    for (const RecordPairs& set : sets) {
        records += set.records.size();
        EXPECT_FALSE(set.pairs.empty());
        EXPECT_LE(set.pairs.size(), 200U);
        for (const RecordPairs::Pair& pair : set.pairs) {
            ASSERT_LT(pair.probe, set.records.size());
            ASSERT_LT(pair.candidate, set.records.size());
        }
    }
    EXPECT_EQ(records, RealRecordFiles().size());
}

}  // namespace
}  // namespace orl::test
