#include "tests/support/dynamic_library.h"

#include <stdexcept>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace orl::test {

#if defined(_WIN32)

DynamicLibrary::DynamicLibrary(const std::string& path) : handle_(LoadLibraryA(path.c_str())) {
    if (handle_ == nullptr) {
        throw std::runtime_error("cannot load " + path);
    }
}

void* DynamicLibrary::Address(const char* name) const {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

void DynamicLibrary::Close() {
    if (handle_ != nullptr) {
        FreeLibrary(static_cast<HMODULE>(handle_));
        handle_ = nullptr;
    }
}

bool DynamicLibrary::IsLoaded(const std::string& path) {
    return GetModuleHandleA(path.c_str()) != nullptr;
}

#else

DynamicLibrary::DynamicLibrary(const std::string& path)
    : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) {
        throw std::runtime_error(dlerror());
    }
}

void* DynamicLibrary::Address(const char* name) const {
    return dlsym(handle_, name);
}

void DynamicLibrary::Close() {
    if (handle_ != nullptr) {
        dlclose(handle_);
        handle_ = nullptr;
    }
}

bool DynamicLibrary::IsLoaded(const std::string& path) {
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) {
        dlclose(handle);
    }
    return handle != nullptr;
}

#endif

DynamicLibrary::~DynamicLibrary() {
    Close();
}

}  // namespace orl::test
