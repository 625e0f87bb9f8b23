#include "tools/orl_unit/demo_report.h"

#include <array>
#include <cstdio>

#include <nlohmann/json.hpp>

#include "tools/orl_unit/command_error.h"
#include "tools/orl_unit/text_table.h"

namespace orl::unit {
namespace {

using nlohmann::ordered_json;

constexpr std::size_t kNumberTextBytes = 48;

double meanMilliseconds(const ComparisonTime& time) {
    const std::chrono::duration<double, std::milli> spent = time.spent;
    return time.comparisonCount == 0 ? 0.0
                                     : spent.count() / static_cast<double>(time.comparisonCount);
}

std::string meanText(const ComparisonTime& time) {
    if (time.comparisonCount == 0) {
        return "-";
    }
    std::array<char, kNumberTextBytes> text{};
    std::snprintf(text.data(), text.size(), "%.3f ms", meanMilliseconds(time));
    return text.data();
}

ComparisonTime timeOfAll(const DemoSummary& summary) {
    ComparisonTime time;
    for (const StepCounts* step :
         {&summary.enroll, &summary.verifyGenuine, &summary.verifyImpostor, &summary.identify}) {
        time.add(step->time);
    }
    return time;
}

void addStep(TextTable& table, const char* name, const StepCounts& step) {
    table.addRow({name,
                  std::to_string(step.tried()),
                  std::to_string(step.accepted),
                  std::to_string(step.rejected),
                  std::to_string(step.time.comparisonCount),
                  meanText(step.time)});
}

std::string tableText(const DemoSummary& summary) {
    using Align = TextTable::Align;
    TextTable table(
        {Align::kLeft, Align::kRight, Align::kRight, Align::kRight, Align::kRight, Align::kRight});
    table.addRow({"Step", "Samples", "Accepted", "Rejected", "Comparisons", "Time each"});
    addStep(table, "Enroll", summary.enroll);
    addStep(table, "Verify, genuine", summary.verifyGenuine);
    addStep(table, "Verify, impostor", summary.verifyImpostor);
    addStep(table, "Identify", summary.identify);
    const ComparisonTime all = timeOfAll(summary);
    table.addRow({"All", "", "", "", std::to_string(all.comparisonCount), meanText(all)});
    return table.text();
}

ordered_json stepJson(const StepCounts& step) {
    return {{"samples", step.tried()},
            {"accepted", step.accepted},
            {"rejected", step.rejected},
            {"comparisons", step.time.comparisonCount},
            {"millisecondsPerComparison", meanMilliseconds(step.time)}};
}

}  // namespace

std::string demoText(const DemoSummary& summary) {
    std::string text = tableText(summary);
    text += "\nIdentified as the right finger " + std::to_string(summary.identifiedRight) +
            ", as a wrong one " + std::to_string(summary.identifiedWrong) + ", not found " +
            std::to_string(summary.identify.rejected) + ".\n";
    if (summary.verifyImpostor.tried() < summary.impostorPairs) {
        text += "Impostor samples are " + std::to_string(summary.verifyImpostor.tried()) +
                " evenly spread of " + std::to_string(summary.impostorPairs) + " pairs.\n";
    }
    text += "Duplicates at enrollment: " + std::to_string(summary.duplicates.size()) +
            "; records that cannot be compared: " + std::to_string(summary.unusable.size()) + ".\n";
    for (const DuplicateFinger& duplicate : summary.duplicates) {
        text += "  " + oneLine(duplicate.fileName) + " is enrolled as " +
                inQuotes(duplicate.duplicateOf) + "\n";
    }
    for (const UnusableRecord& record : summary.unusable) {
        text += "  " + record.reason + "\n";
    }
    return text;
}

ordered_json demoJson(const DemoSummary& summary) {
    ordered_json duplicates = ordered_json::array();
    for (const DuplicateFinger& duplicate : summary.duplicates) {
        duplicates.push_back(
            {{"record", duplicate.fileName}, {"duplicateOf", duplicate.duplicateOf}});
    }
    ordered_json unusable = ordered_json::array();
    for (const UnusableRecord& record : summary.unusable) {
        unusable.push_back({{"record", record.fileName}, {"reason", record.reason}});
    }
    ordered_json identify = stepJson(summary.identify);
    identify["right"] = summary.identifiedRight;
    identify["wrong"] = summary.identifiedWrong;
    const ComparisonTime all = timeOfAll(summary);
    return {{"fingers", summary.fingerCount},
            {"impressions", summary.impressionCount},
            {"enroll", stepJson(summary.enroll)},
            {"verifyGenuine", stepJson(summary.verifyGenuine)},
            {"verifyImpostor", stepJson(summary.verifyImpostor)},
            {"impostorPairs", summary.impostorPairs},
            {"identify", identify},
            {"comparisons", all.comparisonCount},
            {"millisecondsPerComparison", meanMilliseconds(all)},
            {"duplicates", duplicates},
            {"unusable", unusable}};
}

}  // namespace orl::unit
