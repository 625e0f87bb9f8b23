#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "adapter/engine_log.h"
#include "tests/support/dynamic_library.h"
#include "tests/support/environment_variable.h"
#include "tests/support/file_text.h"
#include "tests/support/scratch_folder.h"

namespace orl::test {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

constexpr char kWithX86[] = "ProgramFiles(x86)";
constexpr char kWithoutX86[] = "ProgramFiles";

std::filesystem::path PathOf(const std::string& utf8) {
    return {std::u8string(utf8.begin(), utf8.end())};
}

// The module that holds nothing but a log body; see log_probe.cpp.
class LogProbe {
  public:
    explicit LogProbe(const char* path = ORL_LOG_FILE_PROBE) : module_(path) {}

    void Log(const std::string& text) const {
        module_.Symbol<void(const char*)>("LogText")(text.c_str());
    }
    void LogSize(std::size_t size) const { module_.Symbol<void(std::size_t)>("LogSize")(size); }

  private:
    DynamicLibrary module_;
};

class EngineLogFile : public testing::Test {
  protected:
    std::string LogFolder(const std::string& programs) const {
        return programs + separator_ + "ORL_WBF_Drivers";
    }
    std::string LogPath(const std::string& programs) const {
        return LogFolder(programs) + separator_ + "orl_engine_adapter.log";
    }
    // The scratch folder itself, as a path without a separator at its end.
    std::string Scratch() const {
        const std::string inside = scratch_.PathOf("x");
        return inside.substr(0, inside.size() - 2);
    }
    // A folder below the scratch folder, which it makes.
    std::string MakeFolder(const std::string& name) const {
        const std::string path = scratch_.PathOf(name);
        std::filesystem::create_directory(PathOf(path));
        return path;
    }
    static bool Exists(const std::string& path) { return std::filesystem::exists(PathOf(path)); }

    // The file's lines, each checked for its form, without timestamp and tag.
    static std::vector<std::string> Messages(const std::string& path) {
        static const std::regex form(
            R"(\d{4}-\d{2}-\d{2} \d{2}:\d{2}:\d{2}\.\d{3} ORLA_ENGINE_ADAPTER (.*))");
        std::vector<std::string> messages;
        for (const std::string& line : LinesOf(FileText(path))) {
            std::smatch parts;
            EXPECT_TRUE(std::regex_match(line, parts, form)) << line;
            messages.push_back(parts[1]);
        }
        return messages;
    }

    const std::string separator_ = ORL_PATH_SEPARATOR;
    ScratchFolder scratch_;
};

TEST_F(EngineLogFile, WritesATimestampATagAndTheMessageOnALineOfItsOwn) {
    const EnvironmentVariable programs(kWithX86, Scratch());
    {
        const LogProbe probe;
        probe.Log("first");
        probe.Log(">> second");
    }
    const std::string text = FileText(LogPath(Scratch()));
    // 23 letters of timestamp, a space, 19 of tag, a space, the message and a newline.
    EXPECT_EQ(text.size(), (23 + 1 + 19 + 1 + 5 + 1) + (23 + 1 + 19 + 1 + 9 + 1));
    EXPECT_EQ(text.find('\r'), std::string::npos);
    EXPECT_THAT(Messages(LogPath(Scratch())), ElementsAre("first", ">> second"));
}

// The local time to the second, that much earlier or later than now.
std::string LocalSecond(std::chrono::milliseconds offset) {
    const std::time_t time =
        std::chrono::system_clock::to_time_t(std::chrono::system_clock::now() + offset);
    char text[32];
    std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", std::localtime(&time));
    return text;
}

TEST_F(EngineLogFile, StampsTheLocalTimeOfTheCall) {
    // The clocks of one machine differ by a tick, which is some 16 ms at most.
    constexpr std::chrono::milliseconds kTick(20);
    const EnvironmentVariable programs(kWithX86, Scratch());
    const std::string before = LocalSecond(-kTick);
    {
        const LogProbe probe;
        probe.Log("now");
    }
    const std::string after = LocalSecond(kTick);
    const std::string stamp = FileText(LogPath(Scratch())).substr(0, before.size());
    EXPECT_LE(before, stamp);
    EXPECT_LE(stamp, after);
}

TEST_F(EngineLogFile, MakesItsFolderAtTheFirstLineAndNotEarlier) {
    const EnvironmentVariable programs(kWithX86, Scratch());
    const LogProbe probe;
    EXPECT_FALSE(Exists(LogFolder(Scratch())));
    probe.Log("first");
    EXPECT_TRUE(Exists(LogPath(Scratch())));
}

TEST_F(EngineLogFile, AppendsToTheFileOfAnEarlierRun) {
    const EnvironmentVariable programs(kWithX86, Scratch());
    for (const char* text : {"first run", "second run", "third run"}) {
        const LogProbe probe;
        probe.Log(text);
    }
    EXPECT_THAT(Messages(LogPath(Scratch())), ElementsAre("first run", "second run", "third run"));
}

TEST_F(EngineLogFile, PrefersTheFolderOf32BitPrograms) {
    const EnvironmentVariable first(kWithX86, MakeFolder("Programs (x86)"));
    const EnvironmentVariable second(kWithoutX86, MakeFolder("Programs"));
    {
        const LogProbe probe;
        probe.Log("here");
    }
    EXPECT_TRUE(Exists(LogPath(scratch_.PathOf("Programs (x86)"))));
    EXPECT_FALSE(Exists(LogFolder(scratch_.PathOf("Programs"))));
}

TEST_F(EngineLogFile, TakesTheOtherFolderWhenThatIsUnset) {
    const EnvironmentVariable first(kWithX86, std::nullopt);
    const EnvironmentVariable second(kWithoutX86, Scratch());
    {
        const LogProbe probe;
        probe.Log("here");
    }
    EXPECT_THAT(Messages(LogPath(Scratch())), ElementsAre("here"));
}

TEST_F(EngineLogFile, TakesTheOtherFolderWhenThatIsEmpty) {
    const EnvironmentVariable first(kWithX86, "");
    const EnvironmentVariable second(kWithoutX86, Scratch());
    {
        const LogProbe probe;
        probe.Log("here");
    }
    EXPECT_THAT(Messages(LogPath(Scratch())), ElementsAre("here"));
}

TEST_F(EngineLogFile, WritesBelowAFolderWithLettersOfAnyScript) {
    const std::string programs = MakeFolder("Programme \xC3\xA4 \xE7\xA8\x8B\xE5\xBA\x8F");
    const EnvironmentVariable variable(kWithX86, programs);
    {
        const LogProbe probe;
        probe.Log("here");
    }
    EXPECT_THAT(Messages(LogPath(programs)), ElementsAre("here"));
}

TEST_F(EngineLogFile, GivesUpSilentlyWithoutTheVariables) {
    const EnvironmentVariable first(kWithX86, std::nullopt);
    const EnvironmentVariable second(kWithoutX86, std::nullopt);
    const LogProbe probe;
    probe.Log("nowhere");
    probe.Log("nowhere");
    EXPECT_FALSE(Exists("ORL_WBF_Drivers"));
    EXPECT_FALSE(Exists("/ORL_WBF_Drivers"));
}

TEST_F(EngineLogFile, GivesUpSilentlyWhenTheProgramFolderIsMissingAndDoesNotTryAgain) {
    const std::string missing = scratch_.PathOf("missing");
    const EnvironmentVariable programs(kWithX86, missing);
    const LogProbe probe;
    probe.Log("nowhere");
    EXPECT_FALSE(Exists(missing));
    MakeFolder("missing");
    probe.Log("nowhere");
    EXPECT_FALSE(Exists(LogFolder(missing)));
}

TEST_F(EngineLogFile, GivesUpSilentlyWhenAFileStandsInThePlaceOfTheFolder) {
    const EnvironmentVariable programs(kWithX86, Scratch());
    scratch_.Write("ORL_WBF_Drivers", {});
    const LogProbe probe;
    probe.Log("nowhere");
    EXPECT_EQ(FileText(LogFolder(Scratch())), "");
}

TEST_F(EngineLogFile, GivesUpSilentlyWhenAFolderStandsInThePlaceOfTheFile) {
    const EnvironmentVariable programs(kWithX86, Scratch());
    std::filesystem::create_directories(PathOf(LogPath(Scratch())));
    const LogProbe probe;
    probe.Log("nowhere");
    EXPECT_TRUE(std::filesystem::is_empty(PathOf(LogPath(Scratch()))));
}

TEST_F(EngineLogFile, GivesUpSilentlyOnAPathBeyondItsLimit) {
    // The scratch folder by too long a name: separators may be repeated.
    for (const std::size_t letters : {1000U, 1023U, 1024U, 2000U}) {
        std::string longName = Scratch();
        longName.resize(letters, '/');
        const EnvironmentVariable programs(kWithX86, longName);
        const LogProbe probe;
        probe.Log("nowhere");
    }
    EXPECT_TRUE(std::filesystem::is_empty(PathOf(Scratch())));
    const EnvironmentVariable programs(kWithX86, Scratch() + "//");
    {
        const LogProbe probe;
        probe.Log("fits");
    }
    EXPECT_THAT(Messages(LogPath(Scratch())), ElementsAre("fits"));
}

#ifndef _WIN32  // where such folders cannot be made in the ordinary way

// A new folder whose path has so many letters.
std::string FolderOfLength(std::string path, std::size_t letters) {
    constexpr std::size_t kNameLetters = 100;
    while (path.size() < letters) {
        const std::size_t rest = letters - path.size() - 1;
        path += "/" + std::string(rest <= kNameLetters + 1 ? rest : kNameLetters, 'p');
    }
    EXPECT_EQ(path.size(), letters);
    std::filesystem::create_directories(path);
    return path;
}

TEST_F(EngineLogFile, MakesNothingUnderACutNameWhenItsPathIsTooLong) {
    // A path of 1,023 bytes and a NUL fits. "/ORL_WBF_Drivers" has 16 bytes and
    // "/orl_engine_adapter.log" 23: the folder's path is too long, by one byte the second time, or
    // the file's alone is, by one byte the last time.
    for (const std::size_t letters : {1010U, 1008U, 1000U, 985U}) {
        SCOPED_TRACE(letters);
        const std::string programs = FolderOfLength(MakeFolder(std::to_string(letters)), letters);
        const EnvironmentVariable variable(kWithX86, programs);
        const LogProbe probe;
        probe.Log("nowhere");
        EXPECT_TRUE(std::filesystem::is_empty(programs));
    }
}

TEST_F(EngineLogFile, WritesUnderTheLongestPathThatFits) {
    const std::string programs = FolderOfLength(Scratch(), 984);
    const EnvironmentVariable variable(kWithX86, programs);
    {
        const LogProbe probe;
        probe.Log("fits");
    }
    EXPECT_THAT(Messages(LogPath(programs)), ElementsAre("fits"));
}

#endif

TEST_F(EngineLogFile, KeepsACallOnOneLineWhateverItsTextHolds) {
    const EnvironmentVariable programs(kWithX86, Scratch());
    {
        const LogProbe probe;
        probe.Log("one\r\ntwo\nthree\tfour\x1B[2Jfive\x7F");
        probe.Log("");
        probe.Log("\x01|\x1E|\x1F|\x20|!|~|\x7F|");
    }
    EXPECT_THAT(Messages(LogPath(Scratch())),
                ElementsAre("one  two three four [2Jfive ", "", " | | | |!|~| |"));
}

TEST_F(EngineLogFile, KeepsUtf8AsItIs) {
    const EnvironmentVariable programs(kWithX86, Scratch());
    {
        const LogProbe probe;
        probe.Log("a \u2014 b");
    }
    EXPECT_THAT(Messages(LogPath(Scratch())), ElementsAre("a \xE2\x80\x94 b"));
}

TEST_F(EngineLogFile, FormatsSizesOf64Bits) {
    const EnvironmentVariable programs(kWithX86, Scratch());
    {
        const LogProbe probe;
        probe.LogSize(0);
        probe.LogSize(8589934590U);
        probe.LogSize(18446744073709551615U);
    }
    EXPECT_THAT(Messages(LogPath(Scratch())),
                ElementsAre("size=0", "size=8589934590", "size=18446744073709551615"));
}

TEST_F(EngineLogFile, CutsALineAt2048BytesWithItsNewlineKept) {
    const EnvironmentVariable programs(kWithX86, Scratch());
    constexpr std::size_t kFront = 23 + 1 + 19 + 1;  // timestamp and tag
    constexpr std::size_t kLongest = 2048 - kFront - 1;
    {
        const LogProbe probe;
        for (const std::size_t letters : {kLongest - 1, kLongest, kLongest + 1, kLongest + 5000}) {
            probe.Log(std::string(letters, 'x'));
        }
    }
    const std::vector<std::string> messages = Messages(LogPath(Scratch()));
    ASSERT_THAT(messages, SizeIs(4));
    EXPECT_EQ(messages[0].size(), kLongest - 1);
    EXPECT_EQ(messages[1].size(), kLongest);
    EXPECT_EQ(messages[2].size(), kLongest);
    EXPECT_EQ(messages[3].size(), kLongest);
}

TEST_F(EngineLogFile, KeepsTheLinesOfSeveralThreadsWholeAndLosesNone) {
    constexpr int kThreads = 8;
    constexpr int kLinesEach = 400;
    const EnvironmentVariable programs(kWithX86, Scratch());
    const auto lineOf = [](int thread, int line) {
        const std::string name = std::to_string(thread) + "-" + std::to_string(line);
        return name + std::string(static_cast<std::size_t>(line % 90), '.') + name;
    };
    {
        const LogProbe probe;
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&probe, &lineOf, t] {
                for (int i = 0; i < kLinesEach; ++i) {
                    probe.Log(lineOf(t, i));
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    std::vector<std::string> expected;
    for (int t = 0; t < kThreads; ++t) {
        for (int i = 0; i < kLinesEach; ++i) {
            expected.push_back(lineOf(t, i));
        }
    }
    std::vector<std::string> found = Messages(LogPath(Scratch()));
    std::sort(expected.begin(), expected.end());
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, expected);
}

TEST_F(EngineLogFile, LetsOthersReadItWhileItIsOpenAndClosesItWithTheModule) {
    const EnvironmentVariable programs(kWithX86, Scratch());
    {
        const LogProbe probe;
        probe.Log("first");
        EXPECT_THAT(Messages(LogPath(Scratch())), ElementsAre("first"));
        probe.Log("second");
        EXPECT_THAT(Messages(LogPath(Scratch())), ElementsAre("first", "second"));
    }
    // An open file could not be removed on Windows.
    std::error_code failure;
    EXPECT_TRUE(std::filesystem::remove(PathOf(LogPath(Scratch())), failure)) << failure.message();
}

TEST_F(EngineLogFile, HasAShippedBodyThatWritesNothing) {
    const EnvironmentVariable first(kWithX86, Scratch());
    const EnvironmentVariable second(kWithoutX86, Scratch());
    const LogProbe probe(ORL_LOG_OFF_PROBE);
    probe.Log("nowhere");
    probe.LogSize(5);
    EXPECT_TRUE(std::filesystem::is_empty(PathOf(Scratch())));
}

}  // namespace
}  // namespace orl::test
