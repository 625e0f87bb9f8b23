#pragma once

// While one is alive, Ctrl-C and termination requests set a flag instead of ending the program, so
// that the work can stop in order and remove what it has made.

namespace orl::unit {

class InterruptionGuard {
  public:
    InterruptionGuard();
    InterruptionGuard(const InterruptionGuard&) = delete;
    InterruptionGuard& operator=(const InterruptionGuard&) = delete;
    ~InterruptionGuard();

    // Throws CommandError once the program has been asked to end.
    void check() const;

  private:
    using Handler = void (*)(int);
    Handler formerInterrupt_;
    Handler formerTermination_;
};

}  // namespace orl::unit
