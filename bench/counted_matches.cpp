// orl-counted-matches N: matches N impostor pairs of the first folder of records, once each, for a
// tool that counts instructions inside ORLFingerMatcher_Match. The first match builds the lookup
// tables.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/bench_records.h"
#include "matcher/api/finger_matcher.h"

namespace {

void Match(const orl::bench::RecordPair& pair) {
    MatchResult result{};
    const std::int32_t status =
        ORLFingerMatcher_Match(pair.probe->bytes.data(),
                               static_cast<std::int32_t>(pair.probe->bytes.size()),
                               pair.candidate->bytes.data(),
                               static_cast<std::int32_t>(pair.candidate->bytes.size()),
                               0,
                               &result,
                               nullptr,
                               0);
    if (status != ORLFingerMatcher_StatusOk) {
        throw std::runtime_error(ORLFingerMatcher_StatusText(status));
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc != 2) {
            throw std::invalid_argument("usage: orl-counted-matches N");
        }
        const orl::bench::RecordSet& set = orl::bench::RecordSets().front();
        const std::vector<orl::bench::RecordPair> pairs =
            orl::bench::ImpostorPairs(set, std::stoul(argv[1]));
        ORLFingerMatcher_Initialize(nullptr, 0);
        for (const orl::bench::RecordPair& pair : pairs) {
            Match(pair);
        }
        std::printf("%zu\n", pairs.size());
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orl-counted-matches: %s\n", error.what());
        return 1;
    }
}
