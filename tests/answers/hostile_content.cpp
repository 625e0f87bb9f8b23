#include "tests/answers/hostile_content.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orl::test {
namespace {

constexpr std::size_t kByteValues = 256;
constexpr std::uint16_t kCoordinates = 16384;  // 14 bits
constexpr std::size_t kKeptMinutiae = 128;     // of a view; the rest is read past

std::vector<RecordMinutia>& MinutiaeOf(RecordContent& content) {
    return content.views.front().minutiae;
}

RecordMinutia AnyMinutia(const RecordContent& content, ChanceStream& chance) {
    RecordMinutia minutia;
    minutia.type = static_cast<std::uint8_t>(1 + chance.Below(2));
    minutia.x = chance.PixelBelow(content.imageWidth);
    minutia.y = chance.PixelBelow(content.imageHeight);
    minutia.angleByte = chance.Byte();
    return minutia;
}

void SetCount(RecordContent& content, std::size_t count, ChanceStream& chance) {
    std::vector<RecordMinutia>& minutiae = MinutiaeOf(content);
    while (minutiae.size() < count) {
        minutiae.push_back(AnyMinutia(content, chance));
    }
    minutiae.resize(count);
}

void KeepFew(RecordContent& content, ChanceStream& chance) {
    constexpr std::size_t kMostKept = 6;
    SetCount(content, chance.Below(kMostKept), chance);
}

void FillToTheLimit(RecordContent& content, ChanceStream& chance) {
    SetCount(content, kKeptMinutiae - 1 + chance.Below(2), chance);
}

void FillBeyondTheLimit(RecordContent& content, ChanceStream& chance) {
    SetCount(content, kKeptMinutiae + 1 + chance.Below(kKeptMinutiae - 1), chance);
}

void ListTwice(RecordContent& content, ChanceStream&) {
    const std::vector<RecordMinutia> once = MinutiaeOf(content);
    MinutiaeOf(content).insert(MinutiaeOf(content).end(), once.begin(), once.end());
}

void PileOnOnePoint(RecordContent& content, ChanceStream& chance) {
    const RecordMinutia place = AnyMinutia(content, chance);
    for (RecordMinutia& minutia : MinutiaeOf(content)) {
        minutia.x = place.x;
        minutia.y = place.y;
    }
}

void PileOnThreePoints(RecordContent& content, ChanceStream&) {
    constexpr std::size_t kPoints = 3;
    std::vector<RecordMinutia>& minutiae = MinutiaeOf(content);
    for (std::size_t i = kPoints; i < minutiae.size(); ++i) {
        minutiae[i].x = minutiae[i % kPoints].x;
        minutiae[i].y = minutiae[i % kPoints].y;
    }
}

void PutSideBySide(RecordContent& content, ChanceStream& chance) {
    constexpr std::size_t kNearPixels = 3;
    std::vector<RecordMinutia>& minutiae = MinutiaeOf(content);
    for (std::size_t i = 1; i < minutiae.size(); i += 2) {
        minutiae[i].x = static_cast<std::uint16_t>(minutiae[i - 1].x + chance.Below(kNearPixels));
        minutiae[i].y = static_cast<std::uint16_t>(minutiae[i - 1].y + chance.Below(kNearPixels));
    }
}

void PutOnALevelLine(RecordContent& content, ChanceStream& chance) {
    const std::uint16_t y = chance.PixelBelow(content.imageHeight);
    for (RecordMinutia& minutia : MinutiaeOf(content)) {
        minutia.y = y;
    }
}

void PutOnAnUprightLine(RecordContent& content, ChanceStream& chance) {
    const std::uint16_t x = chance.PixelBelow(content.imageWidth);
    for (RecordMinutia& minutia : MinutiaeOf(content)) {
        minutia.x = x;
    }
}

void PutOnADiagonal(RecordContent& content, ChanceStream&) {
    for (RecordMinutia& minutia : MinutiaeOf(content)) {
        minutia.y = minutia.x;
    }
}

// All but one in a line, so that there are triangles, all with one corner.
void PutOnALineAndOneBeside(RecordContent& content, ChanceStream& chance) {
    PutOnALevelLine(content, chance);
    MinutiaeOf(content).front().y = static_cast<std::uint16_t>(MinutiaeOf(content).front().y + 50);
}

void PutOnALattice(RecordContent& content, ChanceStream& chance) {
    constexpr std::size_t kColumns = 8;
    const std::size_t spacing = 8 + chance.Below(30);
    std::vector<RecordMinutia>& minutiae = MinutiaeOf(content);
    for (std::size_t i = 0; i < minutiae.size(); ++i) {
        minutiae[i].x = static_cast<std::uint16_t>(20 + i % kColumns * spacing);
        minutiae[i].y = static_cast<std::uint16_t>(20 + i / kColumns * spacing);
    }
}

// The whole-number points of a circle of 65, in every eighth of it.
void PutOnACircle(RecordContent& content, ChanceStream& chance) {
    constexpr int kCentre = 190;
    constexpr std::pair<int, int> kPoints[] = {{0, 65}, {16, 63}, {25, 60}, {33, 56}, {39, 52}};
    std::vector<RecordMinutia> minutiae;
    const auto put = [&](int dx, int dy) {
        RecordMinutia minutia = AnyMinutia(content, chance);
        minutia.x = static_cast<std::uint16_t>(kCentre + dx);
        minutia.y = static_cast<std::uint16_t>(kCentre + dy);
        minutiae.push_back(minutia);
    };
    for (const auto& [dx, dy] : kPoints) {
        for (const int sign : {-1, 1}) {
            put(dx, sign * dy);
            put(-dx, sign * dy);
            put(sign * dy, dx);
            put(sign * dy, -dx);
        }
    }
    MinutiaeOf(content) = minutiae;
}

void PutOnTheBorders(RecordContent& content, ChanceStream&) {
    std::vector<RecordMinutia>& minutiae = MinutiaeOf(content);
    for (std::size_t i = 0; i < minutiae.size(); ++i) {
        if (i % 2 == 0) {
            minutiae[i].x = i % 4 == 0 ? 0 : static_cast<std::uint16_t>(content.imageWidth - 1);
        } else {
            minutiae[i].y = i % 4 == 1 ? 0 : static_cast<std::uint16_t>(content.imageHeight - 1);
        }
    }
}

void PutBeyondTheImage(RecordContent& content, ChanceStream& chance) {
    for (RecordMinutia& minutia : MinutiaeOf(content)) {
        minutia.x = chance.PixelBelow(kCoordinates);
        minutia.y = chance.PixelBelow(kCoordinates);
    }
}

void PointOneWay(RecordContent& content, ChanceStream& chance) {
    const auto angleByte = chance.Byte();
    for (RecordMinutia& minutia : MinutiaeOf(content)) {
        minutia.angleByte = angleByte;
        minutia.type = 1;
    }
}

void PointAnyWay(RecordContent& content, ChanceStream& chance) {
    constexpr std::uint8_t kAngles[] = {0, 1, 63, 64, 127, 128, 129, 192, 254, 255};
    for (RecordMinutia& minutia : MinutiaeOf(content)) {
        minutia.angleByte = kAngles[chance.Below(std::size(kAngles))];
        minutia.type = static_cast<std::uint8_t>(chance.Below(4));
    }
}

// A quarter turn of the image.
void Turn(RecordContent& content) {
    constexpr unsigned kQuarterTurn = 64;
    for (RecordMinutia& minutia : MinutiaeOf(content)) {
        const std::uint16_t x = minutia.x;
        minutia.x = minutia.y;
        minutia.y = static_cast<std::uint16_t>(content.imageWidth - 1 - x);
        minutia.angleByte = static_cast<std::uint8_t>(minutia.angleByte + kQuarterTurn);
    }
    std::swap(content.imageWidth, content.imageHeight);
}

void TurnOnce(RecordContent& content, ChanceStream&) {
    Turn(content);
}

void TurnOver(RecordContent& content, ChanceStream&) {
    Turn(content);
    Turn(content);
}

void Mirror(RecordContent& content, ChanceStream&) {
    for (RecordMinutia& minutia : MinutiaeOf(content)) {
        minutia.x = static_cast<std::uint16_t>(content.imageWidth - 1 - minutia.x);
        minutia.angleByte = static_cast<std::uint8_t>(kByteValues / 2 - minutia.angleByte);
    }
}

void Shake(RecordContent& content, ChanceStream& chance) {
    constexpr std::size_t kMostPixels = 12;
    constexpr std::size_t kMostSteps = 20;
    for (RecordMinutia& minutia : MinutiaeOf(content)) {
        minutia.x = static_cast<std::uint16_t>(minutia.x + chance.Below(kMostPixels));
        minutia.y = static_cast<std::uint16_t>(minutia.y + chance.Below(kMostPixels));
        minutia.angleByte = static_cast<std::uint8_t>(minutia.angleByte + chance.Below(kMostSteps));
    }
}

void ChangeImageSize(RecordContent& content, ChanceStream& chance) {
    constexpr std::uint16_t kSizes[] = {0, 1, 2, 100, 255, 256, 257, 1000, 16383, 65535};
    content.imageWidth = kSizes[chance.Below(std::size(kSizes))];
    content.imageHeight = kSizes[chance.Below(std::size(kSizes))];
}

void ChangePosition(RecordContent& content, ChanceStream& chance) {
    constexpr std::size_t kPositions = 12;  // the ten fingers, unknown, and one too many
    content.views.front().fingerPosition = static_cast<std::uint8_t>(chance.Below(kPositions));
}

// The scan for finger positions takes its view count from the vertical resolution's first byte.
void ChangePositionAndShowIt(RecordContent& content, ChanceStream& chance) {
    ChangePosition(content, chance);
    content.verticalResolution = static_cast<std::uint16_t>(kByteValues);
}

void AddViews(RecordContent& content, ChanceStream& chance) {
    constexpr std::size_t kMostAdded = 3;
    const RecordView sound = content.views.front();
    for (std::size_t more = 1 + chance.Below(kMostAdded); more > 0; --more) {
        content.views.push_back(sound);
        Shake(content, chance);
        std::swap(content.views.front(), content.views.back());
    }
}

void AddManySmallViews(RecordContent& content, ChanceStream& chance) {
    constexpr std::size_t kViews = 40;
    constexpr std::size_t kMinutiae = 7;
    while (content.views.size() < kViews) {
        RecordView view;
        view.fingerPosition = static_cast<std::uint8_t>(content.views.size() % kViews);
        for (std::size_t i = 0; i < kMinutiae; ++i) {
            view.minutiae.push_back(AnyMinutia(content, chance));
        }
        content.views.push_back(view);
    }
}

void AddAnEmptyView(RecordContent& content, ChanceStream&) {
    content.views.emplace_back();
}

void RemoveTheViews(RecordContent& content, ChanceStream&) {
    content.views.clear();
}

void AddExtendedData(RecordContent& content, ChanceStream& chance) {
    constexpr std::size_t kMostBytes = 300;
    constexpr std::uint8_t kFiller = 0x5A;
    content.views.front().extendedData.assign(chance.Below(kMostBytes), kFiller);
}

void OverstateExtendedData(RecordContent& content, ChanceStream& chance) {
    constexpr std::size_t kLengths = 65536;
    content.views.front().declaredExtendedBytes = chance.PixelBelow(kLengths);
}

void MiscountMinutiae(RecordContent& content, ChanceStream& chance) {
    content.views.front().declaredMinutiae = chance.Byte();
}

void MiscountViews(RecordContent& content, ChanceStream& chance) {
    content.declaredViews = chance.Byte();
}

void MisstateTheLength(RecordContent& content, ChanceStream& chance) {
    constexpr std::uint32_t kLengths[] = {
        0, 23, 24, 6200, 6201, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    content.declaredBytes = kLengths[chance.Below(std::size(kLengths))];
}

// Longer than any record that can be loaded.
void OutgrowTheLimit(RecordContent& content, ChanceStream& chance) {
    constexpr std::size_t kViews = 7;
    FillToTheLimit(content, chance);
    MinutiaeOf(content).resize(kKeptMinutiae);
    MinutiaeOf(content).insert(MinutiaeOf(content).end(), 20, AnyMinutia(content, chance));
    content.views.resize(kViews, content.views.front());
}

constexpr ContentChange kContentChanges[] = {&KeepFew,
                                             &FillToTheLimit,
                                             &FillBeyondTheLimit,
                                             &ListTwice,
                                             &PileOnOnePoint,
                                             &PileOnThreePoints,
                                             &PutSideBySide,
                                             &PutOnALevelLine,
                                             &PutOnAnUprightLine,
                                             &PutOnADiagonal,
                                             &PutOnALineAndOneBeside,
                                             &PutOnALattice,
                                             &PutOnACircle,
                                             &PutOnTheBorders,
                                             &PutBeyondTheImage,
                                             &PointOneWay,
                                             &PointAnyWay,
                                             &TurnOnce,
                                             &TurnOver,
                                             &Mirror,
                                             &Shake,
                                             &ChangeImageSize,
                                             &ChangePosition,
                                             &ChangePositionAndShowIt,
                                             &AddViews,
                                             &AddManySmallViews,
                                             &AddAnEmptyView,
                                             &RemoveTheViews,
                                             &AddExtendedData,
                                             &OverstateExtendedData,
                                             &MiscountMinutiae,
                                             &MiscountViews,
                                             &MisstateTheLength,
                                             &OutgrowTheLimit};

}  // namespace

std::span<const ContentChange> ContentChanges() {
    return kContentChanges;
}

}  // namespace orl::test
