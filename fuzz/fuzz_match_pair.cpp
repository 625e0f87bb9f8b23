// Two records against each other: the matcher's figures are those of the plain one, and the
// decision follows the threshold. record_pair.h tells how the input holds them.

#include <cstring>
#include <span>
#include <stdexcept>
#include <string>

#include "fuzz/record_pair.h"
#include "fuzz/require.h"
#include "matcher/api/finger_matcher.h"
#include "matcher/api/match_facade.h"
#include "matcher/api/template_loading.h"
#include "tests/support/naive_matching.h"

namespace {

using namespace orl::matcher;
using orl::fuzz::Require;

LoadedTemplate Load(std::span<const std::uint8_t> record) {
    LoadedTemplate loaded;
    std::string message;
    loadTemplateFromBuffer(record.data(), record.size(), "Probe", 2, 4, loaded, message);
    return loaded;
}

// What the driver alone reports; the facade's decision is not the plain matcher's business.
TemplateMatchResult WithoutDecision(TemplateMatchResult result) {
    result.decision = 0;
    result.fingerAgreement = true;
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMostBytes = 700;  // the plain matcher is slow on large records
    if (size > kMostBytes) {
        return 0;
    }
    const auto [probe, candidate] = orl::fuzz::SplitPair({data, size});
    TemplateMatchResult result;
    std::string message;
    constexpr std::int32_t kThreshold = 300;
    try {
        const std::int32_t status = matchBuffers(probe.data(),
                                                 probe.size(),
                                                 candidate.data(),
                                                 candidate.size(),
                                                 result,
                                                 message,
                                                 kThreshold);
        if (status != ORLFingerMatcher_StatusOk) {
            Require(!message.empty(), "a failure has a message");
            return 0;
        }
        const TemplateMatchResult plain =
            orl::naive::MatchTemplates(Load(probe).fingers, Load(candidate).fingers);
        Require(WithoutDecision(result) == plain, "the plain matcher's figures");
        Require(result.decision == 0 || (result.decision == 1 && result.score >= 175),
                "a match has a score of 175 at least");
    } catch (const std::runtime_error& error) {
        Require(std::strcmp(error.what(), "not triangulation") == 0, "the one exception");
    }
    return 0;
}
