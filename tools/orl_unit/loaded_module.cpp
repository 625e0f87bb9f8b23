#include "tools/orl_unit/loaded_module.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <system_error>

#include "tools/command_line/utf8_path.h"
#include "tools/orl_unit/command_error.h"
#include "tools/orl_unit/executable_path.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace orl::unit {
namespace {

constexpr const char* kExportName = "WbioQueryEngineInterface";
// The first version of the table ends before this slot.
constexpr std::size_t kFirstVersionBytes = offsetof(WINBIO_ENGINE_INTERFACE, NotifyPowerChange);

#ifdef _WIN32

constexpr const wchar_t* kModuleFileName = L"orl_engine_adapter.dll";

void* openLibrary(const std::filesystem::path& path, std::string& reason) {
    HMODULE library = LoadLibraryW(path.c_str());
    if (library == nullptr) {
        const int code = static_cast<int>(GetLastError());
        reason = std::system_category().message(code) + " (error " + std::to_string(code) + ")";
    }
    return library;
}

void closeLibrary(void* library) {
    FreeLibrary(static_cast<HMODULE>(library));
}

PWINBIO_QUERY_ENGINE_INTERFACE_FN findExport(void* library) {
    return reinterpret_cast<PWINBIO_QUERY_ENGINE_INTERFACE_FN>(
        reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), kExportName)));
}

#else

constexpr const char* kModuleFileName = "liborl_engine_adapter.so";

void* openLibrary(const std::filesystem::path& path, std::string& reason) {
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* const error = dlerror();
        reason = error == nullptr ? "reason unknown" : error;
    }
    return library;
}

void closeLibrary(void* library) {
    dlclose(library);
}

PWINBIO_QUERY_ENGINE_INTERFACE_FN findExport(void* library) {
    return reinterpret_cast<PWINBIO_QUERY_ENGINE_INTERFACE_FN>(dlsym(library, kExportName));
}

#endif

bool hasAllEntryPoints(const WINBIO_ENGINE_INTERFACE& table) {
    const std::array<bool, 14> present = {
        table.Attach != nullptr,
        table.Detach != nullptr,
        table.ClearContext != nullptr,
        table.QueryPreferredFormat != nullptr,
        table.QueryIndexVectorSize != nullptr,
        table.AcceptSampleData != nullptr,
        table.ExportEngineData != nullptr,
        table.VerifyFeatureSet != nullptr,
        table.IdentifyFeatureSet != nullptr,
        table.CreateEnrollment != nullptr,
        table.UpdateEnrollment != nullptr,
        table.CheckForDuplicate != nullptr,
        table.CommitEnrollment != nullptr,
        table.DiscardEnrollment != nullptr,
    };
    return std::all_of(present.begin(), present.end(), [](bool isPresent) { return isPresent; });
}

}  // namespace

void LoadedModule::Unloader::operator()(void* library) const {
    closeLibrary(library);
}

std::string engineTableDefect(const WINBIO_ENGINE_INTERFACE* table) {
    if (table == nullptr) {
        return "hands out no interface table";
    }
    if (table->Type != WINBIO_ADAPTER_TYPE_ENGINE) {
        return "is an adapter of type " + std::to_string(table->Type) + ", not an engine adapter";
    }
    if (table->Size < kFirstVersionBytes) {
        return "hands out an interface table of only " + std::to_string(table->Size) + " bytes";
    }
    return hasAllEntryPoints(*table) ? ""
                                     : "hands out an interface table with missing entry points";
}

LoadedModule::LoadedModule(const std::filesystem::path& path) {
    const std::string name = "module " + inQuotes(tools::utf8FromPath(path));
    std::error_code failure;
    // The absolute path keeps the loader from searching elsewhere for a bare file name.
    const std::filesystem::path file = std::filesystem::absolute(path, failure);
    if (!std::filesystem::is_regular_file(file, failure)) {
        throw CommandError(name + " does not exist or is no file");
    }
    std::string reason;
    library_.reset(openLibrary(file, reason));
    if (!library_) {
        throw CommandError(name + " cannot be loaded: " + oneLine(reason));
    }
    const PWINBIO_QUERY_ENGINE_INTERFACE_FN query = findExport(library_.get());
    if (query == nullptr) {
        throw CommandError(name + " is no engine adapter: it does not export " + kExportName);
    }
    if (FAILED(query(&engine_))) {
        throw CommandError(name + " refuses to hand out its interface table");
    }
    const std::string defect = engineTableDefect(engine_);
    if (!defect.empty()) {
        throw CommandError(name + " " + defect);
    }
}

std::filesystem::path defaultModulePath() {
    const std::filesystem::path folder = executableFolder();
    std::filesystem::path beside = folder / kModuleFileName;
    std::error_code failure;
    if (std::filesystem::exists(beside, failure)) {
        return beside;
    }
#ifdef _WIN32
    return beside;
#else
    return folder.parent_path() / "lib" / kModuleFileName;
#endif
}

}  // namespace orl::unit
