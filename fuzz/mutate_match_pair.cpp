// The fuzzer's mutation of an input that is two records: one of them changes, or one becomes a copy
// of the other with a few changes, since unrelated records never come far in a match.

#include <algorithm>

#include "fuzz/record_mutator.h"
#include "fuzz/record_pair.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

// The fuzzer calls it with room for mostBytes bytes at `data`.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data,
                                               std::size_t size,
                                               std::size_t mostBytes,
                                               unsigned int seed) {
    using namespace orl::fuzz;
    const std::size_t mostRecordBytes =
        mostBytes < kPairHeaderBytes ? 0 : (mostBytes - kPairHeaderBytes) / 2;
    if (mostRecordBytes < RecordMutator::kLeastRoom) {
        return LLVMFuzzerMutate(data, size, mostBytes);
    }
    const RecordPair pair = SplitPair({data, size});
    Bytes probe(pair.probe.begin(), pair.probe.end());
    Bytes candidate(pair.candidate.begin(), pair.candidate.end());
    probe.resize(std::min(probe.size(), mostRecordBytes));
    candidate.resize(std::min(candidate.size(), mostRecordBytes));
    RecordMutator mutator(seed, LLVMFuzzerMutate);
    if (mutator.Once(4)) {
        candidate = probe;
    }
    mutator.Mutate(mutator.Once(2) ? probe : candidate, mostRecordBytes);
    const Bytes joined = JoinPair(probe, candidate);
    std::copy(joined.begin(), joined.end(), data);
    return joined.size();
}
