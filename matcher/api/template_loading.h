#pragma once

// Loads one side of a comparison from an ISO/IEC 19794-2 record, in memory or in a file, into built
// finger features.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "matcher/features/finger_model.h"

namespace orl::matcher {

// One loaded template. `fingers` holds one entry per finger view, in record order.
template <FeatureForm kForm>
struct BasicLoadedTemplate {
    std::string identityText;  // from the file's name; empty for a template from memory
    bool hasIdentityText = false;
    std::vector<std::uint8_t> fingerPositions;  // see scanFingerPositions
    std::vector<BasicFingerFeatures<kForm>> fingers;
    ImageSize imageSize;
};

using LoadedTemplate = BasicLoadedTemplate<FeatureForm::kCompact>;
using FullLoadedTemplate = BasicLoadedTemplate<FeatureForm::kFull>;

// Loads the record in buffer[0..size). Returns 0 with an empty message; 1 when there is no buffer
// or no byte in it, `loaded` then staying as it was; loadFailStatus when the record is malformed;
// noFingerStatus when it holds no finger view. `label` ("Probe", "Candidate") begins the message of
// status 1. Apart from that status `loaded` is reset first and holds, on failure, what had been
// read when loading stopped. Reads nothing outside the buffer.
// Throws: std::runtime_error "not triangulation", std::bad_alloc. Safe from several threads, each
// with its own `loaded`.
template <FeatureForm kForm>
std::int32_t loadTemplateFromBuffer(const std::uint8_t* buffer,
                                    std::size_t size,
                                    std::string_view label,
                                    std::int32_t loadFailStatus,
                                    std::int32_t noFingerStatus,
                                    BasicLoadedTemplate<kForm>& loaded,
                                    std::string& message);

extern template std::int32_t loadTemplateFromBuffer(const std::uint8_t*,
                                                    std::size_t,
                                                    std::string_view,
                                                    std::int32_t,
                                                    std::int32_t,
                                                    LoadedTemplate&,
                                                    std::string&);
extern template std::int32_t loadTemplateFromBuffer(const std::uint8_t*,
                                                    std::size_t,
                                                    std::string_view,
                                                    std::int32_t,
                                                    std::int32_t,
                                                    FullLoadedTemplate&,
                                                    std::string&);

// The same for the record in the file at `path` (UTF-8). An empty path gives status 1; a file that
// cannot be read, is empty or is longer than 6200 bytes gives loadFailStatus. When the file's name
// carries an identity text, the template gets it.
template <FeatureForm kForm>
std::int32_t loadTemplateFromFile(const std::string& path,
                                  std::int32_t loadFailStatus,
                                  std::int32_t noFingerStatus,
                                  BasicLoadedTemplate<kForm>& loaded,
                                  std::string& message);

extern template std::int32_t loadTemplateFromFile(
    const std::string&, std::int32_t, std::int32_t, LoadedTemplate&, std::string&);
extern template std::int32_t loadTemplateFromFile(
    const std::string&, std::int32_t, std::int32_t, FullLoadedTemplate&, std::string&);

// The identity text in a file name: what stands between the first two "_" of the name without
// folders and extension, when there is text before, between and after them. print_0042_left gives
// 0042. Returns false, leaving `text` alone, when the name carries none.
bool identityFromFileName(std::string_view path, std::string& text);

}  // namespace orl::matcher
