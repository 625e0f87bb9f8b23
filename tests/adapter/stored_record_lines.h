#pragma once

// The log of reading a stored record of 4 minutiae and comparing it with a probe of 3: records of
// 54 and 48 bytes behind a 32-byte header.

#include <string>

#include "tests/adapter/adapter_test.h"

namespace orl::test {

inline const std::string kStoredOk = "ExtractISOFromBIR: OK isoSize=54";
inline const std::string kSizes = "MatchISOTemplates enrolledSize=54 capturedSize=48";
inline const std::string kQueryOk = ResultLine("StorageInterface->QueryByContent", "00000000");
inline const std::string kRecordOk = ResultLine("StorageInterface->GetCurrentRecord", "00000000");

}  // namespace orl::test
