#pragma once

// Writes one JSON value as one line, keys in the order in which they are given.
//
//   JsonLine line;
//   line.beginObject().key("record").text("a.fmr").key("score").number(412).endObject();
//
// Floats are printed with the fewest digits that read back as the same 32-bit float (1 for 1.0F,
// 0.7209302 rather than the digits of the nearest double), so equal results are equal text. The
// caller keeps the calls balanced; nothing is checked.

#include <cstdint>
#include <string>
#include <string_view>

namespace orl::tools {

class JsonLine {
  public:
    JsonLine& beginObject();
    JsonLine& endObject();
    JsonLine& beginArray();
    JsonLine& endArray();
    JsonLine& key(std::string_view name);

    // Bytes that are not UTF-8 are shown as the replacement character.
    JsonLine& text(std::string_view value);
    JsonLine& number(std::int64_t value);
    // A value that is not finite, which JSON cannot say, is shown as null.
    JsonLine& number(float value);
    JsonLine& boolean(bool value);

    // The line so far, without a newline.
    const std::string& str() const { return line_; }

  private:
    void separate();

    std::string line_;
    bool needsComma_ = false;
};

}  // namespace orl::tools
