#include "tools/orl_unit/demo_records.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <system_error>

#include "tools/command_line/utf8_path.h"
#include "tools/orl_unit/command_error.h"
#include "tools/orl_unit/identity_names.h"

namespace orl::unit {
namespace {

constexpr const char* kRecordExtension = ".fmr";

struct ImpressionName {
    std::string finger;
    unsigned long number = 0;
};

// Takes FINGER_IMPRESSION apart at the last "_"; nothing when the name has another form.
std::optional<ImpressionName> parseImpressionName(const std::string& stem) {
    const std::size_t bar = stem.rfind('_');
    if (bar == std::string::npos || bar == 0) {
        return std::nullopt;
    }
    ImpressionName name{stem.substr(0, bar), 0};
    const char* const end = stem.data() + stem.size();
    const auto [stop, failure] = std::from_chars(stem.data() + bar + 1, end, name.number);
    if (failure != std::errc() || stop != end) {
        return std::nullopt;
    }
    return name;
}

std::vector<std::filesystem::path> recordFiles(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code failure;
    std::filesystem::directory_iterator entry(folder, failure);
    while (!failure && entry != std::filesystem::directory_iterator()) {
        if (entry->path().extension() == kRecordExtension) {
            files.push_back(entry->path());
        }
        entry.increment(failure);
    }
    if (failure) {
        throw CommandError("folder " + inQuotes(tools::utf8FromPath(folder)) +
                           " cannot be read: " + failure.message());
    }
    std::sort(files.begin(), files.end());
    return files;
}

using ImpressionsByFinger = std::map<std::string, std::vector<Impression>>;

void addImpression(const std::filesystem::path& file, ImpressionsByFinger& fingers) {
    const auto name = parseImpressionName(tools::utf8FromPath(file.stem()));
    if (!name) {
        throw CommandError("record " + inQuotes(tools::utf8FromPath(file)) +
                           " is not named FINGER_IMPRESSION.fmr");
    }
    checkIdentityName(name->finger);
    FingerRecord record = readRecordFile(file);
    fingers[name->finger].push_back(
        {name->number, tools::utf8FromPath(file.filename()), std::move(record)});
}

}  // namespace

DemoRecords readDemoRecords(const std::filesystem::path& folder) {
    DemoRecords records;
    ImpressionsByFinger fingers;
    for (const auto& file : recordFiles(folder)) {
        try {
            addImpression(file, fingers);
        } catch (const CommandError& error) {
            records.unusable.push_back({tools::utf8FromPath(file.filename()), error.what()});
        }
    }
    for (auto& [name, impressions] : fingers) {
        std::stable_sort(
            impressions.begin(), impressions.end(), [](const Impression& a, const Impression& b) {
                return a.number < b.number;
            });
        records.fingers.push_back({name, std::move(impressions)});
    }
    if (records.fingers.empty()) {
        throw CommandError("folder " + inQuotes(tools::utf8FromPath(folder)) +
                           " holds no usable record named FINGER_IMPRESSION.fmr");
    }
    return records;
}

}  // namespace orl::unit
