#include "fuzz/read_records.h"

#include <cstring>
#include <iterator>

namespace orl::fuzz {
namespace {

constexpr std::size_t kHeaderBytes = 32;

void Put32(Bytes& bytes, std::size_t at, std::size_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

}  // namespace

WINBIO_IDENTITY IdentityOf(std::uint8_t number) {
    WINBIO_IDENTITY identity;
    std::memset(&identity, number, sizeof(identity));
    return identity;
}

Bytes ReadBir(InputReader& input) {
    if (input.Once(8)) {
        return input.Bytes(input.Below(64));
    }
    const std::size_t minutiae = input.Below(8);
    Bytes bir(kHeaderBytes + (minutiae + 5) * 6, input.Byte());
    const std::size_t declaredMore = input.Once(6) ? 1 : 0;
    bir[kHeaderBytes + 27] = static_cast<std::uint8_t>(minutiae + declaredMore);
    Put32(bir, 8, bir.size() - kHeaderBytes);
    Put32(bir, 12, kHeaderBytes);
    if (input.Once(5)) {  // a little off, or anything, or beyond 32 bits when summed
        constexpr std::size_t kMostBytes = 0xFFFFFFFF;
        const std::size_t sizes[] = {0, 1, bir.size(), bir.size() - kHeaderBytes + 1, kMostBytes};
        const std::size_t offsets[] = {0, 8, kHeaderBytes, kHeaderBytes + 1, kMostBytes};
        Put32(bir, 8, sizes[input.Below(std::size(sizes))]);
        Put32(bir, 12, offsets[input.Below(std::size(offsets))]);
    }
    return bir;
}

ScriptedRecord ReadRecord(InputReader& input) {
    ScriptedRecord record;
    if (!input.Once(4)) {
        record.identity = IdentityOf(input.Byte());
    }
    record.subFactor = input.Byte();
    constexpr SIZE_T kHuge = ~SIZE_T{0};
    if (input.Once(6)) {
        record.statedBytes = input.Once(2) ? kHuge : input.Byte();
        return record;
    }
    record.blob = ReadBir(input);
    record.statedBytes = record.blob->size();
    if (input.Once(3)) {
        const std::size_t smaller = input.Byte();
        if (smaller < record.statedBytes) {
            record.statedBytes = smaller;
        } else if (record.blob->size() >= kHeaderBytes) {
            const auto [size, offset] = StandardDataOf(*record.blob);
            record.statedBytes = size + offset <= record.blob->size() ? kHuge : record.statedBytes;
        }
    }
    return record;
}

}  // namespace orl::fuzz
