#pragma once

// A storage adapter that answers as a script tells it, nonsense included: records with a null or a
// short template and a size that fits neither, any code from any call, success at the end of the
// result set. It is a plain value, so a model can work through a copy of it and afterwards compare
// what both have been asked.

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "platform/wbf.h"

namespace orl::fuzz {

struct ScriptedRecord {
    std::optional<WINBIO_IDENTITY> identity;  // none: a null pointer
    WINBIO_BIOMETRIC_SUBTYPE subFactor = 0;
    std::optional<std::vector<std::uint8_t>> blob;  // none: a null pointer
    SIZE_T statedBytes = 0;                         // what the storage says the template's size is
};

class ScriptedStorage {
  public:
    std::vector<ScriptedRecord> records;
    // Codes of the coming calls, in order; a negative one makes the call do nothing. Calls behind
    // the script give what a storage adapter gives.
    std::deque<HRESULT> answers;
    // What has been asked so far, arguments included, one text a call.
    std::vector<std::string> calls;

    HRESULT QueryBySubject(const WINBIO_IDENTITY* identity, WINBIO_BIOMETRIC_SUBTYPE subFactor);
    HRESULT QueryByContent(WINBIO_BIOMETRIC_SUBTYPE subFactor,
                           const ULONG* indexVector,
                           SIZE_T indexElements);
    HRESULT FirstRecord();
    HRESULT NextRecord();
    // Points `current` at the record under the cursor when the result is a success.
    HRESULT GetCurrentRecord(ScriptedRecord*& current);
    HRESULT AddRecord(const WINBIO_STORAGE_RECORD& record);

    // The platform's table, whose routines go to the storage that the pipeline's StorageContext
    // points to. They require that a record to be filled comes all zero.
    static WINBIO_STORAGE_INTERFACE* Table();

  private:
    // Notes a call and gives its scripted code, else `ordinary`. A scripted success does not mend
    // an ordinary failure of reading, where there is nothing to hand out.
    HRESULT Answer(std::string call, HRESULT ordinary);

    std::size_t cursor_ = 0;
};

}  // namespace orl::fuzz
