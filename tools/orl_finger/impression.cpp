#include "tools/orl_finger/impression.h"

#include <algorithm>
#include <array>

namespace orl::tools {
namespace {

constexpr int kImageWidthPixels = 388;
constexpr int kImageHeightPixels = 374;
constexpr int kImageMarginPixels = 6;  // a detector reports nothing at the image's rim
constexpr int kPixelsPerCm = 197;
constexpr double kDegreesPerTurn = 360.0;

// Smooth stretching of the skin: each coordinate is moved by a polynomial of the place on the pad,
// coefficients in pixels for u, v, u*u, u*v and v*v, where u and v are -1..1 across and along it.
constexpr std::size_t kTerms = 5;
struct Stretch {
    std::array<double, kTerms> x{};
    std::array<double, kTerms> y{};
};

// How the finger meets the sensor, and how well its minutiae are seen.
struct Touch {
    double turns = 0;        // rotation about the middle of the pad
    Vector shift;            // pixels, after the rotation
    Stretch stretch;         // before it
    Vector contactCentre;    // on the finger
    PadShape contact;        // the ellipse of the finger that touches the sensor
    double seenShare = 1.0;  // chance of a minutia well inside the contact to be reported
};

Touch drawTouch(const PadShape& pad, RandomStream& random) {
    constexpr double kRotationDeviationDegrees = 8.0;
    constexpr double kShiftDeviationPixels = 14.0;
    constexpr double kStretchDeviationPixels = 2.5;
    constexpr double kContactDeviationPixels = 16.0;
    Touch touch;
    touch.turns = random.normal(0, kRotationDeviationDegrees) / kDegreesPerTurn;
    touch.shift.x = random.normal(0, kShiftDeviationPixels);
    touch.shift.y = random.normal(0, kShiftDeviationPixels);
    for (std::size_t term = 0; term < kTerms; ++term) {
        touch.stretch.x[term] = random.normal(0, kStretchDeviationPixels);
        touch.stretch.y[term] = random.normal(0, kStretchDeviationPixels);
    }
    touch.contactCentre.x = random.normal(0, kContactDeviationPixels);
    touch.contactCentre.y = random.normal(0, kContactDeviationPixels);
    touch.contact.halfWidth = pad.halfWidth * random.between(0.75, 1.0);
    touch.contact.halfHeight = pad.halfHeight * random.between(0.75, 1.0);
    touch.seenShare = random.between(0.75, 0.95);
    return touch;
}

double polynomial(const std::array<double, kTerms>& c, double u, double v) {
    return c[0] * u + c[1] * v + c[2] * u * u + c[3] * u * v + c[4] * v * v;
}

Vector stretched(const Vector& place, const Stretch& stretch, const PadShape& pad) {
    const double u = place.x / pad.halfWidth;
    const double v = place.y / pad.halfHeight;
    return {place.x + polynomial(stretch.x, u, v), place.y + polynomial(stretch.y, u, v)};
}

// Where a direction at a place of the finger points after the stretching: the difference of two
// stretched points one pixel apart.
double stretchedDirection(const ModelMinutia& minutia,
                          const Stretch& stretch,
                          const PadShape& pad) {
    const Vector ahead{minutia.place.x + cosineOfTurns(minutia.direction),
                       minutia.place.y + sineOfTurns(minutia.direction)};
    const Vector from = stretched(minutia.place, stretch, pad);
    const Vector to = stretched(ahead, stretch, pad);
    return turnsOfVector(to.y - from.y, to.x - from.x);
}

// Squared distance from the contact's centre, 1 at its rim.
double rimRatio(const Touch& touch, const Vector& place) {
    const double u = (place.x - touch.contactCentre.x) / touch.contact.halfWidth;
    const double v = (place.y - touch.contactCentre.y) / touch.contact.halfHeight;
    return u * u + v * v;
}

// Minutiae in contact are seen with the touch's share, in the outer quarter of it less often.
bool isSeen(const Touch& touch, const ModelMinutia& minutia, RandomStream& random) {
    constexpr double kRimBegins = 0.75;
    constexpr double kShareAtRim = 0.5;
    const double ratio = rimRatio(touch, minutia.place);
    if (ratio > 1.0) {
        return false;
    }
    const double intoRim = ratio < kRimBegins ? 0.0 : (ratio - kRimBegins) / (1.0 - kRimBegins);
    return random.chance(touch.seenShare * (1.0 - (1.0 - kShareAtRim) * intoRim));
}

// What a detector gets wrong about a minutia that is there.
ModelMinutia misread(ModelMinutia minutia, RandomStream& random) {
    constexpr double kPlaceDeviationPixels = 1.3;
    constexpr double kDirectionDeviationDegrees = 5.0;
    constexpr double kReversedShare = 0.03;
    constexpr double kOtherKindShare = 0.12;
    minutia.place.x += random.normal(0, kPlaceDeviationPixels);
    minutia.place.y += random.normal(0, kPlaceDeviationPixels);
    minutia.direction += random.normal(0, kDirectionDeviationDegrees) / kDegreesPerTurn;
    minutia.direction += random.chance(kReversedShare) ? 0.5 : 0.0;
    if (random.chance(kOtherKindShare)) {
        minutia.kind =
            minutia.kind == MinutiaKind::kEnding ? MinutiaKind::kBifurcation : MinutiaKind::kEnding;
    }
    return minutia;
}

// The minutiae that the detector reports, still on the finger.
std::vector<ModelMinutia> drawDetected(const MasterFinger& finger,
                                       const Touch& touch,
                                       RandomStream& random) {
    constexpr double kMostInventedShare = 0.2;
    std::vector<ModelMinutia> detected;
    for (const ModelMinutia& minutia : finger.minutiae) {
        if (isSeen(touch, minutia, random)) {
            detected.push_back(misread(minutia, random));
        }
    }
    const double share = random.between(0.0, kMostInventedShare);
    const int invented = roundedToInt(share * static_cast<double>(detected.size()));
    for (int i = 0; i < invented; ++i) {
        const Vector spot = drawPointInPad(touch.contact, random);
        const Vector point{touch.contactCentre.x + spot.x, touch.contactCentre.y + spot.y};
        if (keepsApart(point, detected, finger.ridgePeriod)) {
            detected.push_back(drawMinutiaAt(finger.flow, point, random));
        }
    }
    return detected;
}

bool isInsideImage(int x, int y) {
    return x >= kImageMarginPixels && x < kImageWidthPixels - kImageMarginPixels &&
           y >= kImageMarginPixels && y < kImageHeightPixels - kImageMarginPixels;
}

// Puts a minutia of the finger on the image; false when it falls outside.
bool project(const ModelMinutia& minutia,
             const Touch& touch,
             const PadShape& pad,
             RecordMinutia& seen) {
    constexpr double kAngleStepsPerTurn = 256.0;
    const Vector turned = rotated(stretched(minutia.place, touch.stretch, pad), touch.turns);
    const int x = roundedToInt(kImageWidthPixels / 2.0 + turned.x + touch.shift.x);
    const int y = roundedToInt(kImageHeightPixels / 2.0 - turned.y - touch.shift.y);
    if (!isInsideImage(x, y)) {
        return false;
    }
    const double direction = stretchedDirection(minutia, touch.stretch, pad) + touch.turns;
    seen.type = static_cast<std::uint8_t>(minutia.kind);
    seen.x = static_cast<std::uint16_t>(x);
    seen.y = static_cast<std::uint16_t>(y);
    seen.angle =
        static_cast<std::uint8_t>(roundedToInt(wrappedTurns(direction) * kAngleStepsPerTurn));
    return true;
}

// The better a touch shows its minutiae, the better the detector thinks of each.
std::uint8_t drawQuality(const Touch& touch, RandomStream& random) {
    constexpr double kBest = 100.0;
    constexpr double kReserve = 15.0;
    constexpr double kDeviation = 15.0;
    constexpr int kWorstGiven = 10;
    constexpr int kBestGiven = 100;
    const double mean = kBest * touch.seenShare - kReserve;
    const int quality = roundedToInt(random.normal(mean, kDeviation));
    return static_cast<std::uint8_t>(std::clamp(quality, kWorstGiven, kBestGiven));
}

// The finger's quality is the mean of its minutiae's.
std::uint8_t meanQuality(const std::vector<RecordMinutia>& minutiae) {
    unsigned sum = 0;
    for (const RecordMinutia& minutia : minutiae) {
        sum += minutia.quality;
    }
    const auto count = static_cast<unsigned>(std::max<std::size_t>(minutiae.size(), 1));
    return static_cast<std::uint8_t>((sum + count / 2) / count);
}

bool isAbove(const RecordMinutia& a, const RecordMinutia& b) {
    return a.y != b.y ? a.y < b.y : a.x < b.x;
}

FingerRecord drawOnce(const MasterFinger& finger, RandomStream& random) {
    constexpr std::size_t kMostDetected = 128;
    const PadShape& pad = finger.flow.pad;
    const Touch touch = drawTouch(pad, random);
    FingerRecord record;
    record.width = kImageWidthPixels;
    record.height = kImageHeightPixels;
    record.pixelsPerCm = kPixelsPerCm;
    for (const ModelMinutia& minutia : drawDetected(finger, touch, random)) {
        RecordMinutia seen;
        if (record.minutiae.size() < kMostDetected && project(minutia, touch, pad, seen)) {
            seen.quality = drawQuality(touch, random);
            record.minutiae.push_back(seen);
        }
    }
    std::stable_sort(record.minutiae.begin(), record.minutiae.end(), isAbove);
    record.quality = meanQuality(record.minutiae);
    return record;
}

}  // namespace

FingerRecord drawImpression(const MasterFinger& finger, RandomStream& random) {
    constexpr int kTouches = 16;
    FingerRecord record = drawOnce(finger, random);
    for (int touch = 1; touch < kTouches && record.minutiae.size() < kFewestDetected; ++touch) {
        record = drawOnce(finger, random);
    }
    return record;
}

}  // namespace orl::tools
