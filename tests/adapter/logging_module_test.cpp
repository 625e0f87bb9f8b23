// The adapter module with its log on, as a binary: what it leaves in the log file, and what it
// leaves in the process.

#include <cstring>
#include <filesystem>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "platform/wbf.h"
#include "tests/support/bir_builder.h"
#include "tests/support/dynamic_library.h"
#include "tests/support/environment_variable.h"
#include "tests/support/fake_storage.h"
#include "tests/support/file_text.h"
#include "tests/support/record_builder.h"
#include "tests/support/scratch_folder.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace orl::test {
namespace {

using testing::ElementsAre;

const WINBIO_ENGINE_INTERFACE& TableOf(const DynamicLibrary& module) {
    const auto query =
        module.Symbol<HRESULT WINAPI(PWINBIO_ENGINE_INTERFACE*)>("WbioQueryEngineInterface");
    PWINBIO_ENGINE_INTERFACE table = nullptr;
    EXPECT_EQ(query(&table), S_OK);
    return *table;
}

// A unit that accepts a sample and identifies it against a sound record; returns the sub-factor.
WINBIO_BIOMETRIC_SUBTYPE RunSession(const WINBIO_ENGINE_INTERFACE& engine) {
    WINBIO_PIPELINE pipeline = {};
    FakeStorage storage(pipeline);
    std::vector<std::uint8_t> bir = BuildBir(BuildRecord(RandomMinutiae(5, 40)));
    std::vector<std::uint8_t> overrun = bir;
    SetStandardDataBlock(overrun, 4000000000U, 4000000000U);
    storage.records = {{.identity = IdentityNumber(1), .subFactor = 1, .templateBlob = overrun},
                       {.identity = IdentityNumber(2), .subFactor = 2, .templateBlob = bir}};
    WINBIO_BIOMETRIC_SUBTYPE subFactor = 0;
    EXPECT_EQ(engine.Attach(&pipeline), S_OK);
    EXPECT_EQ(engine.AcceptSampleData(&pipeline,
                                      reinterpret_cast<PWINBIO_BIR>(bir.data()),
                                      bir.size(),
                                      WINBIO_PURPOSE_IDENTIFY,
                                      nullptr),
              S_OK);
    EXPECT_EQ(engine.IdentifyFeatureSet(
                  &pipeline, nullptr, &subFactor, nullptr, nullptr, nullptr, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(engine.Detach(&pipeline), S_OK);
    return subFactor;
}

TEST(LoggingModule, LeavesEachLineOfASessionInItsFile) {
    const ScratchFolder scratch;
    std::filesystem::create_directory(scratch.PathOf("programs"));
    const EnvironmentVariable programs("ProgramFiles(x86)", scratch.PathOf("programs"));
    {
        const DynamicLibrary module(ORL_LOGGING_MODULE);
        EXPECT_EQ(RunSession(TableOf(module)), 2);
    }
    const std::string separator = ORL_PATH_SEPARATOR;
    const std::string text = FileText(scratch.PathOf("programs") + separator + "ORL_WBF_Drivers" +
                                      separator + "orl_engine_adapter.log");
    std::vector<std::string> messages;
    for (const std::string& line : LinesOf(text)) {
        // Behind 23 letters of timestamp, a space, 19 of tag and a space.
        messages.push_back(line.substr(44));
    }
    // 40 minutiae: (40 + 5) * 6 = 270 bytes of record, 302 of BIR. Identical records score highest.
    EXPECT_THAT(
        messages,
        ElementsAre(">> EngineAdapterAttach",
                    "EngineAdapterAcceptSampleData Purpose=0x02 SampleSize=302",
                    "EngineAdapterAcceptSampleData: stored sample SampleSize=302",
                    ">> EngineAdapterIdentifyFeatureSet",
                    "ExtractISOFromBIR: OK isoSize=270",
                    "ExtractISOFromBIR(captured) returned HRESULT=0x00000000 (SUCCESS)",
                    "StorageInterface->QueryByContent returned HRESULT=0x00000000 (SUCCESS)",
                    "StorageInterface->GetCurrentRecord returned HRESULT=0x00000000 (SUCCESS)",
                    "ExtractISOFromBIR: offset+size=8000000000 > birSize=302 \xE2\x80\x94 "
                    "E_INVALIDARG",
                    "StorageInterface->GetCurrentRecord returned HRESULT=0x00000000 (SUCCESS)",
                    "ExtractISOFromBIR: OK isoSize=270",
                    "MatchISOTemplates enrolledSize=270 capturedSize=270",
                    testing::StartsWith("MatchISOTemplates: MATCH score="),
                    "EngineAdapterIdentifyFeatureSet: record[1] match=TRUE",
                    "EngineAdapterIdentifyFeatureSet: IDENTIFIED at record[1]",
                    ">> EngineAdapterDetach"));
}

TEST(LoggingModule, WorksTheSameWithoutAPlaceForItsFile) {
    const EnvironmentVariable first("ProgramFiles(x86)", std::nullopt);
    const EnvironmentVariable second("ProgramFiles", std::nullopt);
    const DynamicLibrary module(ORL_LOGGING_MODULE);
    EXPECT_EQ(RunSession(TableOf(module)), 2);
}

#ifdef _WIN32

// The thread-local slot that the process would give out next.
DWORD NextThreadSlot() {
    const DWORD slot = TlsAlloc();
    TlsFree(slot);
    return slot;
}

TEST(LoggingModule, ReturnsItsThreadLocalSlotWhenItIsUnloaded) {
    const DWORD before = NextThreadSlot();
    for (int i = 0; i < 5; ++i) {
        const DynamicLibrary module(ORL_LOGGING_MODULE);
        RunSession(TableOf(module));
        std::thread([&module] { RunSession(TableOf(module)); }).join();
    }
    EXPECT_EQ(NextThreadSlot(), before);
}

#endif

}  // namespace
}  // namespace orl::test
