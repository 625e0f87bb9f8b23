#include "tools/orl_unit/loaded_module.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/scratch_folder.h"
#include "tests/tools/orl_unit/storage_unit.h"
#include "tools/command_line/utf8_path.h"
#include "tools/orl_unit/command_error.h"

namespace orl::unit {
namespace {

std::string refusal(const std::string& path) {
    try {
        const LoadedModule module(tools::pathFromUtf8(path));
    } catch (const CommandError& error) {
        return error.what();
    }
    return "";
}

TEST(LoadedModule, FindsTheBuiltModuleByItsExport) {
    const LoadedModule module(tools::pathFromUtf8(ORL_ENGINE_MODULE));
    EXPECT_EQ(module.engine().Type, WINBIO_ADAPTER_TYPE_ENGINE);
    EXPECT_NE(module.engine().Attach, nullptr);
}

TEST(LoadedModule, NamesAFileThatIsNotThere) {
    const test::ScratchFolder folder;
    const std::string path = folder.PathOf("none.so");
    EXPECT_EQ(refusal(path), "module '" + path + "' does not exist or is no file");
    EXPECT_NE(refusal(folder.PathOf(".")), "");
}

TEST(LoadedModule, NamesAFileThatIsNoModule) {
    const test::ScratchFolder folder;
    const std::string path = folder.Write("text.so", Bytes{'t', 'e', 'x', 't'});
    const std::string reason = refusal(path);
    EXPECT_EQ(reason.find("module '" + path + "' cannot be loaded: "), 0U) << reason;
    EXPECT_EQ(reason.find('\n'), std::string::npos);
}

TEST(LoadedModule, NamesAModuleWithoutTheExport) {
    const std::string path = ORL_OTHER_MODULE;
    EXPECT_EQ(
        refusal(path),
        "module '" + path + "' is no engine adapter: it does not export WbioQueryEngineInterface");
}

class EngineTable : public testing::Test {
  protected:
    EngineTable() : module_(tools::pathFromUtf8(ORL_ENGINE_MODULE)), table_(module_.engine()) {}

    LoadedModule module_;
    WINBIO_ENGINE_INTERFACE table_;
};

TEST_F(EngineTable, OfTheBuiltModuleIsFit) {
    EXPECT_EQ(engineTableDefect(&table_), "");
}

TEST_F(EngineTable, MayBeOfTheFirstVersion) {
    table_.Size = 32 + 21 * 8;  // header and 21 slots
    EXPECT_EQ(engineTableDefect(&table_), "");
    --table_.Size;
    EXPECT_EQ(engineTableDefect(&table_), "hands out an interface table of only 199 bytes");
}

TEST_F(EngineTable, MustBeThereAndAnEngines) {
    EXPECT_EQ(engineTableDefect(nullptr), "hands out no interface table");
    table_.Type = WINBIO_ADAPTER_TYPE_STORAGE;
    EXPECT_EQ(engineTableDefect(&table_), "is an adapter of type 3, not an engine adapter");
}

TEST_F(EngineTable, MustHaveEveryEntryPointThatTheHostCalls) {
    table_.CheckForDuplicate = nullptr;
    EXPECT_EQ(engineTableDefect(&table_), "hands out an interface table with missing entry points");
}

}  // namespace
}  // namespace orl::unit
