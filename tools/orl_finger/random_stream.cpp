#include "tools/orl_finger/random_stream.h"

namespace orl::tools {
namespace {

constexpr std::uint64_t kGoldenGamma = 0x9E3779B97F4A7C15U;

// The published finaliser: mixes 64 bits so that each input bit sways each output bit.
constexpr std::uint64_t mixed(std::uint64_t z) {
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31);
}

}  // namespace

RandomStream RandomStream::forPart(std::uint64_t seed,
                                   std::uint64_t finger,
                                   std::uint64_t impression) {
    return RandomStream(mixed(mixed(mixed(seed) + finger) + impression));
}

std::uint64_t RandomStream::nextBits() {
    state_ += kGoldenGamma;
    return mixed(state_);
}

double RandomStream::uniform() {
    constexpr int kDroppedBits = 11;                    // 64 less the 53 bits of a double
    constexpr double kStep = 1.0 / 9007199254740992.0;  // 2^-53
    return static_cast<double>(nextBits() >> kDroppedBits) * kStep;
}

double RandomStream::between(double low, double high) {
    return low + (high - low) * uniform();
}

int RandomStream::wholeBetween(int low, int high) {
    const auto choices = static_cast<double>(high - low + 1);
    return low + static_cast<int>(choices * uniform());
}

double RandomStream::normal(double mean, double deviation) {
    constexpr int kSummands = 12;  // their variances of 1/12 add up to 1
    double sum = 0.0;
    for (int i = 0; i < kSummands; ++i) {
        sum += uniform();
    }
    return mean + deviation * (sum - kSummands / 2.0);
}

}  // namespace orl::tools
