#pragma once

// An engine adapter module, loaded the way the biometric service loads it: by file, through its one
// export, WbioQueryEngineInterface. It stays loaded for the life of the object.

#include <filesystem>
#include <memory>

#include "platform/wbf.h"

namespace orl::unit {

class LoadedModule {
  public:
    // Loads the module and asks it for its table. Throws CommandError naming the file and what is
    // wrong: no such file, not loadable, without the export, or with a table that lacks the entry
    // points of an engine adapter.
    explicit LoadedModule(const std::filesystem::path& path);

    [[nodiscard]] WINBIO_ENGINE_INTERFACE& engine() const { return *engine_; }

  private:
    struct Unloader {
        void operator()(void* library) const;
    };
    std::unique_ptr<void, Unloader> library_;
    WINBIO_ENGINE_INTERFACE* engine_ = nullptr;
};

// The module built or installed beside this program: in its folder, or in the lib folder next to
// it.
std::filesystem::path defaultModulePath();

// What makes a table unfit for an engine adapter of at least the first version, as the end of a
// sentence, or an empty text.
std::string engineTableDefect(const WINBIO_ENGINE_INTERFACE* table);

}  // namespace orl::unit
