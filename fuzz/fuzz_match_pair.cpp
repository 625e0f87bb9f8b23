// Two records against each other: the matcher's figures are those of the plain one, and the
// decision follows the threshold. The first byte tells where the input is cut in two, in 1/256 of
// its length.

#include <cstring>
#include <stdexcept>
#include <string>

#include "fuzz/require.h"
#include "matcher/api/finger_matcher.h"
#include "matcher/api/match_facade.h"
#include "matcher/api/template_loading.h"
#include "tests/support/naive_matching.h"

namespace {

using namespace orl::matcher;
using orl::fuzz::Require;

LoadedTemplate Load(const std::uint8_t* bytes, std::size_t size) {
    LoadedTemplate loaded;
    std::string message;
    loadTemplateFromBuffer(bytes, size, "Probe", 2, 4, loaded, message);
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
    constexpr std::size_t kMostBytes = 2000;  // the plain matcher is slow on large records
    if (size < 2 || size > kMostBytes) {
        return 0;
    }
    const std::size_t cut = 1 + (size - 1) * data[0] / 256;
    const std::uint8_t* probe = data + 1;
    const std::uint8_t* candidate = data + cut;
    const std::size_t probeSize = cut - 1;
    const std::size_t candidateSize = size - cut;
    TemplateMatchResult result;
    std::string message;
    constexpr std::int32_t kThreshold = 300;
    try {
        const std::int32_t status =
            matchBuffers(probe, probeSize, candidate, candidateSize, result, message, kThreshold);
        if (status != ORLFingerMatcher_StatusOk) {
            Require(!message.empty(), "a failure has a message");
            return 0;
        }
        const TemplateMatchResult plain = orl::naive::MatchTemplates(
            Load(probe, probeSize).fingers, Load(candidate, candidateSize).fingers);
        Require(WithoutDecision(result) == plain, "the plain matcher's figures");
        Require(result.decision == 0 || (result.decision == 1 && result.score >= 175),
                "a match has a score of 175 at least");
    } catch (const std::runtime_error& error) {
        Require(std::strcmp(error.what(), "not triangulation") == 0, "the one exception");
    }
    return 0;
}
