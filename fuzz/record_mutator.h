#pragma once

// Changes finger minutiae records as a careless or hostile writer would: minutiae moved onto or
// near one another, added and taken away, views copied, counts and lengths that are a little off.
// Bytes changed at random hardly ever pass the length check at a record's start; half of these
// records do.

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace orl::fuzz {

using Bytes = std::vector<std::uint8_t>;

// Changes bytes[0..size) at random, into at most `mostBytes` bytes, and returns the new size; the
// fuzzer's own mutation.
using PlainMutation = std::size_t (*)(std::uint8_t* bytes, std::size_t size, std::size_t mostBytes);

class RecordMutator {
  public:
    RecordMutator(std::uint32_t seed, PlainMutation plain) : random_(seed), plain_(plain) {}

    // Changes the record, or makes one, of at most `mostBytes` bytes.
    // REQUIRES: mostBytes >= kLeastRoom.
    void Mutate(Bytes& record, std::size_t mostBytes);

    static constexpr std::size_t kLeastRoom = 64;

    // A figure from 0 to limit - 1. REQUIRES: limit > 0.
    std::size_t Below(std::size_t limit) { return random_() % limit; }
    bool Once(std::size_t times) { return Below(times) == 0; }

  private:
    // Where a view begins in the record and how many minutiae it counts, as far as they are there.
    struct View {
        std::size_t start;
        std::size_t minutiae;
    };

    static std::vector<View> ViewsOf(const Bytes& record);
    static std::size_t MinutiaeStart(const View& view);

    void PlainChange(Bytes& record, std::size_t mostBytes);
    void NewRecord(Bytes& record);
    void ChangeMinutia(Bytes& record);
    void AddMinutiae(Bytes& record);
    void RemoveMinutia(Bytes& record);
    void CopyView(Bytes& record);
    void ChangeImageSize(Bytes& record);
    void ChangeCount(Bytes& record);
    void AddExtendedData(Bytes& record);
    static void MendViewCount(Bytes& record);

    void PutMinutia(Bytes& record, std::size_t at);
    View AnyView(const std::vector<View>& views) { return views[Below(views.size())]; }

    std::mt19937 random_;
    PlainMutation plain_;
};

// Writes the record's size into its length field. Nothing for fewer than 12 bytes.
void MendLength(Bytes& record);

}  // namespace orl::fuzz
