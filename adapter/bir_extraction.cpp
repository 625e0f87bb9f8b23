#include "adapter/bir_extraction.h"

#include <cstddef>

#include "adapter/engine_log.h"
#include "platform/wbf.h"

namespace orl::adapter {
namespace {

constexpr std::size_t kSizeField =
    offsetof(WINBIO_BIR, StandardDataBlock) + offsetof(WINBIO_BIR_DATA, Size);
constexpr std::size_t kOffsetField =
    offsetof(WINBIO_BIR, StandardDataBlock) + offsetof(WINBIO_BIR_DATA, Offset);

// A 32-bit little-endian number; a stored template need not be aligned.
std::size_t ReadLittleEndian32(const std::uint8_t* bytes) noexcept {
    constexpr unsigned kBitsPerByte = 8;
    constexpr unsigned kLastByte = 3;
    std::size_t value = 0;
    for (unsigned i = 0; i <= kLastByte; ++i) {
        value = (value << kBitsPerByte) | bytes[kLastByte - i];
    }
    return value;
}

}  // namespace

HRESULT ExtractISOFromBIR(const std::uint8_t* Bir,
                          std::size_t BirSize,
                          const std::uint8_t** IsoData,
                          std::size_t* IsoSize) noexcept {
    *IsoData = nullptr;
    *IsoSize = 0;
    if (Bir == nullptr || BirSize < sizeof(WINBIO_BIR)) {
        return E_INVALIDARG;
    }
    const std::size_t size = ReadLittleEndian32(Bir + kSizeField);
    const std::size_t offset = ReadLittleEndian32(Bir + kOffsetField);
    if (size == 0 || offset == 0) {
        return WINBIO_E_NO_CAPTURE_DATA;
    }
    static_assert(sizeof(std::size_t) == sizeof(std::uint64_t), "the sum below must not wrap");
    if (offset + size > BirSize) {
        EngineLog(kEngineLogTag,
                  "ExtractISOFromBIR: offset+size=%zu > birSize=%zu \u2014 E_INVALIDARG",
                  offset + size,
                  BirSize);
        return E_INVALIDARG;
    }
    *IsoData = Bir + offset;
    *IsoSize = size;
    EngineLog(kEngineLogTag, "ExtractISOFromBIR: OK isoSize=%zu", size);
    return S_OK;
}

}  // namespace orl::adapter
