#include "media/containers/sound/mp3.h"

#include <random>

#include "media/containers/box_fixture.h"

namespace zephmetadata::media {
namespace {

using namespace std::string_literals;
using testing::HasSubstr;

const std::string kSound = "\xFF\xFB\x90\x44 sound "s + std::string(300, '\xFF') + "TAG of the first version";

std::string SyncSafe(std::size_t value) {
    return {static_cast<char>(value >> 21U & 0x7FU), static_cast<char>(value >> 14U & 0x7FU),
            static_cast<char>(value >> 7U & 0x7FU), static_cast<char>(value & 0x7FU)};
}
std::string Tag(char version, const std::string& frames, std::size_t padding = 0, char flags = 0) {
    return "ID3"s + version + '\0' + flags + SyncSafe(frames.size() + padding) + frames + std::string(padding, '\0');
}
/// A frame with a plain size, as ID3v2.3 has it, and one with a size of seven-bit bytes.
std::string Plain(const std::string& id, const std::string& data, std::uint64_t flags = 0) {
    return id + NumberBytes(data.size(), 4) + NumberBytes(flags, 2) + data;
}
std::string Safe(const std::string& id, const std::string& data, std::uint64_t flags = 0) {
    return id + SyncSafe(data.size()) + NumberBytes(flags, 2) + data;
}
std::string Owned(const std::string& packet) {
    return "XMP\0"s + packet;
}

const std::string kOld = WrappedPacket(Element("old"), 700);
const std::string kOther = "PRIV of others: \0\1\2"s;

struct EditCase {
    const char* mName;
    std::string mTag;
    std::string mXMP;
    std::int64_t mMoreForSmall;  ///< bytes that the file grows by with a packet that fits where there is room
};

constexpr std::int64_t kAnything = -1;

class MP3Test : public testing::TestWithParam<EditCase> {};

TEST_P(MP3Test, ReadsEditsAndRemoves) {
    const Container& mp3 = MP3Container();
    const EditCase& each = GetParam();
    const std::string file = each.mTag + kSound;
    ASSERT_TRUE(IsMP3(file));
    EXPECT_EQ(XMPOf(mp3, file), each.mXMP);
    EXPECT_EQ(ReadFile(mp3, file).mWhyReadOnly, "");

    const std::string small = Edited(mp3, file, NewXMP(Element("small")));
    if (each.mMoreForSmall != kAnything) {
        EXPECT_EQ(small.size(), file.size() + static_cast<std::size_t>(each.mMoreForSmall));
    }
    std::string edited = small;
    for (const std::size_t size : {90U, 20000U, 1U, 400000U, 5U}) {
        edited = Edited(mp3, edited, NewXMP(Element("large", size)));
        EXPECT_THAT(XMPOf(mp3, edited), HasSubstr(Element("large", size)));
        EXPECT_LE(edited.size(), file.size() + size + 3 * kPacketPadding);
        EXPECT_TRUE(edited.ends_with(kSound));
        EXPECT_EQ(ReadFile(mp3, edited).mValues, ReadFile(mp3, file).mValues);
        EXPECT_EQ(edited.find(kOther) == std::string::npos, file.find(kOther) == std::string::npos);
    }
    const std::string removed = Edited(mp3, edited, NewXMP(""));
    EXPECT_EQ(XMPOf(mp3, removed), "<none>");
    EXPECT_TRUE(removed.ends_with(kSound));
    EXPECT_EQ(ReadFile(mp3, removed).mValues, ReadFile(mp3, file).mValues);
    EXPECT_EQ(Edited(mp3, removed, NewXMP("")), removed);
}

const std::string kTitle("TIT2\0\0\0\2\0\0\0T", 12);
const std::string kLong = "\0"s + std::string(200, 'a');  // its size differs between the two forms
const std::string kZeros = "\0"s + std::string(116, 'a') + std::string(300, '\0') + "x";

INSTANTIATE_TEST_SUITE_P(
    Files, MP3Test,
    testing::Values(
        EditCase{"NoTag", "", "<none>", kAnything}, EditCase{"EmptyTag", Tag(3, ""), "<none>", kAnything},
        EditCase{"Padding", Tag(3, kTitle, 4000), "<none>", 0},
        EditCase{"PaddingTooSmall", Tag(4, kTitle, 90), "<none>", kAnything},
        EditCase{"PacketFits", Tag(3, Plain("PRIV", kOther) + Plain("PRIV", Owned(kOld)) + kTitle), kOld, 0},
        EditCase{"PacketFitsIn4", Tag(4, Safe("TPE1", kLong) + Safe("PRIV", Owned(kOld)) + kTitle, 20), kOld, 0},
        EditCase{"PlainSizesIn4", Tag(4, Plain("TPE1", kLong) + Plain("PRIV", Owned(kOld)) + kTitle), kOld, 0},
        EditCase{"PlainSizesAndZeros", Tag(4, Plain("TPE1", kZeros) + Plain("PRIV", Owned(kOld))), kOld, 0},
        EditCase{"PacketGrows", Tag(3, Plain("PRIV", Owned(Element("old"))) + kTitle, 5000), Element("old"), 0},
        EditCase{"PacketOfNothing", Tag(3, Plain("PRIV", Owned("")) + Plain("PRIV", kOther)), "", kAnything}),
    [](const auto& instance) { return std::string(instance.param.mName); });

TEST(MP3FileTest, WhatCannotBeWrittenIsReadOnlyAndWhatIsCutIsDamaged) {
    const std::string frames = Plain("PRIV", Owned(kOld));
    struct Row {
        std::string mFile;
        FileStatus mStatus;
        bool mIsReadOnly;
        std::string mXMP;
    };
    using enum FileStatus;
    const std::vector<Row> rows = {
        {Tag(2, "TT2\0\0\2\0T"s) + kSound, kFileStatus_Success, true, "<none>"},
        {Tag(1, frames) + kSound, kFileStatus_Success, true, "<none>"},
        {Tag(5, frames) + kSound, kFileStatus_Success, true, "<none>"},
        {Tag(3, frames, 0, '\x80') + kSound, kFileStatus_Success, true, "<none>"},
        {Tag(3, "\0\0\0\6\0\0\0\0\0\0"s + frames, 0, '\x40') + kSound, kFileStatus_Success, true, kOld},
        {Tag(4, "\0\0\0\6\1\0"s + Safe("PRIV", Owned(kOld)), 0, '\x40') + kSound, kFileStatus_Success, true, kOld},
        {Tag(4, "\x7F\0\0\6\1\0"s, 0, '\x40') + kSound, kFileStatus_DamagedFile, true, "<none>"},
        {Tag(4, Safe("PRIV", Owned(kOld)), 0, '\x10') + kSound, kFileStatus_Success, true, kOld},
        {Tag(3, frames + "junk behind the frames") + kSound, kFileStatus_DamagedFile, false, kOld},
        {Tag(3, "PRIV\xFF\xFF\xFF\xFF\0\0XMP"s) + kSound, kFileStatus_DamagedFile, false, "<none>"},
    };
    for (const Row& row : rows) {
        const FileBlocks blocks = ReadFile(MP3Container(), row.mFile);
        const auto at = &row - rows.data();
        EXPECT_EQ(blocks.mStatus, row.mStatus) << at;
        EXPECT_EQ(!blocks.mWhyReadOnly.empty(), row.mIsReadOnly) << at;
        EXPECT_EQ(blocks.mXMP.value_or("<none>"), row.mXMP) << at;
    }
    const std::string tag = Tag(3, kTitle + frames, 50);
    for (std::size_t size = 3; size < tag.size(); ++size) {
        EXPECT_EQ(ReadFile(MP3Container(), tag.substr(0, size)).mStatus, kFileStatus_DamagedFile) << size;
    }
}

TEST(MP3FileTest, DamageIsSurvivedAndWhatIsWrittenReadsBack) {
    const std::string sound = Tag(4, Safe("TPE1", kLong) + Safe("PRIV", Owned(kOld)) + kTitle, 20) + kSound;
    const std::string element = Element("new", 3000);
    std::mt19937 random(1);
    std::size_t written = 0;
    for (int round = 0; round < 5000; ++round) {
        std::string file = sound;
        for (unsigned flips = 1 + static_cast<unsigned>(random() % 3); flips > 0; --flips) {
            file[random() % (flips == 1 ? 300 : file.size())] ^= static_cast<char>(1U << random() % 8);
        }
        const FileBlocks blocks = ReadFile(MP3Container(), file);
        if (blocks.mStatus == FileStatus::kFileStatus_Success && blocks.mWhyReadOnly.empty()) {
            ++written;
            EXPECT_THAT(XMPOf(MP3Container(), Edited(MP3Container(), file, NewXMP(element))), HasSubstr(element));
        }
    }
    EXPECT_GT(written, 1000U);
}

TEST(MP3FileTest, TextFramesAreValues) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {Plain("TIT2", "\0A\xE9"s), "title x-default=A\xC3\xA9; "},
        {Plain("TPE1", "\1\xFF\xFE\xE9\0\x3D\xD8\0\xDE"s), "artist =\xC3\xA9\xF0\x9F\x98\x80; "},
        {Plain("TALB", "\1\xFE\xFF\0A\xD8\0\0B"s),
         "album =A\xEF\xBF\xBD"
         "B; "},
        {Plain("TCOM", "\2\0A\0B\0\0\0C"s), "composer =AB; "},
        {Plain("TCON", "\3\xC3\xA9\0second"s), "genre =\xC3\xA9; "},
        {Plain("TENG", "\3not \xC3 UTF-8"s), "engineer =not \xC3\x83 UTF-8; "},
        {Plain("TRCK",
               "\0"
               "7"s) +
             Plain("TRCK",
                   "\0"
                   "8"s),
         "trackNumber =7; "},
        {Plain("TCOP",
               "\0"
               "2020 Me"s,
               0xE000),
         "rights x-default=2020 Me; "},  // status flags alone
        {Plain("TCOP",
               "\0"
               "2020 Me"s,
               0x0080),
         ""},  // compressed
        {Plain("TYER",
               "\0"
               "1999"s),
         "CreateDate =1999; "},
        {Plain("TDRC",
               "\0"
               "last year"s) +
             Plain("TYER",
                   "\0"
                   "1999"s),
         "CreateDate =1999; "},
        {Plain("COMM", "\0engabout\0said"s), "logComment =said; "},
        {Plain("COMM",
               "\1eng\xFF\xFE"
               "a\0\0\0\xFF\xFEs\0"s),
         "logComment =s; "},
        {Plain("COMM", "\0en"s) + Plain("COMM", "\0engno end"s) + Plain("TIT2", "") + Plain("TPE1", "\0"s), ""},
        {Plain("WCOP", "https://example.org/"), "WebStatement =https://example.org/; "},
        {Plain("TXXX", "\0other"s), ""},
    };
    for (const auto& [frames, expected] : cases) {
        std::string text;
        for (const NativeValue& value : ReadFile(MP3Container(), Tag(3, frames) + kSound).mValues) {
            text.append(value.mProperty).append(" ").append(value.mItems.at(0).mName);
            text.append("=").append(value.mItems.at(0).mText).append("; ");
        }
        EXPECT_EQ(text, expected);
    }
}

}  // namespace
}  // namespace zephmetadata::media
