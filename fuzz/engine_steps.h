#pragma once

// The steps of which a sequence is made. Most call one entry point of the adapter, with arguments
// that the input chooses, and require its result and outputs to be the model's; some script what
// the neighbours will do. Each ends the process when a property does not hold. What a step leaves
// behind is compared afterwards, by ModelledUnit::CheckState.

#include "fuzz/input_reader.h"
#include "fuzz/modelled_unit.h"

namespace orl::fuzz {

using Step = void (*)(ModelledUnit& unit, InputReader& input);

// What outputs hold before a call.
constexpr int kRubbish = 0xEE;

// sample_steps.cpp: a unit's life, and what it is given. AcceptSample and Export attach it first
// when it is not, since the service calls them on attached units only. Attach leaves an attached
// one alone.
void Attach(ModelledUnit& unit, InputReader& input);
void Detach(ModelledUnit& unit, InputReader& input);
void ClearContext(ModelledUnit& unit, InputReader& input);
void AcceptSample(ModelledUnit& unit, InputReader& input);
void Export(ModelledUnit& unit, InputReader& input);
void AcceptTypeInfo(ModelledUnit& unit, InputReader& input);

// comparison_steps.cpp: the sample against stored records.
void Verify(ModelledUnit& unit, InputReader& input);
void Identify(ModelledUnit& unit, InputReader& input);
void CheckForDuplicate(ModelledUnit& unit, InputReader& input);

// enrollment_steps.cpp
void CreateEnrollment(ModelledUnit& unit, InputReader& input);
void UpdateEnrollment(ModelledUnit& unit, InputReader& input);
void EnrollmentStatus(ModelledUnit& unit, InputReader& input);
void Commit(ModelledUnit& unit, InputReader& input);
void Discard(ModelledUnit& unit, InputReader& input);

// fixed_answer_steps.cpp: calls whose answer depends on no state.
void CallStubs(ModelledUnit& unit, InputReader& input);
void CallWithoutPipeline(ModelledUnit& unit, InputReader& input);

// neighbour_steps.cpp: the adapter's neighbours and the model's are scripted alike.
void SwitchStorage(ModelledUnit& unit, InputReader& input);
void ScriptRecords(ModelledUnit& unit, InputReader& input);
void ScriptAnswers(ModelledUnit& unit, InputReader& input);
void ScriptMatcher(ModelledUnit& unit, InputReader& input);
void FailProcessHeap(ModelledUnit& unit, InputReader& input);
void FailGeneralHeap(ModelledUnit& unit, InputReader& input);

}  // namespace orl::fuzz
