#pragma once

// The records of a demonstration: the files FINGER_IMPRESSION.fmr of a folder, by finger.

#include <filesystem>
#include <string>
#include <vector>

#include "tools/orl_unit/record_file.h"

namespace orl::unit {

struct Impression {
    unsigned long number = 0;
    std::string fileName;
    FingerRecord record;
};

struct DemoFinger {
    std::string name;
    std::vector<Impression> impressions;  // ascending by number, never empty
};

// A file that cannot take part, and a line that names it and says why.
struct UnusableRecord {
    std::string fileName;
    std::string reason;
};

struct DemoRecords {
    std::vector<DemoFinger> fingers;  // ascending by name
    std::vector<UnusableRecord> unusable;
};

// Reads the folder's *.fmr files. Throws CommandError when the folder cannot be read or holds no
// usable record.
DemoRecords readDemoRecords(const std::filesystem::path& folder);

}  // namespace orl::unit
