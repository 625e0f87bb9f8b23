#pragma once

// What a fuzzer's input holds for the adapter to read: BIRs, and records as a storage hands them
// out. Mostly sound, so that what lies behind the first check is reached too.

#include <cstddef>
#include <cstdint>

#include "fuzz/engine_model.h"
#include "fuzz/input_reader.h"
#include "fuzz/scripted_storage.h"
#include "platform/wbf.h"

namespace orl::fuzz {

// An identity whose bytes all are `number`.
WINBIO_IDENTITY IdentityOf(std::uint8_t number);

// A BIR with a record of one view, mostly sound: now and then its sizes are a little off, or it is
// a few bytes of anything.
Bytes ReadBir(InputReader& input);

// A record as a storage may give it. What it states of its size is never such that a reader who
// keeps the rules would leave the bytes that are there.
ScriptedRecord ReadRecord(InputReader& input);

}  // namespace orl::fuzz
