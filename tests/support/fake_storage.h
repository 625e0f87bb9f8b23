#pragma once

// A storage adapter in memory, for tests of the engine adapter. It behaves as a storage adapter is
// asked to: a pipeline has one result set and one cursor into it, queries leave the cursor on the
// first record found, and pointers handed out stay valid until the cursor moves. It records its
// calls, and any of them can be told to fail.

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/wbf.h"

namespace orl::test {

// An identity of the GUID type that differs for each number.
WINBIO_IDENTITY IdentityNumber(std::uint32_t number);

bool SameIdentity(const WINBIO_IDENTITY& a, const WINBIO_IDENTITY& b);

struct FakeRecord {
    std::optional<WINBIO_IDENTITY> identity;  // none: the record comes with a null Identity
    WINBIO_BIOMETRIC_SUBTYPE subFactor = 0;
    std::optional<std::vector<std::uint8_t>> templateBlob;  // none: null, with size 0
    std::vector<std::uint8_t> payload = {};
};

class FakeStorage {
  public:
    // Connects itself to the pipeline, for as long as both live.
    explicit FakeStorage(WINBIO_PIPELINE& pipeline);
    FakeStorage(const FakeStorage&) = delete;
    FakeStorage& operator=(const FakeStorage&) = delete;

    // What is stored, in the order in which queries find it.
    std::vector<FakeRecord> records;

    // Makes call number `nth` (from 1) of a routine, named as its slot, return `hr` and do nothing.
    void Fail(const std::string& routine, int nth, HRESULT hr);

    // Makes every call of a routine that does its work return `hr`, a success code, for S_OK.
    void SucceedWith(const std::string& routine, HRESULT hr) { successes_[routine] = hr; }

    // The calls so far with their arguments, as "QueryByContent 255 null 0"; cleared by taking
    // them.
    std::vector<std::string> TakeCalls() { return std::exchange(calls_, {}); }

    // The record given to the last AddRecord as it stood, pointers included.
    const WINBIO_STORAGE_RECORD& LastAdded() const { return lastAdded_; }

    // The identity given to the last QueryBySubject.
    PWINBIO_IDENTITY LastSubject() const { return lastSubject_; }

    // Whether every record passed to GetCurrentRecord was all zeros before it was filled.
    bool RecordsCameZeroed() const { return recordsCameZeroed_; }

  private:
    static FakeStorage& Of(PWINBIO_PIPELINE pipeline);
    static WINBIO_STORAGE_INTERFACE MakeInterface();
    static HRESULT WINAPI AddRecord(PWINBIO_PIPELINE pipeline, PWINBIO_STORAGE_RECORD record);
    static HRESULT WINAPI QueryBySubject(PWINBIO_PIPELINE pipeline,
                                         PWINBIO_IDENTITY identity,
                                         WINBIO_BIOMETRIC_SUBTYPE subFactor);
    static HRESULT WINAPI QueryByContent(PWINBIO_PIPELINE pipeline,
                                         WINBIO_BIOMETRIC_SUBTYPE subFactor,
                                         PULONG indexVector,
                                         SIZE_T indexElementCount);
    static HRESULT WINAPI FirstRecord(PWINBIO_PIPELINE pipeline);
    static HRESULT WINAPI NextRecord(PWINBIO_PIPELINE pipeline);
    static HRESULT WINAPI GetCurrentRecord(PWINBIO_PIPELINE pipeline,
                                           PWINBIO_STORAGE_RECORD record);

    // Notes a call, and tells the failure planned for it.
    std::optional<HRESULT> Note(const std::string& routine, const std::string& arguments);
    HRESULT StartResultSet(const std::string& routine, std::vector<std::size_t> found);

    // What a call that did its work returns.
    HRESULT Success(const std::string& routine) const;

    WINBIO_STORAGE_INTERFACE interface_;
    std::vector<std::string> calls_;
    std::map<std::string, int> callCounts_;
    std::map<std::pair<std::string, int>, HRESULT> failures_;
    std::map<std::string, HRESULT> successes_;
    std::vector<std::size_t> resultSet_;  // indices into `records`
    std::size_t cursor_ = 0;
    WINBIO_STORAGE_RECORD lastAdded_ = {};
    PWINBIO_IDENTITY lastSubject_ = nullptr;
    bool recordsCameZeroed_ = true;
};

}  // namespace orl::test
