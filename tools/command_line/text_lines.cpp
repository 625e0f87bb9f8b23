#include "tools/command_line/text_lines.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <iostream>

#include "tools/command_line/file_name.h"

namespace orl::tools {

TextLines::TextLines(const std::string& name)
    : name_(name == "-" ? "standard input" : name), isStandardInput_(name == "-") {
    if (isStandardInput_) {
        return;
    }
    std::filesystem::path path;
    if (!resolveFileName(name, path, failure_)) {
        return;
    }
    errno = 0;
    file_.open(path, std::ios::binary);
    if (!file_) {
        failure_ = reasonFromErrno("cannot be opened");
    }
}

bool TextLines::next(std::string& line) {
    line.clear();
    if (!failure_.empty()) {
        return false;
    }
    errno = 0;
    char letter = 0;
    while (stream().get(letter) && letter != '\n') {
        if (line.size() == kMaxLineBytes) {
            return fail("line " + std::to_string(number_ + 1) + " is longer than " +
                        std::to_string(kMaxLineBytes) + " bytes");
        }
        line.push_back(letter);
    }
    if (endedWithFailure()) {
        return fail(reasonFromErrno("cannot be read"));
    }
    if (line.empty() && !stream()) {
        return false;
    }
    ++number_;
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return true;
}

std::istream& TextLines::stream() {
    return isStandardInput_ ? std::cin : file_;
}

// std::cin reads by way of the C library, which alone knows of a failure.
bool TextLines::endedWithFailure() {
    return stream().bad() || (isStandardInput_ && std::ferror(stdin) != 0);
}

bool TextLines::fail(const std::string& reason) {
    failure_ = reason;
    return false;
}

}  // namespace orl::tools
