#include "tools/orl_unit/interruption.h"

#include <csignal>

#include "tools/orl_unit/command_error.h"

namespace orl::unit {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void noteInterruption(int /*signal*/) {
    interrupted = 1;
}

}  // namespace

InterruptionGuard::InterruptionGuard()
    : formerInterrupt_(std::signal(SIGINT, noteInterruption)),
      formerTermination_(std::signal(SIGTERM, noteInterruption)) {}

InterruptionGuard::~InterruptionGuard() {
    std::signal(SIGINT, formerInterrupt_);
    std::signal(SIGTERM, formerTermination_);
}

void InterruptionGuard::check() const {
    if (interrupted != 0) {
        throw CommandError("interrupted");
    }
}

}  // namespace orl::unit
