// Any sequence of calls of the interface table: each answers as the model does, and afterwards the
// context, the process heap, the storage's calls and what reached the matcher are the model's too.
// Between the calls the input scripts the neighbours: records and answers of the storage, answers
// of the matcher, and which allocation of either heap fails. At the end every block is freed, and
// wiped.

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "fuzz/engine_steps.h"
#include "fuzz/input_reader.h"
#include "fuzz/modelled_unit.h"

namespace {

using namespace orl::fuzz;

// Twice what most sequences need.
constexpr Step kSteps[] = {Attach,
                           Detach,
                           ClearContext,
                           AcceptSample,
                           AcceptSample,
                           Export,
                           AcceptTypeInfo,
                           Verify,
                           Verify,
                           Identify,
                           Identify,
                           CreateEnrollment,
                           CreateEnrollment,
                           UpdateEnrollment,
                           UpdateEnrollment,
                           EnrollmentStatus,
                           CheckForDuplicate,
                           CheckForDuplicate,
                           Commit,
                           Commit,
                           Discard,
                           CallStubs,
                           CallWithoutPipeline,
                           SwitchStorage,
                           ScriptRecords,
                           ScriptRecords,
                           ScriptAnswers,
                           ScriptMatcher,
                           ScriptMatcher,
                           FailProcessHeap,
                           FailGeneralHeap};

void RunSequence(InputReader input) {
    ModelledUnit unit;
    Attach(unit, input);
    while (!input.AtEnd()) {
        kSteps[input.Below(std::size(kSteps))](unit, input);
        unit.CheckState();
    }
    Detach(unit, input);
    unit.CheckEverythingIsFreed();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMostBytes = 2000;  // some hundred steps
    if (size <= kMostBytes) {
        RunSequence(InputReader({data, size}));
    }
    return 0;
}
