#pragma once

// The demonstration: enrolls one impression of every finger, verifies the other impressions against
// their own finger and against others, identifies them, and counts.

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tools/orl_unit/biometric_unit.h"
#include "tools/orl_unit/demo_records.h"

namespace orl::unit {

// Outcomes of one step of the demonstration.
struct StepCounts {
    std::size_t accepted = 0;
    std::size_t rejected = 0;
    ComparisonTime time;

    [[nodiscard]] std::size_t tried() const { return accepted + rejected; }
    void count(bool isAccepted, const ComparisonTime& added) {
        ++(isAccepted ? accepted : rejected);
        time.add(added);
    }
};

// A finger that was not enrolled, since the duplicate check found it stored already.
struct DuplicateFinger {
    std::string fileName;
    std::string duplicateOf;  // the name of the stored one
};

struct DemoSummary {
    std::size_t fingerCount = 0;
    std::size_t impressionCount = 0;
    StepCounts enroll;  // accepted: stored; rejected: duplicates
    StepCounts verifyGenuine;
    StepCounts verifyImpostor;
    std::size_t impostorPairs = 0;  // all there are; verifyImpostor has at most the limit
    StepCounts identify;            // accepted: some finger was named
    std::size_t identifiedRight = 0;
    std::size_t identifiedWrong = 0;
    std::vector<DuplicateFinger> duplicates;
    std::vector<UnusableRecord> unusable;
};

// Told of progress: steps done and steps in all. May throw to stop the demonstration.
using DemoProgress = std::function<void(std::size_t done, std::size_t total)>;

// Runs the demonstration on a unit whose store is open and empty. At most impostorLimit impostor
// comparisons are made, spread evenly over all pairs of an impression and an other finger. Throws
// CommandError when the unit fails.
DemoSummary runDemo(BiometricUnit& unit,
                    const DemoRecords& records,
                    std::size_t impostorLimit,
                    const DemoProgress& progress);

// The index of the i-th of selectedCount items spread evenly over itemCount. REQUIRES:
// i < selectedCount <= itemCount.
std::size_t spreadIndex(std::size_t i, std::size_t selectedCount, std::size_t itemCount);

}  // namespace orl::unit
