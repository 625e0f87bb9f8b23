#pragma once

// The one place where the adapter meets the matcher, and the one that stops exceptions.

#include <cstddef>
#include <cstdint>

namespace orl::adapter {

// Whether two ISO/IEC 19794-2 records are of the same finger, at the matcher's default threshold.
// The stored record comes first, the newer one second. Readies the matcher when it is not.
//
// Only the first finger view of each record is compared, without extended data: a copy of
// (minutiae count + 5) * 6 bytes, wiped before it is freed. A record too short for that, every
// failure and every exception are a no match with a log line of their own; a copy that cannot be
// allocated is one without.
//
// REQUIRES: EnrolledIso[0..EnrolledSize) and CapturedIso[0..CapturedSize) are readable.
// Never throws; safe from several threads at once.
bool MatchISOTemplates(const std::uint8_t* EnrolledIso,
                       std::size_t EnrolledSize,
                       const std::uint8_t* CapturedIso,
                       std::size_t CapturedSize) noexcept;

// Returns the matcher to its uninitialised state; the next match readies it again.
void ShutDownMatcher() noexcept;

}  // namespace orl::adapter
