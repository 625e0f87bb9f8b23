#pragma once

// A pipeline with the host's storage adapter attached, for tests of its routines.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/wbf.h"
#include "tools/orl_unit/storage_context.h"

namespace orl::unit {

using Bytes = std::vector<std::uint8_t>;

// Sub-factors of the right hand, in a record's own type.
inline constexpr std::uint8_t kThumb = WINBIO_ANSI_381_POS_RH_THUMB;
inline constexpr std::uint8_t kIndex = WINBIO_ANSI_381_POS_RH_INDEX_FINGER;

WINBIO_IDENTITY guidIdentity(std::uint32_t number);
// A SID of byteCount bytes that begin with number.
WINBIO_IDENTITY sidIdentity(std::uint8_t number, std::uint32_t byteCount);
WINBIO_IDENTITY wildcardIdentity();

class StorageUnit {
  public:
    StorageUnit();
    ~StorageUnit();
    StorageUnit(const StorageUnit&) = delete;
    StorageUnit& operator=(const StorageUnit&) = delete;

    HRESULT create(const std::string& path, std::size_t indexElementCount = 0);
    HRESULT open(const std::string& path);
    HRESULT close();
    HRESULT erase(const std::string& path);

    HRESULT add(WINBIO_IDENTITY identity,
                std::uint8_t subFactor,
                Bytes templateBlob,
                Bytes payload = {},
                std::vector<ULONG> index = {});
    HRESULT queryBySubject(WINBIO_IDENTITY identity, std::uint8_t subFactor);
    HRESULT queryByContent(std::uint8_t subFactor, std::vector<ULONG> index = {});
    HRESULT remove(WINBIO_IDENTITY identity, std::uint8_t subFactor);
    HRESULT first();
    HRESULT next();
    HRESULT current(WINBIO_STORAGE_RECORD& record);
    HRESULT count(SIZE_T& recordCount);
    HRESULT clear();

    // The template of the current record; empty when there is none.
    Bytes currentTemplate();
    // The templates of the whole result set, from the first record on.
    std::vector<Bytes> allTemplates();

    WINBIO_PIPELINE& pipeline() { return pipeline_; }
    WINBIO_STORAGE_INTERFACE& routines() { return *pipeline_.StorageInterface; }
    StorageContext& context();

  private:
    WINBIO_PIPELINE pipeline_ = {};
};

}  // namespace orl::unit
