#include "tests/support/golden_lines.h"

#include <algorithm>
#include <cmath>

#include <nlohmann/json.hpp>

#include "tests/support/file_text.h"

namespace orl::test {
namespace {

using nlohmann::json;

constexpr double kOtherPlatformTolerance = 1e-5;

bool IsClose(double a, double b) {
    return std::abs(a - b) <= kOtherPlatformTolerance * std::max(std::abs(a), std::abs(b));
}

bool Agree(const json& said, const json& kept);

bool MembersAgree(const json& said, const json& kept) {
    if (said.size() != kept.size()) {
        return false;
    }
    for (auto a = said.begin(), b = kept.begin(); a != said.end(); ++a, ++b) {
        if ((said.is_object() && a.key() != b.key()) || !Agree(*a, *b)) {
            return false;
        }
    }
    return true;
}

bool Agree(const json& said, const json& kept) {
    if (said.is_structured() && kept.is_structured()) {
        return said.type() == kept.type() && MembersAgree(said, kept);
    }
    if (said.is_number_float() || kept.is_number_float()) {
        return said.is_number() && kept.is_number() &&
               IsClose(said.get<double>(), kept.get<double>());
    }
    return said == kept;
}

bool LinesAreTheSame(const std::string& said, const std::string& kept) {
#ifdef _WIN32
    return LinesAgree(said, kept);
#else
    return said == kept;
#endif
}

}  // namespace

bool LinesAgree(const std::string& said, const std::string& kept) {
    return Agree(json::parse(said), json::parse(kept));
}

std::string DifferencesFromGolden(const std::vector<std::string>& said,
                                  const std::string& goldenFile) {
    const std::vector<std::string> kept = LinesOf(FileText(goldenFile));
    if (kept.empty() || said.size() != kept.size()) {
        return goldenFile + " keeps " + std::to_string(kept.size()) + " lines, said were " +
               std::to_string(said.size()) + "\n";
    }
    std::string differences;
    for (std::size_t i = 0; i < kept.size(); ++i) {
        if (!LinesAreTheSame(said[i], kept[i])) {
            differences += goldenFile + ":" + std::to_string(i + 1) + "\n said " + said[i] +
                           "\n kept " + kept[i] + "\n";
        }
    }
    return differences;
}

}  // namespace orl::test
