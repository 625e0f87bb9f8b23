#pragma once

// The matcher's finger model: plain values of fixed width, copied by value, owned by whoever holds
// them. Features are built from a finger's minutiae once, when a template is loaded, and never
// change afterwards.

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

namespace orl::matcher {

// Minutiae beyond this many in one finger view are read past, not kept.
inline constexpr std::size_t kMaxMinutiae = 128;

// One minutia as loaded.
struct Minutia {
    std::uint32_t type = 0;   // 0 other, 1 ridge ending, 2 bifurcation, 3 reserved (kept as it is)
    std::uint16_t x = 0;      // pixels from the left edge, 0..16383
    std::uint16_t y = 0;      // pixels from the upper edge, 0..16383
    std::uint16_t angle = 0;  // whole degrees, 1..360 (never 0), clockwise on the image

    friend bool operator==(const Minutia&, const Minutia&) = default;
};

// Degrees of a record's angle byte (256 steps a turn). The direction of rotation is reversed and
// the result is never 0: byte 0 gives 360, 1 gives 358, 128 gives 180, 255 gives 1.
constexpr std::uint16_t DegreesFromAngleByte(std::uint8_t angleByte) {
    constexpr float kDegreesPerAngleByte = 1.40625F;
    constexpr int kFullTurnDegrees = 360;
    const int degrees = static_cast<int>(static_cast<float>(kFullTurnDegrees) -
                                         static_cast<float>(angleByte) * kDegreesPerAngleByte);
    return static_cast<std::uint16_t>(degrees > kFullTurnDegrees ? degrees - kFullTurnDegrees
                                                                 : degrees);
}

// The minutiae of one finger view in record order, at most kMaxMinutiae of them.
using MinutiaList = std::vector<Minutia>;

// Size of the captured image in pixels, the same for all fingers of a template.
struct ImageSize {
    std::uint16_t width = 0;
    std::uint16_t height = 0;

    friend bool operator==(const ImageSize&, const ImageSize&) = default;
};

// One corner of a triangle feature, in grid bytes (the image's larger side is 256 grid units).
struct TriangleVertex {
    std::uint8_t x = 0;
    std::uint8_t y = 0;
    std::uint8_t angle = 0;  // direction at 255 steps a turn, 1..255
    std::uint8_t type = 0;   // minutia type, 0..3

    friend bool operator==(const TriangleVertex&, const TriangleVertex&) = default;
};
static_assert(sizeof(TriangleVertex) == 4);

// What matching compares, one per triangle of the triangulation:
//
//   bytes  0..11  three vertices, ordered by bearing from the triangle's weighted centre
//   byte  12      side length L0        lengths in descending order as signed bytes; bytes 12..15
//   byte  13      side length L1        are one little-endian word joined from sign-extended
//   byte  14      side length L2        lengths, so a length of 128 or more fills every byte
//   byte  15      0x00 or 0xFF          above its own with 0xFF
struct TriangleFeature {
    TriangleVertex vertices[3];
    std::uint8_t sides[4] = {0, 0, 0, 0};

    friend bool operator==(const TriangleFeature&, const TriangleFeature&) = default;
};
static_assert(sizeof(TriangleFeature) == 16);
static_assert(std::is_trivially_copyable_v<TriangleFeature>);

// What a template keeps of one finger: kCompact is what matching needs, kFull adds what an
// inspection wants to see. One template uses one form throughout.
enum class FeatureForm { kCompact, kFull };

template <FeatureForm kForm>
struct BasicFingerFeatures {
    std::uint64_t minutiaCount = 0;          // minutiae in the finger's list, 2..128 once built
    std::vector<TriangleFeature> triangles;  // ascending by bytes 12, 13, 14 as signed bytes
};

template <>
struct BasicFingerFeatures<FeatureForm::kFull> {
    std::uint64_t minutiaCount = 0;
    std::vector<TriangleFeature> triangles;
    ImageSize imageSize;
    std::vector<Minutia> minutiae;
};

using FingerFeatures = BasicFingerFeatures<FeatureForm::kCompact>;
using FullFingerFeatures = BasicFingerFeatures<FeatureForm::kFull>;

}  // namespace orl::matcher
