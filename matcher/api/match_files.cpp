#include "matcher/api/match_facade.h"
#include "matcher/api/match_steps.h"

namespace orl::matcher {

std::int32_t matchFiles(const std::string& probePath,
                        const std::string& candidatePath,
                        TemplateMatchResult& result,
                        std::string& message,
                        std::int32_t threshold) {
    startMatch(threshold, result, message);
    const auto loadSide =
        [&message](const MatchSide& side, const std::string& path, LoadedTemplate& loaded) {
            return loadTemplateFromFile(
                path, side.loadFailStatus, side.noFingerStatus, loaded, message);
        };
    return loadAndMatch(
        [&](LoadedTemplate& loaded) { return loadSide(kProbeSide, probePath, loaded); },
        [&](LoadedTemplate& loaded) { return loadSide(kCandidateSide, candidatePath, loaded); },
        result);
}

}  // namespace orl::matcher
