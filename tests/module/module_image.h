#pragma once

// What a built module's file says of itself: enough of the ELF and PE formats to check which names
// a module exports, which libraries it needs and how its memory is protected. Works on either kind
// of file on any machine.

#include <cstdint>
#include <string>
#include <vector>

namespace orl::test {

struct ModuleSection {
    std::string name;
    bool writable = false;
    bool executable = false;
};

struct ModuleImage {
    std::vector<std::string> exports;    // names of the functions and objects that it offers
    std::vector<std::string> libraries;  // file names of the libraries that it needs
    std::vector<ModuleSection> sections;
    std::uint16_t dllCharacteristics = 0;  // PE only
    bool hasRelocations = false;           // PE only: a base relocation table
    bool hasVersionResource = false;       // PE only
    bool hasExecutableStack = false;       // ELF only
};

// Reads the file. Throws: std::runtime_error when it is neither a 64-bit PE nor a 64-bit ELF file
// or points outside itself.
ModuleImage ReadModuleImage(const std::string& path);

}  // namespace orl::test
