#include "adapter/matcher_bridge.h"

#include <cstring>
#include <exception>
#include <new>
#include <span>

#include "adapter/engine_log.h"
#include "adapter/memory_wipe.h"
#include "matcher/api/finger_matcher.h"

namespace orl::adapter {
namespace {

using RecordBytes = std::span<const std::uint8_t>;

// A record of one finger view: a 24-byte record header, a 4-byte view header whose last byte is the
// minutiae count, 6 bytes for each minutia, and the 2-byte length of the extended data.
constexpr std::size_t kRecordHeaderBytes = 24;
constexpr std::size_t kViewHeaderBytes = 4;
constexpr std::size_t kMinutiaBytes = 6;
constexpr std::size_t kExtendedLengthBytes = 2;
constexpr std::size_t kMinutiaeCountByte = kRecordHeaderBytes + kViewHeaderBytes - 1;
constexpr std::size_t kBytesBeforeMinutiae = kRecordHeaderBytes + kViewHeaderBytes;

constexpr std::int32_t kDefaultThreshold = 0;  // the matcher's own
constexpr std::int32_t kErrorTextBytes = 512;

// How many bytes the record's first view takes with the record header, or 0 when the record does
// not hold them. Deliberate: the length is taken from the minutiae count alone. A record with more
// views, or with extended data, is cut to its first view's minutiae and whatever two bytes follow
// them.
std::size_t FirstViewBytes(RecordBytes record) noexcept {
    if (record.size() < kBytesBeforeMinutiae) {
        return 0;
    }
    const std::size_t minutiaeCount = record[kMinutiaeCountByte];
    const std::size_t bytes =
        kBytesBeforeMinutiae + minutiaeCount * kMinutiaBytes + kExtendedLengthBytes;
    return bytes <= record.size() ? bytes : 0;
}

// Owns a copy of the first bytes of a record, on the general heap, and wipes it at its end.
class RecordCopy {
  public:
    // Leaves the object empty when memory has run out.
    RecordCopy(RecordBytes record, std::size_t bytes) noexcept
        : data_(new (std::nothrow) std::uint8_t[bytes]), size_(bytes) {
        if (data_ != nullptr) {
            std::memcpy(data_, record.data(), bytes);
        }
    }
    ~RecordCopy() {
        if (data_ != nullptr) {
            WipeMemory(data_, size_);
            delete[] data_;
        }
    }
    RecordCopy(const RecordCopy&) = delete;
    RecordCopy& operator=(const RecordCopy&) = delete;

    bool IsEmpty() const noexcept { return data_ == nullptr; }
    const std::uint8_t* Data() const noexcept { return data_; }
    std::int32_t Size() const noexcept { return static_cast<std::int32_t>(size_); }

  private:
    std::uint8_t* data_;
    std::size_t size_;
};

bool ReadyMatcher() {
    if (ORLFingerMatcher_IsInitialized()) {
        return true;
    }
    char errorText[kErrorTextBytes] = {};
    if (ORLFingerMatcher_Initialize(errorText, kErrorTextBytes) == ORLFingerMatcher_StatusOk) {
        return true;
    }
    EngineLog(
        kEngineLogTag, "MatchISOTemplates: ORLFingerMatcher_Initialize failed: %s", errorText);
    return false;
}

bool NoMatchForStatus(std::int32_t status) noexcept {
    EngineLog(kEngineLogTag, "MatchISOTemplates: NO MATCH, Status: %d", status);
    return false;
}

bool MatchCopies(const RecordCopy& enrolled, const RecordCopy& captured) {
    char errorText[kErrorTextBytes] = {};
    MatchResult result = {};
    const std::int32_t status = ORLFingerMatcher_Match(enrolled.Data(),
                                                       enrolled.Size(),
                                                       captured.Data(),
                                                       captured.Size(),
                                                       kDefaultThreshold,
                                                       &result,
                                                       errorText,
                                                       kErrorTextBytes);
    if (status != ORLFingerMatcher_StatusOk) {
        return NoMatchForStatus(status);
    }
    const unsigned score = result.Score;
    if (result.Matched == 0) {
        EngineLog(kEngineLogTag, "MatchISOTemplates: NO MATCH score=%u", score);
        return false;
    }
    EngineLog(kEngineLogTag, "MatchISOTemplates: MATCH score=%u", score);
    return true;
}

bool MatchFirstViews(RecordBytes enrolled, RecordBytes captured) {
    if (!ReadyMatcher()) {
        return false;
    }
    const std::size_t enrolledBytes = FirstViewBytes(enrolled);
    if (enrolledBytes == 0) {
        return NoMatchForStatus(ORLFingerMatcher_StatusProbeNotLoaded);
    }
    const std::size_t capturedBytes = FirstViewBytes(captured);
    if (capturedBytes == 0) {
        return NoMatchForStatus(ORLFingerMatcher_StatusCandidateNotLoaded);
    }
    const RecordCopy enrolledCopy(enrolled, enrolledBytes);
    const RecordCopy capturedCopy(captured, capturedBytes);
    if (enrolledCopy.IsEmpty() || capturedCopy.IsEmpty()) {
        return false;
    }
    return MatchCopies(enrolledCopy, capturedCopy);
}

bool NoMatchForException(const char* text) noexcept {
    EngineLog(kEngineLogTag, "MatchISOTemplates: exception: %s", text);
    return false;
}

}  // namespace

bool MatchISOTemplates(const std::uint8_t* EnrolledIso,
                       std::size_t EnrolledSize,
                       const std::uint8_t* CapturedIso,
                       std::size_t CapturedSize) noexcept {
    EngineLog(kEngineLogTag,
              "MatchISOTemplates enrolledSize=%zu capturedSize=%zu",
              EnrolledSize,
              CapturedSize);
    try {
        return MatchFirstViews({EnrolledIso, EnrolledSize}, {CapturedIso, CapturedSize});
    } catch (const std::exception& failure) {
        return NoMatchForException(failure.what());
    } catch (...) {
        return NoMatchForException("unknown");
    }
}

void ShutDownMatcher() noexcept {
    ORLFingerMatcher_Shutdown();
}

}  // namespace orl::adapter
