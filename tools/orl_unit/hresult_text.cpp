#include "tools/orl_unit/hresult_text.h"

#include <array>
#include <cstdint>
#include <cstdio>

namespace orl::unit {
namespace {

struct ResultName {
    HRESULT result;
    const char* name;
};

#define ORL_RESULT_NAME(code) \
    ResultName {              \
        code, #code           \
    }

const auto kResultNames = std::to_array<ResultName>({
    ORL_RESULT_NAME(E_NOTIMPL),
    ORL_RESULT_NAME(E_POINTER),
    ORL_RESULT_NAME(E_FAIL),
    ORL_RESULT_NAME(E_OUTOFMEMORY),
    ORL_RESULT_NAME(E_INVALIDARG),
    ORL_RESULT_NAME(WINBIO_I_MORE_DATA),
    ORL_RESULT_NAME(WINBIO_E_UNSUPPORTED_FACTOR),
    ORL_RESULT_NAME(WINBIO_E_UNKNOWN_ID),
    ORL_RESULT_NAME(WINBIO_E_NO_MATCH),
    ORL_RESULT_NAME(WINBIO_E_BAD_CAPTURE),
    ORL_RESULT_NAME(WINBIO_E_INVALID_DEVICE_STATE),
    ORL_RESULT_NAME(WINBIO_E_DATABASE_CANT_OPEN),
    ORL_RESULT_NAME(WINBIO_E_DATABASE_CANT_FIND),
    ORL_RESULT_NAME(WINBIO_E_DATABASE_ALREADY_EXISTS),
    ORL_RESULT_NAME(WINBIO_E_DATABASE_FULL),
    ORL_RESULT_NAME(WINBIO_E_DATABASE_LOCKED),
    ORL_RESULT_NAME(WINBIO_E_DATABASE_CORRUPTED),
    ORL_RESULT_NAME(WINBIO_E_DATABASE_NO_SUCH_RECORD),
    ORL_RESULT_NAME(WINBIO_E_DUPLICATE_ENROLLMENT),
    ORL_RESULT_NAME(WINBIO_E_DATABASE_READ_ERROR),
    ORL_RESULT_NAME(WINBIO_E_DATABASE_WRITE_ERROR),
    ORL_RESULT_NAME(WINBIO_E_DATABASE_NO_RESULTS),
    ORL_RESULT_NAME(WINBIO_E_DATABASE_NO_MORE_RECORDS),
    ORL_RESULT_NAME(WINBIO_E_DATABASE_BAD_INDEX_VECTOR),
    ORL_RESULT_NAME(WINBIO_E_NO_CAPTURE_DATA),
});

#undef ORL_RESULT_NAME

constexpr std::size_t kHexTextBytes = 11;

std::string hexText(HRESULT result) {
    std::array<char, kHexTextBytes> text{};
    std::snprintf(text.data(), text.size(), "0x%08X", static_cast<std::uint32_t>(result));
    return text.data();
}

}  // namespace

std::string hresultText(HRESULT result) {
    for (const ResultName& known : kResultNames) {
        if (known.result == result) {
            return std::string(known.name) + " (" + hexText(result) + ")";
        }
    }
    return hexText(result);
}

}  // namespace orl::unit
