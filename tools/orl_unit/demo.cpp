#include "tools/orl_unit/demo.h"

#include <algorithm>

#include "tools/orl_unit/finger_names.h"

namespace orl::unit {
namespace {

// The sub-factor of a record that does not say which finger it is of (UNSPECIFIED_POS_01).
constexpr std::uint8_t kUnspecifiedFinger = 0xF5;

// A finger that has been enrolled, and under which sub-factor.
struct EnrolledFinger {
    const DemoFinger* finger = nullptr;
    Subject subject;
};

// One further impression, and the enrolled finger that it belongs to.
struct Probe {
    const Impression* impression = nullptr;
    std::size_t owner = 0;
};

std::uint8_t subFactorOf(const FingerRecord& record) {
    return isSingleFinger(record.fingerPosition) ? record.fingerPosition : kUnspecifiedFinger;
}

class DemoRun {
  public:
    DemoRun(BiometricUnit& unit,
            const DemoRecords& records,
            std::size_t impostorLimit,
            const DemoProgress& progress)
        : unit_(unit), records_(records), impostorLimit_(impostorLimit), progress_(progress) {}

    DemoSummary run() {
        summary_.fingerCount = records_.fingers.size();
        summary_.unusable = records_.unusable;
        for (const DemoFinger& finger : records_.fingers) {
            summary_.impressionCount += finger.impressions.size();
        }
        stepTotal_ = summary_.impressionCount;
        enroll();
        collectProbes();
        verifyGenuine();
        verifyImpostors();
        identify();
        return std::move(summary_);
    }

  private:
    void stepDone() { progress_(++stepsDone_, stepTotal_); }

    void enroll() {
        for (const DemoFinger& finger : records_.fingers) {
            const Impression& impression = finger.impressions.front();
            const Subject subject{finger.name, subFactorOf(impression.record)};
            const EnrollOutcome outcome =
                unit_.enroll(impression.record, subject, DuplicateRule::kRefuse);
            summary_.enroll.count(outcome.stored, outcome.time);
            if (outcome.stored) {
                enrolled_.push_back({&finger, subject});
            } else {
                summary_.duplicates.push_back({impression.fileName, outcome.duplicateOf->name});
            }
            stepDone();
        }
    }

    void collectProbes() {
        for (std::size_t owner = 0; owner < enrolled_.size(); ++owner) {
            const auto& impressions = enrolled_[owner].finger->impressions;
            for (std::size_t i = 1; i < impressions.size(); ++i) {
                probes_.push_back({&impressions[i], owner});
            }
        }
        summary_.impostorPairs = probes_.size() * (enrolled_.empty() ? 0 : enrolled_.size() - 1);
        impostorCount_ = std::min(impostorLimit_, summary_.impostorPairs);
        stepTotal_ = records_.fingers.size() + 2 * probes_.size() + impostorCount_;
    }

    void verifyGenuine() {
        for (const Probe& probe : probes_) {
            const VerifyOutcome outcome =
                unit_.verify(probe.impression->record, enrolled_[probe.owner].subject);
            summary_.verifyGenuine.count(outcome.match, outcome.time);
            stepDone();
        }
    }

    void verifyImpostors() {
        if (enrolled_.size() < 2) {
            return;
        }
        const std::size_t othersCount = enrolled_.size() - 1;
        for (std::size_t i = 0; i < impostorCount_; ++i) {
            const std::size_t pair = spreadIndex(i, impostorCount_, summary_.impostorPairs);
            const Probe& probe = probes_[pair / othersCount];
            const std::size_t other = pair % othersCount;
            // The probe's own finger is left out of the count.
            const std::size_t claimed = other < probe.owner ? other : other + 1;
            const VerifyOutcome outcome =
                unit_.verify(probe.impression->record, enrolled_[claimed].subject);
            summary_.verifyImpostor.count(outcome.match, outcome.time);
            stepDone();
        }
    }

    void identify() {
        for (const Probe& probe : probes_) {
            const IdentifyOutcome outcome = unit_.identify(probe.impression->record);
            summary_.identify.count(outcome.subject.has_value(), outcome.time);
            if (outcome.subject) {
                const bool right = outcome.subject->name == enrolled_[probe.owner].subject.name;
                ++(right ? summary_.identifiedRight : summary_.identifiedWrong);
            }
            stepDone();
        }
    }

    BiometricUnit& unit_;
    const DemoRecords& records_;
    std::size_t impostorLimit_;
    const DemoProgress& progress_;
    DemoSummary summary_;
    std::vector<EnrolledFinger> enrolled_;
    std::vector<Probe> probes_;
    std::size_t impostorCount_ = 0;
    std::size_t stepsDone_ = 0;
    std::size_t stepTotal_ = 0;
};

}  // namespace

std::size_t spreadIndex(std::size_t i, std::size_t selectedCount, std::size_t itemCount) {
    // floor(i * itemCount / selectedCount) without a product that could overflow.
    const std::size_t whole = itemCount / selectedCount;
    const std::size_t rest = itemCount % selectedCount;
    return i * whole + i * rest / selectedCount;
}

DemoSummary runDemo(BiometricUnit& unit,
                    const DemoRecords& records,
                    std::size_t impostorLimit,
                    const DemoProgress& progress) {
    return DemoRun(unit, records, impostorLimit, progress).run();
}

}  // namespace orl::unit
