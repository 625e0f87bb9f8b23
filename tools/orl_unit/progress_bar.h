#pragma once

// A progress bar on standard error for long work. It shows itself only when standard error is a
// terminal and the work has lasted a moment, redraws a few times a second, and removes itself when
// done, so that results on standard output and messages stay readable.

#include <chrono>
#include <cstddef>
#include <string>

namespace orl::unit {

class ProgressBar {
  public:
    using Clock = std::chrono::steady_clock;

    // total: number of steps; 0 shows a bare count.
    ProgressBar(std::string label, std::size_t total);
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    ~ProgressBar();

    void setTotal(std::size_t total) { total_ = total; }
    // Tells that doneCount steps are done. Cheap enough for every step.
    void show(std::size_t doneCount);

  private:
    std::string label_;
    std::size_t total_;
    bool onTerminal_;
    bool drawn_ = false;
    Clock::time_point nextDrawing_;
};

// The bar's text: label, bar of kBarCells cells, percentage, "done/total"; without a total, label
// and count.
std::string progressText(const std::string& label, std::size_t doneCount, std::size_t total);

}  // namespace orl::unit
