#include "bench/bench_records.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>

namespace orl::bench {
namespace {

constexpr std::size_t kMinutiaCountOffset = 27;
constexpr std::uint8_t kFewestMinutiae = 10;

Record ReadRecord(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string name = path.stem().string();
    return {name.substr(0, name.find('_')), name, {std::istreambuf_iterator<char>(file), {}}};
}

bool IsLargeEnough(const Record& record) {
    return record.bytes.size() > kMinutiaCountOffset &&
           record.bytes[kMinutiaCountOffset] >= kFewestMinutiae;
}

std::vector<RecordSet> ReadSets() {
    const char* named = std::getenv("ORL_RECORDS");
    const std::filesystem::path root = named != nullptr ? named : ORL_SAMPLES_FOLDER;
    std::map<std::filesystem::path, std::vector<std::filesystem::path>> folders;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (entry.path().extension() == ".fmr") {
            folders[entry.path().parent_path()].push_back(entry.path());
        }
    }
    std::vector<RecordSet> sets;
    for (auto& [folder, files] : folders) {
        std::sort(files.begin(), files.end());
        RecordSet set{folder.filename().string(), {}};
        for (const auto& file : files) {
            Record record = ReadRecord(file);
            if (IsLargeEnough(record)) {
                set.records.push_back(std::move(record));
            }
        }
        sets.push_back(std::move(set));
    }
    if (sets.empty()) {
        throw std::runtime_error("no *.fmr file below " + root.string());
    }
    return sets;
}

}  // namespace

const std::vector<RecordSet>& RecordSets() {
    static const std::vector<RecordSet> sets = ReadSets();
    return sets;
}

std::vector<RecordPair> GenuinePairs(const RecordSet& set) {
    std::vector<RecordPair> pairs;
    for (std::size_t i = 0; i < set.records.size(); ++i) {
        for (std::size_t j = i + 1; j < set.records.size(); ++j) {
            if (set.records[i].finger == set.records[j].finger) {
                pairs.push_back({&set.records[i], &set.records[j]});
            }
        }
    }
    return pairs;
}

std::vector<RecordPair> ImpostorPairs(const RecordSet& set, std::size_t limit) {
    std::vector<RecordPair> all;
    for (const Record& probe : set.records) {
        for (const Record& candidate : set.records) {
            if (probe.finger < candidate.finger) {
                all.push_back({&probe, &candidate});
            }
        }
    }
    if (all.size() <= limit) {
        return all;
    }
    std::vector<RecordPair> chosen;
    for (std::size_t i = 0; i < limit; ++i) {
        chosen.push_back(all[i * all.size() / limit]);
    }
    return chosen;
}

}  // namespace orl::bench
