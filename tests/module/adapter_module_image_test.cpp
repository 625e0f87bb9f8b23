// The adapter module's file: exports, imports, memory protection.

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/module/adapter_module.h"
#include "tests/module/module_image.h"

namespace orl::test {
namespace {

TEST(AdapterModuleImage, ExportsTheQueryFunctionAndNothingElse) {
    EXPECT_THAT(ReadModuleImage(AdapterModulePath()).exports,
                testing::ElementsAre("WbioQueryEngineInterface"));
}

TEST(AdapterModuleImage, HasNoSectionThatIsBothWritableAndExecutable) {
    const ModuleImage image = ReadModuleImage(AdapterModulePath());
    EXPECT_FALSE(image.sections.empty());
    for (const ModuleSection& section : image.sections) {
        EXPECT_FALSE(section.writable && section.executable) << section.name;
    }
    EXPECT_FALSE(image.hasExecutableStack);
}

#if defined(_WIN32)

TEST(AdapterModuleImage, NeedsNoLibraryButTheSystemsOwn) {
    std::vector<std::string> libraries = ReadModuleImage(AdapterModulePath()).libraries;
    for (std::string& library : libraries) {
        std::transform(library.begin(), library.end(), library.begin(), [](unsigned char c) {
            return static_cast<char>(std::tolower(c));
        });
    }
    // The system's interface, and the C runtime that Windows itself ships.
    EXPECT_THAT(libraries, testing::UnorderedElementsAre("kernel32.dll", "msvcrt.dll"));
}

TEST(AdapterModuleImage, IsLoadedAtARandomAddressWithoutExecutableData) {
    constexpr unsigned kHighEntropyVa = 0x0020;
    constexpr unsigned kDynamicBase = 0x0040;
    constexpr unsigned kNxCompatible = 0x0100;
    const ModuleImage image = ReadModuleImage(AdapterModulePath());
    EXPECT_TRUE(image.dllCharacteristics & kHighEntropyVa);
    EXPECT_TRUE(image.dllCharacteristics & kDynamicBase);
    EXPECT_TRUE(image.dllCharacteristics & kNxCompatible);
    EXPECT_TRUE(image.hasRelocations) << "without relocations it cannot move";
}

TEST(AdapterModuleImage, CarriesAVersionResource) {
    EXPECT_TRUE(ReadModuleImage(AdapterModulePath()).hasVersionResource);
}

#else

TEST(AdapterModuleImage, NeedsNoLibraryButTheSystemsOwn) {
    const std::vector<std::string> known = {"libstdc++.so.6",
                                            "libm.so.6",
                                            "libgcc_s.so.1",
                                            "libc.so.6",
                                            "libasan.so.8",
                                            "libubsan.so.1",
                                            "libtsan.so.2"};
    const ModuleImage image = ReadModuleImage(AdapterModulePath());
    EXPECT_FALSE(image.libraries.empty());
    for (const std::string& library : image.libraries) {
        EXPECT_THAT(known, testing::Contains(library));
    }
}

#endif

}  // namespace
}  // namespace orl::test
