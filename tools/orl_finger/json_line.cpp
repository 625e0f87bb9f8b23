#include "tools/orl_finger/json_line.h"

#include <charconv>
#include <cmath>

#include <nlohmann/json.hpp>

namespace orl::tools {
namespace {

// The longest shortest float is "-1.17549435e-38", the longest integer has 20 characters.
constexpr std::size_t kMaxNumberLetters = 32;

std::string quoted(std::string_view text) {
    constexpr int kNoIndent = -1;
    return nlohmann::json(text).dump(
        kNoIndent, ' ', false, nlohmann::json::error_handler_t::replace);
}

template <typename Number>
void appendNumber(std::string& line, Number value) {
    char letters[kMaxNumberLetters];
    const std::to_chars_result end = std::to_chars(letters, letters + kMaxNumberLetters, value);
    line.append(letters, end.ptr);
}

}  // namespace

void JsonLine::separate() {
    if (needsComma_) {
        line_ += ',';
    }
    needsComma_ = true;
}

JsonLine& JsonLine::beginObject() {
    separate();
    line_ += '{';
    needsComma_ = false;
    return *this;
}

JsonLine& JsonLine::endObject() {
    line_ += '}';
    needsComma_ = true;
    return *this;
}

JsonLine& JsonLine::beginArray() {
    separate();
    line_ += '[';
    needsComma_ = false;
    return *this;
}

JsonLine& JsonLine::endArray() {
    line_ += ']';
    needsComma_ = true;
    return *this;
}

JsonLine& JsonLine::key(std::string_view name) {
    separate();
    line_ += quoted(name);
    line_ += ':';
    needsComma_ = false;
    return *this;
}

JsonLine& JsonLine::text(std::string_view value) {
    separate();
    line_ += quoted(value);
    return *this;
}

JsonLine& JsonLine::number(std::int64_t value) {
    separate();
    appendNumber(line_, value);
    return *this;
}

JsonLine& JsonLine::number(float value) {
    separate();
    if (std::isfinite(value)) {
        appendNumber(line_, value);
    } else {
        line_ += "null";
    }
    return *this;
}

JsonLine& JsonLine::boolean(bool value) {
    separate();
    line_ += value ? "true" : "false";
    return *this;
}

}  // namespace orl::tools
