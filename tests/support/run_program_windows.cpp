#include <filesystem>
#include <stdexcept>
#include <string>

#include <windows.h>

#include "tests/support/file_text.h"
#include "tests/support/run_program.h"
#include "tests/support/scratch_folder.h"

namespace orl::test {
namespace {

std::wstring wideFromUtf8(const std::string& text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end())).native();
}

// One argument as the C runtime splits them: in quotes, with backslashes doubled before a quote.
std::wstring quoted(const std::wstring& argument) {
    std::wstring word = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t letter : argument) {
        if (letter == L'"') {
            word.append(backslashes + 1, L'\\');
        }
        backslashes = letter == L'\\' ? backslashes + 1 : 0;
        word += letter;
    }
    word.append(backslashes, L'\\');
    return word + L'"';
}

// A file that a child inherits as one of its streams.
class StreamFile {
  public:
    StreamFile(const std::string& path, DWORD access, DWORD creation) {
        SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        handle_ = CreateFileW(wideFromUtf8(path).c_str(),
                              access,
                              FILE_SHARE_READ,
                              &inherited,
                              creation,
                              FILE_ATTRIBUTE_NORMAL,
                              nullptr);
    }
    ~StreamFile() { CloseHandle(handle_); }
    StreamFile(const StreamFile&) = delete;
    StreamFile& operator=(const StreamFile&) = delete;

    HANDLE handle() const { return handle_; }

  private:
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

// Starts the program. An emulator on a busy machine fails to now and then, so it is tried again.
PROCESS_INFORMATION started(std::wstring commandLine, STARTUPINFOW startup) {
    constexpr int kAttempts = 5;
    constexpr DWORD kPauseMs = 300;
    for (int attempt = 1;; ++attempt) {
        PROCESS_INFORMATION process{};
        if (CreateProcessW(nullptr,
                           commandLine.data(),
                           nullptr,
                           nullptr,
                           TRUE,
                           0,
                           nullptr,
                           nullptr,
                           &startup,
                           &process)) {
            return process;
        }
        const DWORD error = GetLastError();
        if (attempt == kAttempts) {
            throw std::runtime_error("cannot start the program, error " + std::to_string(error));
        }
        Sleep(kPauseMs);
    }
}

int runToItsEnd(const std::wstring& commandLine, const ScratchFolder& folder) {
    const StreamFile in(folder.PathOf("in"), GENERIC_READ, OPEN_EXISTING);
    const StreamFile out(folder.PathOf("out"), GENERIC_WRITE, CREATE_ALWAYS);
    const StreamFile err(folder.PathOf("err"), GENERIC_WRITE, CREATE_ALWAYS);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in.handle();
    startup.hStdOutput = out.handle();
    startup.hStdError = err.handle();
    const PROCESS_INFORMATION process = started(commandLine, startup);
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = 0;
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return static_cast<int>(status);
}

}  // namespace

ProgramOutcome RunProgram(const std::string& program,
                          const std::vector<std::string>& arguments,
                          const std::string& input) {
    const ScratchFolder folder;
    folder.Write("in", BytesOf(input));
    std::wstring commandLine = quoted(std::filesystem::path(program).make_preferred().native());
    for (const std::string& argument : arguments) {
        commandLine += L' ' + quoted(wideFromUtf8(argument));
    }
    const int status = runToItsEnd(commandLine, folder);
    return {status, FileText(folder.PathOf("out")), FileText(folder.PathOf("err"))};
}

}  // namespace orl::test
