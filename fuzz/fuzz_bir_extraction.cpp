// Any bytes as a BIR: the record found lies inside it, and the bridge takes what is found, against
// itself, without an exception.

#include <algorithm>
#include <cstring>
#include <memory>

#include "adapter/bir_extraction.h"
#include "adapter/matcher_bridge.h"
#include "fuzz/require.h"
#include "platform/wbf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using orl::fuzz::Require;
    constexpr std::size_t kHeaderBytes = 32;
    const std::unique_ptr<std::uint8_t[]> bir(new std::uint8_t[size]);
    std::copy_n(data, size, bir.get());
    const std::uint8_t* iso = bir.get();
    std::size_t isoSize = size;
    const HRESULT hr = orl::adapter::ExtractISOFromBIR(bir.get(), size, &iso, &isoSize);
    if (FAILED(hr)) {
        Require(iso == nullptr && isoSize == 0, "nothing is handed out on failure");
        Require(hr == E_INVALIDARG || hr == WINBIO_E_NO_CAPTURE_DATA, "a known failure");
        return 0;
    }
    Require(size >= kHeaderBytes && isoSize > 0, "a header and a record");
    Require(iso >= bir.get() && iso + isoSize <= bir.get() + size, "the record lies in the BIR");
    orl::adapter::MatchISOTemplates(iso, isoSize, iso, isoSize);
    return 0;
}
