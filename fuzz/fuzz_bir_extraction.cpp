// Any bytes as a BIR that ends at an unreadable page: the record found lies inside it, and the
// bridge takes what is found, also as a block that ends at such a page, without an exception.

#include "adapter/bir_extraction.h"
#include "adapter/matcher_bridge.h"
#include "fuzz/require.h"
#include "platform/wbf.h"
#include "tests/support/guarded_buffer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using orl::adapter::MatchISOTemplates;
    using orl::fuzz::Require;
    using orl::test::GuardedBuffer;
    constexpr std::size_t kHeaderBytes = 32;
    const GuardedBuffer bir({data, size});
    const std::uint8_t* iso = bir.data();
    std::size_t isoSize = size;
    const HRESULT hr = orl::adapter::ExtractISOFromBIR(bir.data(), size, &iso, &isoSize);
    if (FAILED(hr)) {
        Require(iso == nullptr && isoSize == 0, "nothing is handed out on failure");
        Require(hr == E_INVALIDARG || hr == WINBIO_E_NO_CAPTURE_DATA, "a known failure");
        return 0;
    }
    Require(size >= kHeaderBytes && isoSize > 0, "a header and a record");
    Require(iso >= bir.data() && iso + isoSize <= bir.data() + size, "the record lies in the BIR");
    const GuardedBuffer record({iso, isoSize});
    const bool inBir = MatchISOTemplates(iso, isoSize, record.data(), isoSize);
    const bool alone = MatchISOTemplates(record.data(), isoSize, iso, isoSize);
    Require(inBir == alone, "a record compared with its copy, either way round");
    return 0;
}
