#pragma once

// A small model of one biometric unit: what the engine adapter keeps for it, and what each entry
// point must answer. It is written from the rules alone and shares no code with the adapter; it
// works through copies of the neighbours (storage, matcher, memory) that the adapter is given.

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "fuzz/scripted_storage.h"
#include "platform/wbf.h"

namespace orl::fuzz {

using Bytes = std::vector<std::uint8_t>;

// How the matcher answers one comparison.
enum class Comparison { kMatch, kNoMatch, kFailedStatus, kStandardException, kOtherException };

// How it answers being initialised.
enum class Initialization { kSucceeds, kFails, kThrows };

// A memory that fails once, after so many more successes.
class ScriptedMemory {
  public:
    void FailAfter(std::size_t successes) { successesLeft_ = successes; }
    bool Gives();

  private:
    std::optional<std::size_t> successesLeft_;
};

// Two records that reached the matcher.
struct ComparedPair {
    Bytes stored;
    Bytes fresh;
    bool operator==(const ComparedPair&) const = default;
};

class EngineModel {
  public:
    // What the adapter keeps.
    bool attached = false;
    std::optional<Bytes> sample;
    std::optional<Bytes> pendingTemplate;
    std::optional<Bytes> typeInfo;
    bool enrolling = false;

    // Its neighbours.
    ScriptedStorage storage;
    bool hasStorage = true;
    ScriptedMemory processHeap;
    ScriptedMemory generalHeap;
    bool matcherReady = false;
    Initialization initialization = Initialization::kSucceeds;
    std::deque<Comparison> comparisons;  // of the coming ones; no match when empty
    std::vector<ComparedPair> compared;  // since the start
    int initializations = 0;
    int shutdowns = 0;

    // Blocks of the process heap that the adapter holds.
    std::size_t LiveBlocks() const;

    // The entry points. Where one needs an attached unit, so does the model.
    HRESULT Attach();
    HRESULT Detach();
    HRESULT ClearContext();
    HRESULT AcceptSample(const std::optional<Bytes>& given, WINBIO_REJECT_DETAIL& rejectDetail);
    HRESULT Export(Bytes& exported);
    HRESULT AcceptTypeInfo(const std::optional<Bytes>& given);
    HRESULT Verify(const WINBIO_IDENTITY* identity,
                   WINBIO_BIOMETRIC_SUBTYPE subFactor,
                   bool& match);
    HRESULT Identify(WINBIO_IDENTITY& identity, WINBIO_BIOMETRIC_SUBTYPE& subFactor);
    HRESULT CreateEnrollment();
    HRESULT UpdateEnrollment(WINBIO_REJECT_DETAIL& rejectDetail);
    HRESULT EnrollmentStatus() const;
    HRESULT CheckForDuplicate(WINBIO_IDENTITY& identity,
                              WINBIO_BIOMETRIC_SUBTYPE& subFactor,
                              bool& duplicate);
    HRESULT Commit(WINBIO_IDENTITY* identity,
                   WINBIO_BIOMETRIC_SUBTYPE subFactor,
                   UCHAR* payload,
                   SIZE_T payloadBytes);
    HRESULT Discard();

  private:
    bool Matches(const Bytes& stored, const Bytes& fresh);
    // Whether a stored record matches, with its owner; nothing when the query fails.
    std::optional<bool> FindAmongStored(const Bytes& fresh,
                                        WINBIO_IDENTITY& identity,
                                        WINBIO_BIOMETRIC_SUBTYPE& subFactor);
    HRESULT CapturedRecord(Bytes& record) const;
};

// The rule by which a record is found in a BIR of which `statedBytes` are said to be there.
HRESULT RecordInBir(const Bytes& bir, SIZE_T statedBytes, Bytes& record);

// What a BIR says of its record.
struct StandardData {
    std::uint64_t size = 0;    // bytes
    std::uint64_t offset = 0;  // from the start of the BIR
};
// REQUIRES: 16 bytes or more.
StandardData StandardDataOf(const Bytes& bir);

}  // namespace orl::fuzz
