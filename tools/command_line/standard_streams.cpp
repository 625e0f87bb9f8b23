#include "tools/command_line/standard_streams.h"

#ifdef _WIN32
#include <cstdio>
#include <memory>

// Not sorted: shellapi.h needs windows.h before it.
// clang-format off
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#include <shellapi.h>
// clang-format on
#endif

namespace orl::tools {

#ifdef _WIN32

namespace {

std::string utf8FromWide(const wchar_t* text) {
    const int bytesWithNul =
        WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (bytesWithNul <= 0) {
        return {};
    }
    std::string utf8(static_cast<std::size_t>(bytesWithNul), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), bytesWithNul, nullptr, nullptr);
    utf8.pop_back();
    return utf8;
}

}  // namespace

void prepareStandardStreams() {
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    SetConsoleOutputCP(CP_UTF8);
}

// The C runtime's argv has lost what the local code page cannot say, so the command line is read
// anew.
std::vector<std::string> argumentsAsUtf8(int, char**) {
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(&LocalFree)> words(
        CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
    std::vector<std::string> arguments;
    for (int i = 1; words != nullptr && i < count; ++i) {
        arguments.push_back(utf8FromWide(words.get()[i]));
    }
    return arguments;
}

#else

void prepareStandardStreams() {}

std::vector<std::string> argumentsAsUtf8(int argc, char** argv) {
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

#endif

}  // namespace orl::tools
