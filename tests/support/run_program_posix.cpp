#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include "tests/support/file_text.h"
#include "tests/support/run_program.h"
#include "tests/support/scratch_folder.h"

extern "C" char** environ;

namespace orl::test {
namespace {

// The three streams of a child as files: no pipe can fill up while nobody reads it.
class StreamFiles {
  public:
    explicit StreamFiles(const std::string& input)
        : in_(folder_.Write("in", BytesOf(input))),
          out_(folder_.PathOf("out")),
          err_(folder_.PathOf("err")) {
        constexpr int kWriteNew = O_WRONLY | O_CREAT | O_TRUNC;
        constexpr mode_t kOwnersOnly = 0600;
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, 0, in_.c_str(), O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions_, 1, out_.c_str(), kWriteNew, kOwnersOnly);
        posix_spawn_file_actions_addopen(&actions_, 2, err_.c_str(), kWriteNew, kOwnersOnly);
    }
    ~StreamFiles() { posix_spawn_file_actions_destroy(&actions_); }
    StreamFiles(const StreamFiles&) = delete;
    StreamFiles& operator=(const StreamFiles&) = delete;

    const posix_spawn_file_actions_t* actions() const { return &actions_; }
    std::string out() const { return FileText(out_); }
    std::string err() const { return FileText(err_); }

  private:
    ScratchFolder folder_;
    std::string in_;
    std::string out_;
    std::string err_;
    posix_spawn_file_actions_t actions_{};
};

std::vector<char*> pointersTo(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

ProgramOutcome RunProgram(const std::string& program,
                          const std::vector<std::string>& arguments,
                          const std::string& input) {
    constexpr int kSignalBase = 128;
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv = pointersTo(words);
    const StreamFiles streams(input);
    pid_t child = 0;
    if (posix_spawn(&child, program.c_str(), streams.actions(), nullptr, argv.data(), environ) !=
        0) {
        throw std::runtime_error("cannot start " + program);
    }
    int end = 0;
    waitpid(child, &end, 0);
    const int status = WIFEXITED(end) ? WEXITSTATUS(end) : kSignalBase + WTERMSIG(end);
    return {status, streams.out(), streams.err()};
}

}  // namespace orl::test
