// The fuzzer's mutation of an input that is one record.

#include <algorithm>

#include "fuzz/record_mutator.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

// The fuzzer calls it with room for mostBytes bytes at `data`.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data,
                                               std::size_t size,
                                               std::size_t mostBytes,
                                               unsigned int seed) {
    using namespace orl::fuzz;
    if (mostBytes < RecordMutator::kLeastRoom) {
        return LLVMFuzzerMutate(data, size, mostBytes);
    }
    Bytes record(data, data + size);
    RecordMutator(seed, LLVMFuzzerMutate).Mutate(record, mostBytes);
    std::copy(record.begin(), record.end(), data);
    return record.size();
}
