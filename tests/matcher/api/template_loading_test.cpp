#include "matcher/api/template_loading.h"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "matcher/api/finger_matcher.h"
#include "tests/support/record_builder.h"
#include "tests/support/scratch_folder.h"

namespace orl::matcher {
namespace {

using orl::test::BuildRecord;
using orl::test::MendLengthField;
using orl::test::RandomMinutiae;
using orl::test::RecordContent;
using orl::test::RecordView;
using orl::test::ScratchFolder;
using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<std::uint8_t>;

constexpr std::int32_t kProbeLoadFail = ORLFingerMatcher_StatusProbeNotLoaded;
constexpr std::int32_t kProbeEmpty = ORLFingerMatcher_StatusProbeEmpty;
constexpr std::int32_t kCandidateLoadFail = ORLFingerMatcher_StatusCandidateNotLoaded;
constexpr std::int32_t kCandidateEmpty = ORLFingerMatcher_StatusCandidateEmpty;

struct Loading {
    LoadedTemplate loaded;
    std::string message = "left over";
    std::int32_t status = -1;
};

Loading LoadAsProbe(const Bytes& record) {
    Loading loading;
    loading.status = loadTemplateFromBuffer(record.data(),
                                            record.size(),
                                            "Probe",
                                            kProbeLoadFail,
                                            kProbeEmpty,
                                            loading.loaded,
                                            loading.message);
    return loading;
}

Loading LoadAsCandidate(const Bytes& record) {
    Loading loading;
    loading.status = loadTemplateFromBuffer(record.data(),
                                            record.size(),
                                            "Candidate",
                                            kCandidateLoadFail,
                                            kCandidateEmpty,
                                            loading.loaded,
                                            loading.message);
    return loading;
}

Loading LoadFile(const std::string& path) {
    Loading loading;
    loading.status =
        loadTemplateFromFile(path, kProbeLoadFail, kProbeEmpty, loading.loaded, loading.message);
    return loading;
}

Bytes SoundRecord() {
    return BuildRecord(RandomMinutiae(31, 20));
}

// One view of 10 minutiae filled up with extended data to `bytes` in all.
Bytes RecordOfLength(std::size_t bytes) {
    constexpr std::size_t kWithoutExtendedData = 24 + 4 + 10 * 6 + 2;
    RecordView view = {.minutiae = RandomMinutiae(32, 10)};
    view.extendedData.resize(bytes - kWithoutExtendedData);
    return BuildRecord({.views = {view}});
}

TEST(LoadTemplateFromBuffer, LoadsASoundRecordWithAnEmptyMessage) {
    const Loading loading = LoadAsProbe(SoundRecord());
    EXPECT_EQ(loading.status, 0);
    EXPECT_EQ(loading.message, "");
    ASSERT_EQ(loading.loaded.fingers.size(), 1U);
    EXPECT_EQ(loading.loaded.fingers[0].minutiaCount, 20U);
    EXPECT_EQ(loading.loaded.imageSize, (ImageSize{.width = 400, .height = 400}));
    EXPECT_EQ(loading.loaded.identityText, "");
    EXPECT_FALSE(loading.loaded.hasIdentityText);
}

TEST(LoadTemplateFromBuffer, GivesStatus1WithTheLabelForNoBufferAndForNoBytes) {
    const std::uint8_t byte = 'F';
    const struct {
        const std::uint8_t* buffer;
        std::size_t size;
        const char* label;
        const char* message;
    } cases[] = {
        {nullptr, 0, "Probe", "Probe template buffer is empty."},
        {nullptr, 24, "Probe", "Probe template buffer is empty."},
        {&byte, 0, "Candidate", "Candidate template buffer is empty."},
    };
    for (const auto& c : cases) {
        LoadedTemplate loaded;
        std::string message;
        EXPECT_EQ(loadTemplateFromBuffer(c.buffer, c.size, c.label, 2, 4, loaded, message), 1);
        EXPECT_EQ(message, c.message);
    }
}

TEST(LoadTemplateFromBuffer, GivesTheLoadFailureWhenTheLengthFieldIsOneByteOff) {
    const auto length = static_cast<std::uint32_t>(SoundRecord().size());
    for (const std::uint32_t declared : {length - 1, length + 1}) {
        const Bytes record = BuildRecord(
            {.views = {{.minutiae = RandomMinutiae(31, 20)}}, .declaredBytes = declared});
        const Loading probe = LoadAsProbe(record);
        EXPECT_EQ(probe.status, 2);
        EXPECT_EQ(probe.message, "Probe template could not be loaded from buffer");
        const Loading candidate = LoadAsCandidate(record);
        EXPECT_EQ(candidate.status, 3);
        EXPECT_EQ(candidate.message, "Candidate template could not be loaded from buffer");
    }
}

TEST(LoadTemplateFromBuffer, TellsARecordWithoutViewsFromABrokenOne) {
    const Bytes record = BuildRecord(RecordContent{});
    const Loading probe = LoadAsProbe(record);
    EXPECT_EQ(probe.status, 4);
    EXPECT_EQ(probe.message, "Probe template contains no fingerprints from buffer");
    const Loading candidate = LoadAsCandidate(record);
    EXPECT_EQ(candidate.status, 5);
    EXPECT_EQ(candidate.message, "Candidate template contains no fingerprints from buffer");
}

TEST(LoadTemplateFromBuffer, GivesTheLoadFailureForAViewOfOneMinutia) {
    const Loading loading = LoadAsProbe(BuildRecord(RandomMinutiae(33, 1)));
    EXPECT_EQ(loading.status, 2);
    EXPECT_EQ(loading.message, "Probe template could not be loaded from buffer");
}

TEST(LoadTemplateFromBuffer, HasAnEmptyPositionSequenceAtAVerticalResolutionOf197) {
    const Bytes record =
        BuildRecord({.verticalResolution = 197,
                     .views = {{.fingerPosition = 6, .minutiae = RandomMinutiae(31, 20)}}});
    EXPECT_THAT(LoadAsProbe(record).loaded.fingerPositions, IsEmpty());
}

TEST(LoadTemplateFromBuffer, LoadsThoughTheFingerPositionScanFails) {
    // Byte 20 promises two views; behind the first stand four bytes that are no whole view.
    Bytes record =
        BuildRecord({.verticalResolution = 0x0200,
                     .views = {{.fingerPosition = 6, .minutiae = RandomMinutiae(31, 20)}}});
    record.insert(record.end(), {0, 0, 0, 0});
    MendLengthField(record);
    const Loading loading = LoadAsProbe(record);
    EXPECT_EQ(loading.status, 0);
    EXPECT_THAT(loading.loaded.fingerPositions, IsEmpty());
}

TEST(LoadTemplateFromBuffer, ForgetsWhatTheTemplateHeldBefore) {
    LoadedTemplate loaded = LoadAsProbe(SoundRecord()).loaded;
    loaded.identityText = "0042";
    loaded.hasIdentityText = true;
    loaded.fingerPositions = {1, 2};
    const Bytes broken = {'F', 'M', 'R'};
    std::string message;
    EXPECT_EQ(loadTemplateFromBuffer(broken.data(), broken.size(), "Probe", 2, 4, loaded, message),
              2);
    EXPECT_EQ(loaded.identityText, "");
    EXPECT_FALSE(loaded.hasIdentityText);
    EXPECT_THAT(loaded.fingerPositions, IsEmpty());
    EXPECT_THAT(loaded.fingers, IsEmpty());
    EXPECT_EQ(loaded.imageSize, ImageSize{});
}

TEST(LoadTemplateFromBuffer, ShowsWhatHadBeenReadWhenLoadingStopped) {
    const Bytes record =
        BuildRecord({.imageWidth = 320,
                     .imageHeight = 240,
                     .verticalResolution = 0x0100,
                     .views = {{.fingerPosition = 6, .minutiae = RandomMinutiae(31, 20)}},
                     .declaredViews = 2});
    const Loading loading = LoadAsProbe(record);
    EXPECT_EQ(loading.status, 2);
    EXPECT_EQ(loading.loaded.imageSize, (ImageSize{.width = 320, .height = 240}));
    EXPECT_THAT(loading.loaded.fingerPositions, ElementsAre(6));
}

TEST(LoadTemplateFromBuffer, LetsTheTriangulationsErrorPass) {
    EXPECT_THROW(LoadAsProbe(BuildRecord({{.x = 10, .y = 10}, {.x = 50, .y = 90}})),
                 std::runtime_error);
}

TEST(LoadTemplateFromFile, LoadsASoundRecordWithAnEmptyMessage) {
    const ScratchFolder folder;
    const Loading loading = LoadFile(folder.Write("right.fmr", SoundRecord()));
    EXPECT_EQ(loading.status, 0);
    EXPECT_EQ(loading.message, "");
    EXPECT_EQ(loading.loaded.fingers.size(), 1U);
    EXPECT_FALSE(loading.loaded.hasIdentityText);
}

TEST(LoadTemplateFromFile, TakesTheIdentityTextFromTheFilesName) {
    const ScratchFolder folder;
    const Loading loading = LoadFile(folder.Write("print_0042_left.fmr", SoundRecord()));
    EXPECT_EQ(loading.status, 0);
    EXPECT_TRUE(loading.loaded.hasIdentityText);
    EXPECT_EQ(loading.loaded.identityText, "0042");
}

TEST(LoadTemplateFromFile, ForgetsWhatTheTemplateHeldBefore) {
    const ScratchFolder folder;
    LoadedTemplate loaded = LoadAsProbe(SoundRecord()).loaded;
    loaded.identityText = "0042";
    loaded.hasIdentityText = true;
    loaded.fingerPositions = {1, 2};
    std::string message;
    EXPECT_EQ(loadTemplateFromFile(folder.PathOf("missing"), 2, 4, loaded, message), 2);
    EXPECT_EQ(loaded.identityText, "");
    EXPECT_FALSE(loaded.hasIdentityText);
    EXPECT_THAT(loaded.fingerPositions, IsEmpty());
    EXPECT_THAT(loaded.fingers, IsEmpty());
    EXPECT_EQ(loaded.imageSize, ImageSize{});
}

TEST(LoadTemplateFromFile, OpensANameInUtf8) {
    const ScratchFolder folder;
    const Loading loading =
        LoadFile(folder.Write("empreinte-\xC3\xA9_\xCF\x89_1.fmr", SoundRecord()));
    EXPECT_EQ(loading.status, 0);
    EXPECT_EQ(loading.loaded.identityText, "\xCF\x89");
}

TEST(LoadTemplateFromFile, GivesTheLoadFailureForANameThatIsNotUtf8) {
    EXPECT_EQ(LoadFile("no-such-\xFF\xFE-file").status, 2);
}

TEST(LoadTemplateFromFile, GivesStatus1ForAnEmptyPath) {
    const Loading loading = LoadFile("");
    EXPECT_EQ(loading.status, 1);
    EXPECT_EQ(loading.message, "Template path is empty.");
}

TEST(LoadTemplateFromFile, GivesTheLoadFailureForAMissingFileAndForAFolder) {
    const ScratchFolder folder;
    for (const char* const name : {"missing.fmr", "."}) {
        const Loading loading = LoadFile(folder.PathOf(name));
        EXPECT_EQ(loading.status, 2) << name;
        EXPECT_EQ(loading.message, "Probe template could not be loaded from file") << name;
        EXPECT_THAT(loading.loaded.fingers, IsEmpty()) << name;
    }
}

TEST(LoadTemplateFromFile, GivesTheLoadFailureForAnEmptyFileAndForABrokenRecord) {
    const ScratchFolder folder;
    const Bytes broken = {'F', 'M', 'R', 0};
    for (const Bytes& bytes : {Bytes{}, broken}) {
        const Loading loading = LoadFile(folder.Write("broken.fmr", bytes));
        EXPECT_EQ(loading.status, 2) << bytes.size();
        EXPECT_EQ(loading.message, "Probe template could not be loaded from file");
    }
}

TEST(LoadTemplateFromFile, TellsARecordWithoutViewsFromABrokenOne) {
    const ScratchFolder folder;
    const Loading loading = LoadFile(folder.Write("none.fmr", BuildRecord(RecordContent{})));
    EXPECT_EQ(loading.status, 4);
    EXPECT_EQ(loading.message, "Probe template contains no fingerprints from file");
}

TEST(LoadTemplateFromFile, LoadsAFileOf6200BytesAndNotOneOf6201) {
    const ScratchFolder folder;
    EXPECT_EQ(LoadFile(folder.Write("longest.fmr", RecordOfLength(6200))).status, 0);
    EXPECT_EQ(LoadFile(folder.Write("too-long.fmr", RecordOfLength(6201))).status, 2);
}

TEST(LoadTemplateFromFile, DoesNotLoadTheSoundBeginningOfALongerFile) {
    const ScratchFolder folder;
    Bytes bytes = RecordOfLength(6200);
    bytes.push_back(0);
    EXPECT_EQ(LoadFile(folder.Write("longer.fmr", bytes)).status, 2);
    Bytes shorter = RecordOfLength(200);
    shorter.push_back(0);
    EXPECT_EQ(LoadFile(folder.Write("shorter.fmr", shorter)).status, 2);
}

TEST(LoadTemplateFromFile, ReadsEveryByteAsItStands) {
    // 0x1A ends, and CR LF shortens, a file that Windows reads as text.
    const ScratchFolder folder;
    const Bytes record = BuildRecord({{.x = 26, .y = 0x0D0A, .angleByte = 0x1A},
                                      {.x = 0x0A0D, .y = 26, .angleByte = 0x0D},
                                      {.x = 300, .y = 0x1A1A, .angleByte = 0x0A}});
    const std::string path = folder.Write("bytes.fmr", record);
    FullLoadedTemplate loaded;
    std::string message;
    ASSERT_EQ(loadTemplateFromFile(path, 2, 4, loaded, message), 0);
    EXPECT_EQ(loaded.fingers.at(0).minutiae.at(0).y, 0x0D0A);
    EXPECT_EQ(loaded.fingers.at(0).minutiae.at(2).y, 0x1A1A);
}

TEST(IdentityFromFileName, IsTheTextBetweenTheFirstTwoUnderscores) {
    constexpr struct {
        const char* path;
        const char* text;
        const char* why;
    } kCases[] = {
        {"print_0042_left", "0042", "no extension"},
        {"print_0042_left.fmr", "0042", "an extension"},
        {"print_0042_left.tar.gz", "0042", "only the last extension goes"},
        {"a_b_c", "b", "one byte each"},
        {"a_b_c_d", "b", "later underscores stand in the rest"},
        {"a_b__", "b", "an underscore is text after the second"},
        {"/data/x_9_y/print_0042_left", "0042", "folders do not count"},
        {"C:\\data\\print_0042_left", "0042", "either separator"},
        {"a/b\\print_0042_left", "0042", "both separators"},
        {"a\\b/print_0042_left", "0042", "both separators, the other way round"},
        {"a_b.c_d_e.fmr", "b.c", "an earlier point is text"},
        {"a b_ c _d", " c ", "blanks are text"},
    };
    for (const auto& c : kCases) {
        std::string text = "left over";
        EXPECT_TRUE(identityFromFileName(c.path, text)) << c.path << ": " << c.why;
        EXPECT_EQ(text, c.text) << c.path << ": " << c.why;
    }
}

TEST(IdentityFromFileName, IsMissingWithoutTextBeforeBetweenAndAfter) {
    constexpr struct {
        const char* path;
        const char* why;
    } kCases[] = {
        {"", "no name"},
        {"a", "no underscore"},
        {"_", "one underscore"},
        {"a_b", "one underscore"},
        {"a_b_", "nothing follows the second"},
        {"_x_y", "nothing precedes the first"},
        {"folder/_x_y", "nothing but the folder's separator precedes the first"},
        {"a__b", "nothing between"},
        {"a__b_c", "the next underscore counts, not a later one"},
        {"___", "underscores alone"},
        {"a_b_.fmr", "the extension is no text after the second"},
        {"a_b.c_d", "the second underscore is in the extension"},
        {".a_b_c", "the extension begins at a leading point, too"},
        {"print_0042_left/", "no name behind the last separator"},
        {"print_0042_left\\", "no name behind the last separator"},
        {"x_1_y/.", "a name of one point"},
        {"x_1_y/..", "a name of two points"},
    };
    for (const auto& c : kCases) {
        std::string text = "left over";
        EXPECT_FALSE(identityFromFileName(c.path, text)) << c.path << ": " << c.why;
        EXPECT_EQ(text, "left over") << c.path;
    }
}

}  // namespace
}  // namespace orl::matcher
