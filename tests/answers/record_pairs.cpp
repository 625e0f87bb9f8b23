#include "tests/answers/record_pairs.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <utility>

#include "tests/answers/hostile_records.h"
#include "tests/support/real_records.h"
#include "tools/orl_finger/impression.h"

namespace orl::test {
namespace {

constexpr std::uint64_t kSeed = 20250117;
constexpr std::size_t kFingers = 26;
constexpr std::size_t kImpressions = 8;

// Part 0 of a finger is the finger itself, the parts from 1 on are its impressions.
std::vector<tools::FingerRecord> DrawImpressions(std::size_t impressions) {
    std::vector<tools::FingerRecord> records;
    for (std::size_t finger = 0; finger < kFingers; ++finger) {
        tools::RandomStream fingerRandom = tools::RandomStream::forPart(kSeed, finger, 0);
        const tools::MasterFinger master = tools::drawFinger(fingerRandom);
        for (std::size_t impression = 1; impression <= impressions; ++impression) {
            tools::RandomStream random = tools::RandomStream::forPart(kSeed, finger, impression);
            records.push_back(tools::drawImpression(master, random));
        }
    }
    return records;
}

// The first `left` records with themselves and every record after them. Either record of a pair is
// the probe in every other pair.
void PairUp(RecordPairs& set, std::size_t left) {
    for (std::size_t i = 0; i < left; ++i) {
        for (std::size_t j = i; j < set.records.size(); ++j) {
            const bool swapped = (i + j) % 2 != 0;
            set.pairs.push_back({swapped ? j : i, swapped ? i : j});
        }
    }
}

// Names in the order of their letters, whatever the platform's separators.
std::map<std::string, std::vector<std::filesystem::path>> RealFolders() {
    std::map<std::string, std::vector<std::filesystem::path>> folders;
    for (const std::filesystem::path& file : RealRecordFiles()) {
        folders[file.parent_path().filename().generic_string()].push_back(file);
    }
    for (auto& [name, files] : folders) {
        std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) {
            return a.generic_string() < b.generic_string();
        });
    }
    return folders;
}

void ChooseRealPairs(RecordPairs& set) {
    constexpr std::size_t kPairs = 200;
    const std::size_t records = set.records.size();
    for (std::size_t i = 0; i + 1 < records && set.pairs.size() < kPairs / 2; ++i) {
        set.pairs.push_back({i, i + 1});
    }
    tools::RandomStream random(kSeed);
    const std::size_t drawn = std::min(kPairs / 2, records);
    for (std::size_t i = 0; i < drawn; ++i) {
        const std::size_t probe = random.nextBits() % records;
        const std::size_t candidate = random.nextBits() % records;
        set.pairs.push_back({probe, candidate});
    }
}

}  // namespace

RecordPairs GeneratedPairs() {
    RecordPairs set{.name = "generated"};
    for (const tools::FingerRecord& record : DrawImpressions(kImpressions)) {
        set.records.push_back(tools::bytesFromRecord(record));
    }
    PairUp(set, set.records.size());
    return set;
}

RecordPairs HostilePairs() {
    const std::vector<tools::FingerRecord> sound = DrawImpressions(1);
    RecordPairs set{.name = "hostile", .records = HostileRecords(sound, kSeed)};
    const std::size_t hostile = set.records.size();
    for (const tools::FingerRecord& record : sound) {
        set.records.push_back(tools::bytesFromRecord(record));
    }
    PairUp(set, hostile);
    return set;
}

std::vector<RecordPairs> RealPairs() {
    std::vector<RecordPairs> sets;
    for (const auto& [name, files] : RealFolders()) {
        RecordPairs set{.name = "real" + std::to_string(sets.size() + 1)};
        for (const std::filesystem::path& file : files) {
            set.records.push_back(ReadWholeFile(file));
        }
        ChooseRealPairs(set);
        sets.push_back(std::move(set));
    }
    return sets;
}

void ForEachAnswer(const RecordPairs& set, const std::function<void(const Answer&)>& take) {
    for (const RecordPairs::Pair& pair : set.pairs) {
        take(AnswerTo(
            set.name + ' ' + std::to_string(pair.probe) + ' ' + std::to_string(pair.candidate),
            set.records[pair.probe],
            set.records[pair.candidate]));
    }
}

}  // namespace orl::test
