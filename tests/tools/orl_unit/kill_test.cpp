// orl-unit killed at any moment: what it has reported as enrolled is in the store, and what is in
// the store is whole.

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <set>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/file_text.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/orl_unit/unit_program.h"

namespace orl::test {
namespace {

constexpr int kShortKills = 20;
constexpr int kLongKills = 1000;  // with ORL_LONG_TESTS set
constexpr int kListLines = 4000;  // far more than are enrolled in that time
// A run is killed after a random time up to this, which covers its start, the store's creation and
// some hundreds of enrollments.
constexpr int kLatestKillMilliseconds = 400;

int killCount() {
    return std::getenv("ORL_LONG_TESTS") == nullptr ? kShortKills : kLongKills;
}

class Kill : public testing::Test {
  protected:
    Kill() : store_(folder_.PathOf("store.db")), out_(folder_.PathOf("out")) {}

    // Starts enrolling kListLines records under names of this round.
    pid_t startEnrolling(int round) {
        std::string list;
        for (int i = 0; i < kListLines; ++i) {
            list.append("r").append(std::to_string(round)).append("n").append(std::to_string(i));
            list.append("\tright-index\t").append(SampleRecord("101_1")).append("\n");
        }
        const std::string listFile = folder_.Write("list", BytesOf(list));
        const pid_t child = fork();
        if (child == 0) {
            const int out = open(out_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            dup2(out, STDOUT_FILENO);
            execl(ORL_UNIT_PROGRAM,
                  ORL_UNIT_PROGRAM,
                  "--store",
                  store_.c_str(),
                  "enroll",
                  "--allow-duplicate",
                  "--list",
                  listFile.c_str(),
                  static_cast<char*>(nullptr));
            _exit(127);
        }
        return child;
    }

    // The names reported; a line cut short by the kill is none.
    std::set<std::string> reportedNames() const {
        std::set<std::string> names;
        const std::string text = FileText(out_);
        for (const std::string& line : LinesOf(text.substr(0, text.rfind('\n') + 1))) {
            const std::size_t start = std::string("enrolled ").size();
            names.insert(line.substr(start, line.find(' ', start) - start));
        }
        return names;
    }

    // The names listed; reading each record checks its checksum. An absent store has none.
    std::set<std::string> storedNames() const {
        std::set<std::string> names;
        const ProgramOutcome listed = RunOrlUnit({"--store", store_, "list", "--json"});
        if (listed.exitStatus != 0) {
            EXPECT_TRUE(listed.err.find("does not exist") != std::string::npos ||
                        listed.err.find("is an empty file") != std::string::npos)
                << listed.err;
            return names;
        }
        for (const std::string& line : LinesOf(listed.out)) {
            names.insert(nlohmann::json::parse(line)["name"].get<std::string>());
        }
        return names;
    }

    ScratchFolder folder_;
    std::string store_;
    std::string out_;
};

TEST_F(Kill, LosesNoReportedEnrollmentAndLeavesNoneHalf) {
    std::random_device seedSource;
    const unsigned seed = seedSource();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::set<std::string> expected;
    std::size_t enrolledInAll = 0;
    for (int round = 0; round < killCount(); ++round) {
        if (round % 10 == 0) {  // keeps the store small, and kills creations too
            std::filesystem::remove(store_);
            std::filesystem::remove(store_ + "-journal");
            expected.clear();
        }
        std::filesystem::remove(out_);
        const pid_t child = startEnrolling(round);
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % kLatestKillMilliseconds));
        kill(child, SIGKILL);
        int end = 0;
        waitpid(child, &end, 0);
        ASSERT_TRUE(WIFSIGNALED(end)) << "the run ended by itself; it needs a longer list";
        if (!std::filesystem::exists(out_)) {
            continue;  // killed before it began
        }
        const std::set<std::string> reported = reportedNames();
        const std::set<std::string> stored = storedNames();
        for (const std::string& name : reported) {
            ASSERT_EQ(stored.count(name), 1U)
                << name << " was reported and is lost, round " << round;
        }
        for (const std::string& name : expected) {
            ASSERT_EQ(stored.count(name), 1U) << name << " of an earlier round, round " << round;
        }
        // The last one may be stored and not yet reported.
        ASSERT_LE(stored.size(), expected.size() + reported.size() + 1) << "round " << round;
        expected = stored;
        enrolledInAll += reported.size();
    }
    EXPECT_GT(enrolledInAll, 0U) << "every run was killed before its first enrollment";
}

}  // namespace
}  // namespace orl::test
