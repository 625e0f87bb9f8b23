// Any bytes as a finger minutiae record: loading ends with a status of its own or with "not
// triangulation", both forms agree, and what is built is what the headers promise.

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include "fuzz/require.h"
#include "matcher/api/finger_matcher.h"
#include "matcher/api/template_loading.h"
#include "matcher/features/triangle_feature.h"

namespace {

using namespace orl::matcher;
using orl::fuzz::Require;

constexpr std::int32_t kThrown = -1;

template <typename Template>
std::int32_t Load(const std::uint8_t* bytes, std::size_t size, Template& loaded) {
    std::string message;
    try {
        return loadTemplateFromBuffer(bytes,
                                      size,
                                      "Probe",
                                      ORLFingerMatcher_StatusProbeNotLoaded,
                                      ORLFingerMatcher_StatusProbeEmpty,
                                      loaded,
                                      message);
    } catch (const std::runtime_error& error) {
        Require(std::strcmp(error.what(), "not triangulation") == 0, "the one exception");
        return kThrown;
    }
}

void CheckFinger(const FullFingerFeatures& finger) {
    Require(finger.minutiaCount >= 3 && finger.minutiaCount <= kMaxMinutiae, "minutia count");
    Require(finger.minutiae.size() == finger.minutiaCount, "minutiae kept");
    Require(!finger.triangles.empty(), "a built finger has triangles");
    Require(std::is_sorted(finger.triangles.begin(), finger.triangles.end(), TriangleKeyLess),
            "triangles are sorted");
    for (const Minutia& minutia : finger.minutiae) {
        Require(minutia.angle >= 1 && minutia.angle <= 360, "angle range");
        Require(minutia.x < 16384 && minutia.y < 16384 && minutia.type < 4, "14 and 2 bits");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A block of exactly this size, so that a read beyond it is seen.
    const std::unique_ptr<std::uint8_t[]> bytes(new std::uint8_t[size]);
    std::copy_n(data, size, bytes.get());
    FullLoadedTemplate full;
    LoadedTemplate compact;
    const std::int32_t status = Load(bytes.get(), size, full);
    Require(status == Load(bytes.get(), size, compact), "both forms end alike");
    Require(status == kThrown || status == 0 || status == 1 || status == 2 || status == 4,
            "a known status");
    if (status == 0) {
        Require(full.fingers.size() == compact.fingers.size() && !full.fingers.empty(), "fingers");
        for (std::size_t i = 0; i < full.fingers.size(); ++i) {
            CheckFinger(full.fingers[i]);
            Require(full.fingers[i].triangles == compact.fingers[i].triangles, "forms agree");
        }
    }
    return 0;
}
