#pragma once

// A benchmark's record, loaded the way a match loads its probe.

#include <cstdint>
#include <stdexcept>
#include <string>

#include "bench/bench_records.h"
#include "matcher/api/finger_matcher.h"
#include "matcher/api/template_loading.h"

namespace orl::bench {

// Template: LoadedTemplate or FullLoadedTemplate. Throws: std::runtime_error for a record that does
// not load.
template <typename Template>
Template Load(const Record& record) {
    Template loaded;
    std::string message;
    const std::int32_t status = loadTemplateFromBuffer(record.bytes.data(),
                                                       record.bytes.size(),
                                                       "Probe",
                                                       ORLFingerMatcher_StatusProbeNotLoaded,
                                                       ORLFingerMatcher_StatusProbeEmpty,
                                                       loaded,
                                                       message);
    if (status != ORLFingerMatcher_StatusOk) {
        throw std::runtime_error(message);
    }
    return loaded;
}

}  // namespace orl::bench
