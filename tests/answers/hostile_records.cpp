#include "tests/answers/hostile_records.h"

#include "tests/answers/hostile_content.h"

namespace orl::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The record's layout, in bytes.
constexpr std::size_t kLengthField = 8;
constexpr std::size_t kLengthFieldBytes = 4;
constexpr std::size_t kHeaderBytes = 24;

void ChangeBytes(Bytes& record, std::size_t from, ChanceStream& chance) {
    constexpr std::size_t kMostChanges = 8;
    for (std::size_t changes = 1 + chance.Below(kMostChanges); changes > 0; --changes) {
        const std::size_t at = from + chance.Below(record.size() - from);
        record[at] = chance.Byte();
    }
}

void ChangeBodyBytes(Bytes& record, ChanceStream& chance) {
    ChangeBytes(record, kHeaderBytes, chance);
}

void ChangeAnyBytes(Bytes& record, ChanceStream& chance) {
    ChangeBytes(record, 0, chance);
}

void CutShort(Bytes& record, ChanceStream& chance) {
    record.resize(chance.Below(record.size()));
}

void CutShortAndSayIt(Bytes& record, ChanceStream& chance) {
    constexpr std::size_t kLeast = kLengthField + kLengthFieldBytes;
    record.resize(kLeast + chance.Below(record.size() - kLeast));
    MendLengthField(record);
}

void LengthenAndSayIt(Bytes& record, ChanceStream& chance) {
    constexpr std::size_t kMostAdded = 40;
    constexpr std::uint8_t kFiller = 0x5A;
    record.resize(record.size() + 1 + chance.Below(kMostAdded), kFiller);
    MendLengthField(record);
}

void KeepOneByte(Bytes& record, ChanceStream&) {
    record.resize(1);
}

void RemoveEverything(Bytes& record, ChanceStream&) {
    record.clear();
}

using ByteChange = void (*)(Bytes&, ChanceStream&);
constexpr ByteChange kByteChanges[] = {&ChangeBodyBytes,
                                       &ChangeAnyBytes,
                                       &CutShort,
                                       &CutShortAndSayIt,
                                       &LengthenAndSayIt,
                                       &KeepOneByte,
                                       &RemoveEverything};

RecordContent ContentOf(const tools::FingerRecord& record) {
    RecordContent content;
    content.imageWidth = record.width;
    content.imageHeight = record.height;
    RecordView view;
    for (const tools::RecordMinutia& minutia : record.minutiae) {
        view.minutiae.push_back({minutia.type, minutia.x, minutia.y, minutia.angle});
    }
    content.views.push_back(view);
    return content;
}

}  // namespace

std::vector<Bytes> HostileRecords(const std::vector<tools::FingerRecord>& sound,
                                  std::uint64_t seed) {
    std::vector<Bytes> records;
    for (std::size_t variant = 0; variant < kHostileVariants; ++variant) {
        const auto soundContent = [&] { return ContentOf(sound[records.size() % sound.size()]); };
        for (const ContentChange change : ContentChanges()) {
            ChanceStream chance(seed, records.size());
            RecordContent content = soundContent();
            change(content, chance);
            records.push_back(BuildRecord(content));
        }
        for (const ByteChange change : kByteChanges) {
            ChanceStream chance(seed, records.size());
            Bytes record = BuildRecord(soundContent());
            change(record, chance);
            records.push_back(record);
        }
    }
    return records;
}

}  // namespace orl::test
