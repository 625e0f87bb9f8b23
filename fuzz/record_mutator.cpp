#include "fuzz/record_mutator.h"

#include <algorithm>
#include <iterator>

namespace orl::fuzz {
namespace {

// The record's layout, in bytes.
constexpr std::size_t kLengthField = 8;
constexpr std::size_t kImageWidthField = 14;
constexpr std::size_t kImageHeightField = 16;
constexpr std::size_t kViewCountField = 22;
constexpr std::size_t kHeaderBytes = 24;
constexpr std::size_t kMinutiaCountInView = 3;
constexpr std::size_t kViewHeaderBytes = 4;
constexpr std::size_t kMinutiaBytes = 6;
constexpr std::size_t kExtendedLengthBytes = 2;

constexpr std::size_t kByteValues = 256;

std::size_t Get16(const Bytes& bytes, std::size_t at) {
    return bytes[at] * kByteValues + bytes[at + 1];
}

void Put16(Bytes& bytes, std::size_t at, std::size_t value) {
    bytes[at] = static_cast<std::uint8_t>(value / kByteValues);
    bytes[at + 1] = static_cast<std::uint8_t>(value);
}

Bytes::iterator At(Bytes& bytes, std::size_t index) {
    return bytes.begin() + static_cast<std::ptrdiff_t>(index);
}

}  // namespace

void MendLength(Bytes& record) {
    if (record.size() >= kLengthField + 4) {
        Put16(record, kLengthField, record.size() / (kByteValues * kByteValues));
        Put16(record, kLengthField + 2, record.size());
    }
}

std::vector<RecordMutator::View> RecordMutator::ViewsOf(const Bytes& record) {
    std::vector<View> views;
    std::size_t start = kHeaderBytes;
    while (start + kViewHeaderBytes + kExtendedLengthBytes <= record.size()) {
        const View view{start, record[start + kMinutiaCountInView]};
        const std::size_t extended = MinutiaeStart(view) + view.minutiae * kMinutiaBytes;
        if (extended + kExtendedLengthBytes > record.size()) {
            break;
        }
        views.push_back(view);
        start = extended + kExtendedLengthBytes + Get16(record, extended);
    }
    return views;
}

std::size_t RecordMutator::MinutiaeStart(const View& view) {
    return view.start + kViewHeaderBytes;
}

// Makes the view count that of the views that are there.
void RecordMutator::MendViewCount(Bytes& record) {
    if (record.size() >= kHeaderBytes) {
        record[kViewCountField] = static_cast<std::uint8_t>(ViewsOf(record).size());
    }
}

void RecordMutator::Mutate(Bytes& record, std::size_t mostBytes) {
    using Change = void (RecordMutator::*)(Bytes&);
    static constexpr Change kChanges[] = {&RecordMutator::ChangeMinutia,
                                          &RecordMutator::ChangeMinutia,
                                          &RecordMutator::ChangeMinutia,
                                          &RecordMutator::AddMinutiae,
                                          &RecordMutator::AddMinutiae,
                                          &RecordMutator::RemoveMinutia,
                                          &RecordMutator::CopyView,
                                          &RecordMutator::ChangeImageSize,
                                          &RecordMutator::ChangeCount,
                                          &RecordMutator::AddExtendedData};
    constexpr std::size_t kMostChanges = 4;
    if (Once(5)) {
        PlainChange(record, mostBytes);
    } else {
        if (ViewsOf(record).empty() || Once(40)) {
            NewRecord(record);
        }
        for (std::size_t changes = 1 + Below(kMostChanges); changes > 0; --changes) {
            (this->*kChanges[Below(std::size(kChanges))])(record);
        }
    }
    record.resize(std::min(record.size(), mostBytes));
    if (Once(2)) {
        MendViewCount(record);
    }
    if (Once(2)) {
        MendLength(record);
    }
}

void RecordMutator::PlainChange(Bytes& record, std::size_t mostBytes) {
    const std::size_t size = std::min(record.size(), mostBytes);
    record.resize(mostBytes);
    record.resize(plain_(record.data(), size, mostBytes));
}

void RecordMutator::NewRecord(Bytes& record) {
    record = {'F', 'M', 'R', 0, ' ', '2', '0', 0};
    record.resize(kHeaderBytes + kViewHeaderBytes + kExtendedLengthBytes);
    record[kViewCountField] = 1;
    Put16(record, kImageWidthField, 388);
    Put16(record, kImageHeightField, 374);
    AddMinutiae(record);
    MendLength(record);
}

// Type and place in two pairs of bytes, then the angle and the quality. Half of the places are at
// or near that of another minutia, since equal and close points are what triangulations break at.
void RecordMutator::PutMinutia(Bytes& record, std::size_t at) {
    constexpr std::size_t kTypeUnit = 16384;
    constexpr std::size_t kNearPixels = 3;
    std::size_t x = Below(std::max<std::size_t>(1, Get16(record, kImageWidthField)));
    std::size_t y = Below(std::max<std::size_t>(1, Get16(record, kImageHeightField)));
    const auto views = ViewsOf(record);
    const View other = AnyView(views);
    if (other.minutiae > 0 && Once(2)) {
        const std::size_t from = MinutiaeStart(other) + Below(other.minutiae) * kMinutiaBytes;
        x = Get16(record, from) + Below(kNearPixels);
        y = Get16(record, from + 2) + (Once(2) ? 0 : Below(kNearPixels));
    }
    Put16(record, at, x % kTypeUnit + kTypeUnit * Below(3));
    Put16(record, at + 2, y % kTypeUnit);
    record[at + 4] = static_cast<std::uint8_t>(Below(kByteValues));
    record[at + 5] = static_cast<std::uint8_t>(Below(101));
}

void RecordMutator::ChangeMinutia(Bytes& record) {
    const auto views = ViewsOf(record);
    if (!views.empty()) {
        const View view = AnyView(views);
        if (view.minutiae > 0) {
            PutMinutia(record, MinutiaeStart(view) + Below(view.minutiae) * kMinutiaBytes);
        }
    }
}

void RecordMutator::AddMinutiae(Bytes& record) {
    constexpr std::size_t kMostAdded = 24;
    const auto views = ViewsOf(record);
    if (views.empty()) {
        return;
    }
    const View view = AnyView(views);
    std::size_t count = view.minutiae;
    for (std::size_t more = 1 + Below(kMostAdded); more > 0 && count < kByteValues - 1; --more) {
        const std::size_t at = MinutiaeStart(view) + count * kMinutiaBytes;
        record.insert(At(record, at), kMinutiaBytes, 0);
        ++count;
        record[view.start + kMinutiaCountInView] = static_cast<std::uint8_t>(count);
        PutMinutia(record, at);
    }
}

void RecordMutator::RemoveMinutia(Bytes& record) {
    const auto views = ViewsOf(record);
    if (!views.empty()) {
        const View view = AnyView(views);
        if (view.minutiae > 0) {
            const auto first =
                At(record, MinutiaeStart(view) + Below(view.minutiae) * kMinutiaBytes);
            record.erase(first, first + static_cast<std::ptrdiff_t>(kMinutiaBytes));
            --record[view.start + kMinutiaCountInView];
        }
    }
}

void RecordMutator::CopyView(Bytes& record) {
    const auto views = ViewsOf(record);
    if (!views.empty()) {
        const View view = AnyView(views);
        const std::size_t end =
            MinutiaeStart(view) + view.minutiae * kMinutiaBytes + kExtendedLengthBytes;
        const Bytes copy(At(record, view.start), At(record, end));
        record.insert(record.end(), copy.begin(), copy.end());
        ++record[kViewCountField];
    }
}

void RecordMutator::ChangeImageSize(Bytes& record) {
    constexpr std::size_t kSizes[] = {0, 1, 2, 255, 256, 257, 300, 500, 1000, 2048, 16383, 65535};
    if (record.size() >= kHeaderBytes) {
        Put16(record,
              Once(2) ? kImageWidthField : kImageHeightField,
              kSizes[Below(std::size(kSizes))]);
    }
}

void RecordMutator::ChangeCount(Bytes& record) {
    constexpr std::uint8_t kDifferences[] = {1, 2, 0xFF, 0x80};
    const auto views = ViewsOf(record);
    const std::size_t field =
        views.empty() || Once(3) ? kViewCountField : AnyView(views).start + kMinutiaCountInView;
    if (field < record.size()) {
        record[field] =
            static_cast<std::uint8_t>(record[field] + kDifferences[Below(std::size(kDifferences))]);
    }
}

void RecordMutator::AddExtendedData(Bytes& record) {
    constexpr std::size_t kMostBytes = 12;
    const auto views = ViewsOf(record);
    if (!views.empty()) {
        const View view = AnyView(views);
        const std::size_t field = MinutiaeStart(view) + view.minutiae * kMinutiaBytes;
        const std::size_t more = Below(kMostBytes);
        const std::size_t stated = Get16(record, field) + more + (Once(4) ? 1 : 0);
        record.insert(At(record, field + kExtendedLengthBytes), more, 0x5A);
        Put16(record, field, stated);
    }
}

}  // namespace orl::fuzz
