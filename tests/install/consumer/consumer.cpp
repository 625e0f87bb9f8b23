// Matches a record with itself and lets an exception of the installed matcher arrive; exit status 0
// when both go as its header says.
#include <cstdint>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include <orl/finger_matcher.h>

namespace {

// One view of `count` minutiae on a spiral in a 300 x 300 image.
std::vector<std::uint8_t> RecordOf(int count) {
    const int length = 24 + 4 + 6 * count + 2;
    std::vector<std::uint8_t> record = {'F', 'M', 'R', 0, ' ', '2', '0', 0, 0, 0};
    const auto put16 = [&record](int value) {
        record.push_back(static_cast<std::uint8_t>(value / 256));
        record.push_back(static_cast<std::uint8_t>(value % 256));
    };
    put16(length);
    put16(0);    // capture equipment
    put16(300);  // width
    put16(300);  // height
    put16(197);  // resolutions
    put16(197);
    put16(256);    // one view
    put16(0);      // position, view
    put16(count);  // quality, count
    for (int i = 0; i < count; ++i) {
        put16(0x4000 + 20 + (i * i * 37) % 260);
        put16(20 + (i * 91) % 260);
        put16(((i * 53) % 256) * 256);
    }
    put16(0);  // no extended data
    return record;
}

std::int32_t MatchWithItself(const std::vector<std::uint8_t>& record, MatchResult& result) {
    const auto size = static_cast<std::int32_t>(record.size());
    return ORLFingerMatcher_Match(record.data(), size, record.data(), size, 0, &result, nullptr, 0);
}

bool ThrowsForTwoMinutiae() {
    MatchResult result;
    try {
        MatchWithItself(RecordOf(2), result);
    } catch (const std::exception& error) {
        return std::string(error.what()) == "not triangulation";
    }
    return false;
}

}  // namespace

int main() {
    ORLFingerMatcher_Initialize(nullptr, 0);
    MatchResult result;
    const std::int32_t status = MatchWithItself(RecordOf(30), result);
    std::cout << ORLFingerMatcher_StatusText(status) << ", score " << result.Score << '\n';
    const bool isSound = status == 0 && result.Matched == 1 && ThrowsForTwoMinutiae();
    ORLFingerMatcher_Shutdown();
    return isSound ? 0 : 1;
}
