#include "matcher/api/template_loading.h"

#include "matcher/api/finger_matcher.h"
#include "matcher/api/finger_record.h"
#include "matcher/api/match_status.h"
#include "matcher/api/record_loading.h"

namespace orl::matcher {

template <FeatureForm kForm>
std::int32_t loadRecord(const std::uint8_t* buffer,
                        std::size_t size,
                        std::int32_t loadFailStatus,
                        std::int32_t noFingerStatus,
                        BasicLoadedTemplate<kForm>& loaded) {
    // A failed scan only means that finger positions are unknown.
    scanFingerPositions(buffer, size, loaded.fingerPositions);
    if (!parseFingerRecord(loaded, buffer, size)) {
        return loadFailStatus;
    }
    return loaded.fingers.empty() ? noFingerStatus : ORLFingerMatcher_StatusOk;
}

template std::int32_t loadRecord(
    const std::uint8_t*, std::size_t, std::int32_t, std::int32_t, LoadedTemplate&);
template std::int32_t loadRecord(
    const std::uint8_t*, std::size_t, std::int32_t, std::int32_t, FullLoadedTemplate&);

std::string loadMessage(std::int32_t status, std::string_view source) {
    if (status == ORLFingerMatcher_StatusOk) {
        return {};
    }
    return std::string(matchStatusText(status)).append(source);
}

template <FeatureForm kForm>
std::int32_t loadTemplateFromBuffer(const std::uint8_t* buffer,
                                    std::size_t size,
                                    std::string_view label,
                                    std::int32_t loadFailStatus,
                                    std::int32_t noFingerStatus,
                                    BasicLoadedTemplate<kForm>& loaded,
                                    std::string& message) {
    if (buffer == nullptr || size == 0) {
        message.assign(label).append(" template buffer is empty.");
        return ORLFingerMatcher_StatusInvalidArguments;
    }
    loaded = {};
    const std::int32_t status = loadRecord(buffer, size, loadFailStatus, noFingerStatus, loaded);
    message = loadMessage(status, " from buffer");
    return status;
}

template std::int32_t loadTemplateFromBuffer(const std::uint8_t*,
                                             std::size_t,
                                             std::string_view,
                                             std::int32_t,
                                             std::int32_t,
                                             LoadedTemplate&,
                                             std::string&);
template std::int32_t loadTemplateFromBuffer(const std::uint8_t*,
                                             std::size_t,
                                             std::string_view,
                                             std::int32_t,
                                             std::int32_t,
                                             FullLoadedTemplate&,
                                             std::string&);

}  // namespace orl::matcher
