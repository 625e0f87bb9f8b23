// Any bytes as a finger minutiae record: loading ends as a second, plain reading says it must, both
// forms agree, and what is built is what the plain construction of each finger gives.

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "fuzz/require.h"
#include "matcher/api/finger_matcher.h"
#include "matcher/api/template_loading.h"
#include "tests/matcher/api/slow_record_parse.h"
#include "tests/matcher/features/plain_features.h"

namespace {

using namespace orl::matcher;
using orl::fuzz::Require;
using orl::test::PlainFeatures;

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

// How the loading of a record must end, by the plain reading of it. Fingers are built one by one:
// the first that cannot be decides.
std::int32_t PlainStatus(std::size_t bytes, const std::optional<SlowRecord>& record) {
    if (bytes == 0) {
        return ORLFingerMatcher_StatusInvalidArguments;
    }
    if (!record) {
        return ORLFingerMatcher_StatusProbeNotLoaded;
    }
    for (const MinutiaList& minutiae : record->fingers) {
        if (minutiae.size() < 2) {
            return ORLFingerMatcher_StatusProbeNotLoaded;
        }
        if (!PlainFeatures(minutiae, record->imageSize)) {
            return kThrown;
        }
    }
    return record->fingers.empty() ? ORLFingerMatcher_StatusProbeEmpty : ORLFingerMatcher_StatusOk;
}

void CheckFinger(const FullFingerFeatures& finger,
                 const MinutiaList& minutiae,
                 const ImageSize& imageSize) {
    Require(finger.minutiaCount == minutiae.size(), "minutia count");
    Require(finger.minutiae == minutiae, "the minutiae of the plain reading");
    Require(finger.imageSize == imageSize, "image size");
    Require(finger.triangles == PlainFeatures(minutiae, imageSize), "the plain triangles");
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
    const std::optional<SlowRecord> plain = SlowParse({data, data + size});
    Require(status == PlainStatus(size, plain), "the status of the plain reading");
    if (status == ORLFingerMatcher_StatusOk) {
        Require(full.fingers.size() == plain->fingers.size(), "fingers");
        Require(compact.fingers.size() == plain->fingers.size(), "fingers of the compact form");
        for (std::size_t i = 0; i < full.fingers.size(); ++i) {
            CheckFinger(full.fingers[i], plain->fingers[i], plain->imageSize);
            Require(full.fingers[i].triangles == compact.fingers[i].triangles, "forms agree");
        }
    }
    return 0;
}
