#include "tools/orl_unit/progress_bar.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace orl::unit {
namespace {

constexpr std::size_t kBarCells = 30;
constexpr std::size_t kPercentOfWhole = 100;
constexpr std::chrono::milliseconds kFirstDrawingAfter(300);
constexpr std::chrono::milliseconds kBetweenDrawings(100);
constexpr const char* kEraseLine = "\r\033[K";

bool standardErrorIsTerminal() {
#ifdef _WIN32
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(STDERR_FILENO) == 1;
#endif
}

}  // namespace

std::string progressText(const std::string& label, std::size_t doneCount, std::size_t total) {
    if (total == 0) {
        return label + " " + std::to_string(doneCount);
    }
    const std::size_t done = std::min(doneCount, total);
    const std::size_t filled = done * kBarCells / total;
    return label + " [" + std::string(filled, '#') + std::string(kBarCells - filled, '.') + "] " +
           std::to_string(done * kPercentOfWhole / total) + "% " + std::to_string(done) + "/" +
           std::to_string(total);
}

ProgressBar::ProgressBar(std::string label, std::size_t total)
    : label_(std::move(label)),
      total_(total),
      onTerminal_(standardErrorIsTerminal()),
      nextDrawing_(Clock::now() + kFirstDrawingAfter) {}

ProgressBar::~ProgressBar() {
    if (drawn_) {
        std::fputs(kEraseLine, stderr);
    }
}

void ProgressBar::show(std::size_t doneCount) {
    if (!onTerminal_ || Clock::now() < nextDrawing_) {
        return;
    }
    nextDrawing_ = Clock::now() + kBetweenDrawings;
    drawn_ = true;
    std::fprintf(stderr, "%s%s", kEraseLine, progressText(label_, doneCount, total_).c_str());
}

}  // namespace orl::unit
