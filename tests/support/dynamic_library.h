#pragma once

// A module loaded at run time, for as long as the object lives or until it is closed.

#include <string>

namespace orl::test {

class DynamicLibrary {
  public:
    // Throws: std::runtime_error when the module cannot be loaded.
    explicit DynamicLibrary(const std::string& path);
    ~DynamicLibrary();
    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;

    // The exported function of that name, or null.
    template <typename Function>
    Function* Symbol(const char* name) const {
        return reinterpret_cast<Function*>(Address(name));
    }

    // Unloads the module before the object's end.
    void Close();

    // Whether a module of that path is loaded in this process.
    static bool IsLoaded(const std::string& path);

  private:
    void* Address(const char* name) const;

    void* handle_;
};

}  // namespace orl::test
