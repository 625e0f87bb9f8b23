#include <array>
#include <optional>

#include "matcher/api/finger_matcher.h"
#include "matcher/api/finger_record.h"
#include "matcher/api/record_file.h"
#include "matcher/api/record_loading.h"
#include "matcher/api/template_loading.h"

namespace orl::matcher {
namespace {

constexpr std::size_t kFileBufferAlignmentBytes = 32;

std::string_view withoutFolders(std::string_view path) {
    const std::size_t separator = path.find_last_of("\\/");
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

// The name up to its last "."; "." and ".." are names without extension.
std::string_view withoutExtension(std::string_view name) {
    return name == "." || name == ".." ? name : name.substr(0, name.rfind('.'));
}

}  // namespace

template <FeatureForm kForm>
std::int32_t loadTemplateFromFile(const std::string& path,
                                  std::int32_t loadFailStatus,
                                  std::int32_t noFingerStatus,
                                  BasicLoadedTemplate<kForm>& loaded,
                                  std::string& message) {
    if (path.empty()) {
        message = "Template path is empty.";
        return ORLFingerMatcher_StatusInvalidArguments;
    }
    loaded = {};
    alignas(kFileBufferAlignmentBytes) std::array<std::uint8_t, kMaxRecordBytes> buffer{};
    const std::optional<std::size_t> size = readRecordFile(path, buffer);
    const std::int32_t status =
        size ? loadRecord(buffer.data(), *size, loadFailStatus, noFingerStatus, loaded)
             : loadFailStatus;
    loaded.hasIdentityText = identityFromFileName(path, loaded.identityText);
    message = loadMessage(status, " from file");
    return status;
}

template std::int32_t loadTemplateFromFile(
    const std::string&, std::int32_t, std::int32_t, LoadedTemplate&, std::string&);
template std::int32_t loadTemplateFromFile(
    const std::string&, std::int32_t, std::int32_t, FullLoadedTemplate&, std::string&);

bool identityFromFileName(std::string_view path, std::string& text) {
    const std::string_view name = withoutExtension(withoutFolders(path));
    const std::size_t first = name.find('_');
    if (first == std::string_view::npos || first == 0) {
        return false;
    }
    const std::size_t second = name.find('_', first + 1);
    if (second == std::string_view::npos || second == first + 1 || second + 1 == name.size()) {
        return false;
    }
    text = name.substr(first + 1, second - first - 1);
    return true;
}

}  // namespace orl::matcher
