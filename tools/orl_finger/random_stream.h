#pragma once

// The generator's source of chance: the same numbers for the same seed on every platform, which the
// standard library's distributions do not promise.

#include <cstdint>

namespace orl::tools {

// A SplitMix64 sequence (Steele, Lea, Flood, "Fast Splittable Pseudorandom Number Generators",
// 2014).
class RandomStream {
  public:
    explicit RandomStream(std::uint64_t seed) : state_(seed) {}

    // An independent stream for one part of the work, the same whatever else is drawn: the parts
    // (finger, impression) of one seed do not depend on how many others there are.
    static RandomStream forPart(std::uint64_t seed, std::uint64_t finger, std::uint64_t impression);

    std::uint64_t nextBits();

    // Evenly spread in [0, 1), in steps of 2^-53.
    double uniform();

    // Evenly spread in [low, high).
    double between(double low, double high);

    // Evenly spread in low..high, both included. REQUIRES: low <= high.
    int wholeBetween(int low, int high);

    // Normally distributed, by the sum of twelve uniform numbers less six: close to the bell within
    // three deviations, never beyond six, and made of additions only.
    double normal(double mean, double deviation);

    bool chance(double probability) { return uniform() < probability; }

  private:
    std::uint64_t state_;
};

}  // namespace orl::tools
