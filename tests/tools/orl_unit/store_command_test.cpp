// orl-unit on a store in a file: the commands one after the other, and everything that can be wrong
// with the file.

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/file_text.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/orl_unit/unit_program.h"

namespace orl::test {
namespace {

class UnitOnFile : public testing::Test {
  protected:
    UnitOnFile() : store_(folder_.PathOf("store.db")) {}

    ProgramOutcome run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"--store", store_, "--wait", "0"});
        return RunOrlUnit(arguments);
    }

    void enroll(const std::string& name, const std::string& finger, const std::string& sample) {
        const ProgramOutcome outcome = run({"enroll", name, finger, SampleRecord(sample)});
        ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
        ASSERT_EQ(outcome.out, "enrolled " + name + " " + finger + "\n");
    }

    // One line that names the store and says why.
    void expectStoreComplaint(const ProgramOutcome& outcome, const std::string& reason) const {
        EXPECT_EQ(outcome.exitStatus, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "orl-unit: store '" + store_ + "' " + reason + "\n");
    }

    ScratchFolder folder_;
    std::string store_;
};

TEST_F(UnitOnFile, EnrollsVerifiesIdentifiesListsAndDeletes) {
    enroll("alice", "right-index", "101_1");
    enroll("alice", "left-thumb", "102_1");
    enroll("bob", "right-index", "103_1");

    EXPECT_EQ(run({"verify", "alice", "right-index", SampleRecord("101_1")}).out, "match\n");
    EXPECT_EQ(run({"verify", "alice", "right-index", SampleRecord("103_1")}).out, "no match\n");
    EXPECT_EQ(run({"verify", "bob", "any", SampleRecord("103_1")}).out, "match\n");
    EXPECT_EQ(run({"identify", SampleRecord("103_1")}).out, "bob right-index\n");
    EXPECT_EQ(run({"identify", SampleRecord("104_1")}).out, "not identified\n");

    const auto lines = LinesOf(run({"list"}).out);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[1].find("alice  right-index "), 0U) << lines[1];
    EXPECT_EQ(lines[2].find("alice  left-thumb "), 0U) << lines[2];
    EXPECT_EQ(lines[3].find("bob    right-index "), 0U) << lines[3];

    EXPECT_EQ(run({"delete", "alice", "right-index"}).out, "deleted 1 record\n");
    EXPECT_EQ(run({"identify", SampleRecord("101_1")}).out, "not identified\n");
    EXPECT_EQ(run({"delete", "--all"}).out, "deleted 2 records\n");
    EXPECT_EQ(run({"list"}).out, "nothing is enrolled\n");
}

TEST_F(UnitOnFile, JsonHasTheSameAnswers) {
    enroll("alice", "right-index", "101_1");
    const auto verified = nlohmann::json::parse(
        run({"verify", "--json", "alice", "right-index", SampleRecord("101_1")}).out);
    EXPECT_EQ(verified["match"], true);
    EXPECT_EQ(verified["finger"], "right-index");
    const auto identified =
        nlohmann::json::parse(run({"identify", "--json", SampleRecord("101_1")}).out);
    EXPECT_EQ(identified["identified"], true);
    EXPECT_EQ(identified["name"], "alice");
    EXPECT_EQ(identified["comparisons"], 1);
    const auto unknown =
        nlohmann::json::parse(run({"identify", "--json", SampleRecord("102_1")}).out);
    EXPECT_EQ(unknown["identified"], false);
    EXPECT_TRUE(unknown["name"].is_null());
    const auto listed = nlohmann::json::parse(run({"list", "--json"}).out);
    EXPECT_EQ(listed["name"], "alice");
    // The template is the whole sample: 32 bytes of BIR, 48 of header, then the record.
    EXPECT_EQ(listed["templateBytes"], 80 + std::filesystem::file_size(SampleRecord("101_1")));
}

TEST_F(UnitOnFile, ASecondEnrollmentOfTheSameFingerIsRefused) {
    enroll("alice", "right-index", "101_1");
    const ProgramOutcome same = run({"enroll", "alice", "right-index", SampleRecord("102_1")});
    EXPECT_EQ(same.exitStatus, 1);
    EXPECT_EQ(same.err, "orl-unit: 'alice' has right-index enrolled already\n");
    const ProgramOutcome duplicate = run({"enroll", "bob", "left-thumb", SampleRecord("101_1")});
    EXPECT_EQ(duplicate.exitStatus, 1);
    EXPECT_NE(duplicate.err.find("is the finger enrolled as 'alice' right-index"),
              std::string::npos);
    EXPECT_EQ(LinesOf(run({"list"}).out).size(), 2U);
    EXPECT_EQ(run({"enroll", "--allow-duplicate", "bob", "left-thumb", SampleRecord("101_1")}).out,
              "enrolled bob left-thumb\n");
}

TEST_F(UnitOnFile, AnUnknownIdentityOrFingerIsTold) {
    enroll("alice", "right-index", "101_1");
    EXPECT_EQ(run({"verify", "bob", "right-index", SampleRecord("101_1")}).err,
              "orl-unit: unknown identity 'bob': nothing is enrolled for it\n");
    EXPECT_EQ(run({"verify", "alice", "left-index", SampleRecord("101_1")}).err,
              "orl-unit: 'alice' has not enrolled left-index\n");
    EXPECT_EQ(run({"delete", "bob"}).err,
              "orl-unit: unknown identity 'bob': nothing is enrolled for it\n");
    EXPECT_EQ(run({"delete", "alice", "left-index"}).err,
              "orl-unit: 'alice' has no such record to delete\n");
}

TEST_F(UnitOnFile, AMissingStoreIsToldAndNotMade) {
    expectStoreComplaint(run({"list"}), "does not exist");
    expectStoreComplaint(run({"identify", SampleRecord("101_1")}), "does not exist");
    EXPECT_FALSE(std::filesystem::exists(store_));
}

TEST_F(UnitOnFile, WhatCannotBeEnrolledLeavesNoNewStoreBehind) {
    for (const auto& arguments :
         {std::vector<std::string>{"enroll", "alice", "right-index", "missing.fmr"},
          {"enroll", "alice", "pinky", SampleRecord("101_1")},
          {"enroll", "", "right-index", SampleRecord("101_1")},
          {"enroll", "--list", "missing.tsv"}}) {
        EXPECT_EQ(run(arguments).exitStatus, 1) << testing::PrintToString(arguments);
        EXPECT_FALSE(std::filesystem::exists(store_)) << testing::PrintToString(arguments);
    }
}

TEST_F(UnitOnFile, AStoreNameThatIsNotUtf8IsTold) {
    EXPECT_EQ(RunOrlUnit({"list", "--store", "\xFF.db"}).err,
              "orl-unit: store '\xFF.db' has a name that is not UTF-8\n");
}

TEST_F(UnitOnFile, FilesThatAreNoStoreAreTold) {
    folder_.Write("store.db", std::vector<std::uint8_t>(5000, 'x'));
    for (const auto& arguments : {std::vector<std::string>{"list"},
                                  {"delete", "--all"},
                                  {"identify", SampleRecord("101_1")},
                                  {"verify", "alice", "any", SampleRecord("101_1")},
                                  {"enroll", "alice", "right-index", SampleRecord("101_1")}}) {
        expectStoreComplaint(run(arguments), "is corrupt or no database at all");
    }
    EXPECT_EQ(FileText(store_), std::string(5000, 'x'));
}

TEST_F(UnitOnFile, ADamagedStoreIsToldByEveryCommand) {
    enroll("alice", "right-index", "101_1");
    std::string bytes = FileText(store_);
    // Half of each page is overwritten, the first one's header apart.
    constexpr std::size_t kPageBytes = 4096;
    for (std::size_t i = kPageBytes; i < bytes.size(); ++i) {
        if (i % kPageBytes < kPageBytes / 2) {
            bytes[i] = static_cast<char>(i * 7);
        }
    }
    folder_.Write("store.db", BytesOf(bytes));
    for (const auto& arguments : {std::vector<std::string>{"list"},
                                  {"identify", SampleRecord("101_1")},
                                  {"enroll", "bob", "right-index", SampleRecord("102_1")}}) {
        const ProgramOutcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitStatus, 1);
        EXPECT_EQ(outcome.err.find("orl-unit: store '" + store_ + "' is corrupt"), 0U)
            << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }
}

TEST_F(UnitOnFile, AStoreLockedByAnotherProcessIsTold) {
    enroll("alice", "right-index", "101_1");
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(store_.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    expectStoreComplaint(run({"list"}), "is locked by another process");
    expectStoreComplaint(run({"enroll", "bob", "right-index", SampleRecord("102_1")}),
                         "is locked by another process");
    sqlite3_close(other);
    enroll("bob", "right-index", "102_1");
}

TEST_F(UnitOnFile, AReadOnlyStoreIsReadAndNotChanged) {
    enroll("alice", "right-index", "101_1");
    EXPECT_EQ(run({"--read-only", "identify", SampleRecord("101_1")}).out, "alice right-index\n");
    expectStoreComplaint(run({"--read-only", "enroll", "bob", "left-ring", SampleRecord("102_1")}),
                         "is read-only");
    expectStoreComplaint(run({"--read-only", "delete", "alice"}), "is read-only");
}

TEST_F(UnitOnFile, TheDemonstrationNeedsAnEmptyStore) {
    enroll("alice", "right-index", "101_1");
    const ProgramOutcome outcome = run({"demo", "--data", "samples", "--impostors", "1"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_NE(outcome.err.find("needs an empty one"), std::string::npos) << outcome.err;
    EXPECT_EQ(LinesOf(run({"list"}).out).size(), 2U);
}

TEST_F(UnitOnFile, TheDemonstrationFillsANamedStore) {
    EXPECT_EQ(run({"demo", "--data", "samples", "--impostors", "1"}).exitStatus, 0);
    EXPECT_EQ(LinesOf(run({"list"}).out).size(), 11U);
}

// Runs the program in a child that prepare() has put under some restriction; gives its exit status.
template <typename Prepare>
int runRestricted(const std::vector<std::string>& arguments,
                  const std::string& errFile,
                  Prepare&& prepare) {
    const pid_t child = fork();
    if (child == 0) {
        constexpr int kNotPrepared = 77;
        if (freopen(errFile.c_str(), "w", stderr) == nullptr ||
            freopen("/dev/null", "w", stdout) == nullptr || !prepare()) {
            _exit(kNotPrepared);
        }
        std::vector<char*> words = {const_cast<char*>(ORL_UNIT_PROGRAM)};
        for (const std::string& argument : arguments) {
            words.push_back(const_cast<char*>(argument.c_str()));
        }
        words.push_back(nullptr);
        execv(ORL_UNIT_PROGRAM, words.data());
        _exit(kNotPrepared);
    }
    int end = 0;
    waitpid(child, &end, 0);
    return WIFEXITED(end) ? WEXITSTATUS(end) : -1;
}

TEST_F(UnitOnFile, AFileThatMayNotGrowIsToldAndKeepsItsRecords) {
    enroll("alice", "right-index", "101_1");
    const auto size = static_cast<rlim_t>(std::filesystem::file_size(store_));
    const std::string errFile = folder_.PathOf("err");
    std::string list;
    for (const char* name :
         {"b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l", "m", "n", "o"}) {
        list += std::string(name) + "\tright-index\t" + SampleRecord("102_1") + "\n";
    }
    const std::string listFile = folder_.Write("list", BytesOf(list));
    const int status = runRestricted(
        {"--store", store_, "enroll", "--allow-duplicate", "--list", listFile}, errFile, [size] {
            const rlimit limit = {size, size};
            return setrlimit(RLIMIT_FSIZE, &limit) == 0 && std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR;
        });
    EXPECT_EQ(status, 1);
    const std::string err = FileText(errFile);
    EXPECT_EQ(err.find("orl-unit: store '" + store_ + "' cannot "), 0U) << err;
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
    EXPECT_EQ(run({"identify", SampleRecord("101_1")}).out, "alice right-index\n");
}

TEST_F(UnitOnFile, AFileWithoutWritePermissionIsToldToBeReadOnly) {
    enroll("alice", "right-index", "101_1");
    namespace fs = std::filesystem;
    fs::permissions(store_, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    fs::permissions(fs::path(store_).parent_path(),
                    fs::perms::all & ~fs::perms::group_write & ~fs::perms::others_write);
    const std::string errFile = folder_.PathOf("err");
    constexpr uid_t kNobody = 65534;
    const int status = runRestricted(
        {"--store", store_, "enroll", "bob", "right-index", SampleRecord("102_1")}, errFile, [] {
            return geteuid() != 0 || setuid(kNobody) == 0;  // permissions do not bind root
        });
    constexpr int kNotPrepared = 77;
    if (status == kNotPrepared) {
        GTEST_SKIP() << "the program cannot be run as another user here";
    }
    EXPECT_EQ(status, 1);
    EXPECT_EQ(FileText(errFile), "orl-unit: store '" + store_ + "' is read-only\n");
}

TEST_F(UnitOnFile, TwoProcessesShareOneStore) {
    enroll("alice", "right-index", "101_1");
    const auto enrollMany = [this](const std::string& prefix) {
        std::string list;
        for (int i = 0; i < 10; ++i) {
            list += prefix + std::to_string(i) + "\tright-index\t" + SampleRecord("102_1") + "\n";
        }
        return folder_.Write(prefix, BytesOf(list));
    };
    std::vector<pid_t> children;
    for (const std::string prefix : {"one", "two"}) {
        const std::string listFile = enrollMany(prefix);
        const pid_t child = fork();
        if (child == 0) {
            const bool quiet = freopen("/dev/null", "w", stdout) != nullptr;
            execl(ORL_UNIT_PROGRAM,
                  ORL_UNIT_PROGRAM,
                  "--store",
                  store_.c_str(),
                  "--wait",
                  "60",
                  "enroll",
                  "--allow-duplicate",
                  "--list",
                  listFile.c_str(),
                  static_cast<char*>(nullptr));
            _exit(quiet ? 127 : 126);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int end = 0;
        waitpid(child, &end, 0);
        EXPECT_TRUE(WIFEXITED(end) && WEXITSTATUS(end) == 0) << end;
    }
    EXPECT_EQ(LinesOf(run({"list"}).out).size(), 1U + 1U + 20U);
}

}  // namespace
}  // namespace orl::test
