#include "media/containers/chunks/riff.h"

#include "chunk_files.h"

namespace zephmetadata::media {
namespace {

using namespace chunk_files;

const std::string kFormat = RiffChunk("fmt ", "format");
const std::string kData = RiffChunk("data", "samples");
const std::string kFilm = RiffChunk("LIST", "hdrlheaders") + RiffChunk("LIST", "movi00dcframes");
const std::string kIndex = RiffChunk("idx1", "index");
const std::string kFurther = Riff("AVIX", RiffChunk("LIST", "movi00dcmore"));
const std::string kNew = RiffChunk("_PMX", WrappedPacket(kElement));

std::string Packet(const std::string& text) {
    return RiffChunk("_PMX", text);
}
std::string Wave(const std::string& chunks) {
    return Riff("WAVE", kFormat + chunks);
}
std::string Film(const std::string& chunks) {
    return Riff("AVI ", chunks);
}
std::string Info(const std::string& fields) {
    return RiffChunk("LIST", "INFO" + fields);
}
/// A file whose sizes stand in its first chunk.
std::string LongWave(const std::string& type, const std::string& chunks) {
    const auto number = [](std::uint64_t value) { return NumberBytes(value, 8, ByteOrder::kLittle); };
    const std::string ones = Bytes("\xFF\xFF\xFF\xFF");
    const std::string tail = kFormat + "data" + ones + "samples" + '\0' + "long" + ones + Bytes("x\0") + chunks;
    const std::uint64_t size = 4 + 8 + 40 + tail.size();
    return type + ones + "WAVE" +
           RiffChunk("ds64", number(size) + number(7) + number(3) + Bytes("\1\0\0\0long") + number(1)) + tail;
}

struct EditCase {
    const char* mName;
    std::string mFile;
    std::optional<std::string> mXMP;
    std::string mResult;
};

class RiffEditTest : public testing::TestWithParam<EditCase> {};

TEST_P(RiffEditTest, NeverMovesFilmOrSound) {
    const std::string& file = GetParam().mFile;
    ASSERT_TRUE(IsRiff(file));
    const FileBlocks blocks = ReadBytes(RiffContainer(), file);
    EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success);
    EXPECT_EQ(blocks.mXMP, GetParam().mXMP);
    const std::string edited = Edited(RiffContainer(), file, NewPacket());
    EXPECT_EQ(edited, GetParam().mResult);
    const std::vector<Range> streams = RiffContainer().References(MemorySource(file));
    EXPECT_FALSE(streams.empty());
    EXPECT_EQ(RiffContainer().References(MemorySource(edited)), streams);
}

const std::string kRoomy = WrappedPacket("old", 500);

INSTANTIATE_TEST_SUITE_P(
    Files, RiffEditTest,
    testing::Values(EditCase{"NewInSound", Wave(kData) + "trailer", {}, Wave(kData + kNew) + "trailer"},
                    EditCase{"NewInFilm", Film(kFilm + kIndex), {}, Film(kFilm + kIndex + kNew)},
                    EditCase{"NewInLongFilm",
                             Film(kFilm) + kFurther,
                             {},
                             Film(kFilm) + Riff("AVIX", RiffChunk("LIST", "movi00dcmore") + kNew)},
                    EditCase{"RoomBefore", Wave(Packet(kRoomy) + kData), kRoomy,
                             Wave(Packet(WrappedPacket(kElement, 500)) + kData)},
                    EditCase{"NoRoomBefore", Film(Packet("old") + kFilm), "old",
                             Film(RiffChunk("JUNK", Bytes("\0\0\0")) + kFilm + kNew)},
                    EditCase{"NoRoomBehind", Wave(kData + Packet("old") + kIndex), "old", Wave(kData + kNew + kIndex)},
                    EditCase{"BetweenFilms", Film(kFilm + Packet("old")) + kFurther, "old",
                             Film(kFilm + RiffChunk("JUNK", Bytes("\0\0\0"))) +
                                 Riff("AVIX", RiffChunk("LIST", "movi00dcmore") + kNew)},
                    EditCase{"LongSizes", LongWave("RF64", Packet("old")), "old", LongWave("RF64", kNew)},
                    EditCase{"OtherLongSizes", LongWave("BW64", ""), {}, LongWave("BW64", kNew)}),
    [](const auto& instance) { return std::string(instance.param.mName); });

TEST(RiffTest, CutFilesAreDamagedAndRepeatedEditsDoNotGrow) {
    for (const std::string& file : {Wave(Info("") + Packet("old") + kData), LongWave("RF64", Packet("a"))}) {
        ExpectCutsToBeFound(RiffContainer(), file, file.size());
        ExpectNoGrowth(RiffContainer(), file, file.size() + kPacketPadding + 300);
    }
}

TEST(RiffTest, FilesWrittenToAPipeAreReadOnly) {
    std::string file = Wave(Info(RiffChunk("IART", "a")) + kData);
    for (const char* size : {"\xFF\xFF\xFF\xFF", "\0\0\0\0"}) {
        file.replace(4, 4, size, 4);
        const FileBlocks blocks = ReadBytes(RiffContainer(), file);
        EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success);
        EXPECT_NE(blocks.mWhyReadOnly, "");
        EXPECT_EQ(blocks.mValues.size(), 1U);
        EXPECT_EQ(Edited(RiffContainer(), file, NewPacket()), "");
    }
}

struct ValueCase {
    std::string mChunks;
    std::string mInSound;
    std::string mInFilms;
};

std::string Texts(const std::string& file) {
    std::string texts;
    for (const NativeValue& value : ReadBytes(RiffContainer(), file).mValues) {
        texts += std::string(value.mProperty) + "=";
        for (const NativeItem& item : value.mItems) {
            texts += item.mName + (item.mName.empty() ? "" : ":") + item.mText + ";";
        }
    }
    return texts;
}

TEST(RiffTest, TextFieldsAreValues) {
    const auto field = [](const char* type, const std::string& text) { return RiffChunk(type, text); };
    const std::vector<ValueCase> cases = {
        {Info(field("IART", Bytes("\xC3\x98\0rest"))), "artist=\xC3\x98;", "artist=\xC3\x98;"},
        {Info(field("IGNR", "\xD8")), "genre=\xC3\x98;", "genre=\xC3\x98;"},
        {Info(field("IART", "one") + field("IART", "two")), "artist=two;", "artist=two;"},
        {Info(field("INAM", "a")), "title=x-default:a;name=x-default:a;", "title=x-default:a;"},
        {Info(field("INAM", "a")) + field("DISP", Bytes("\1\0\0\0b\0")), "title=x-default:b;name=x-default:a;",
         "title=x-default:b;"},
        {Info(field("INAM", "a")) + field("DISP", Bytes("\x8\0\0\0picture")), "title=x-default:a;name=x-default:a;",
         "title=x-default:a;"},
        {Info(field("IKEY", "a; b c ,,d")) + Info(field("ISRF", "e;f")), "type=e;f;subject=a;b c;d;", "type=e;f;"},
        {Info(field("ICOP", Bytes("\0")) + field("what", "x")), "", ""},
        {Info("IART" + Bytes("\xFF\xFF\xFF\x7F") + "x") + RiffChunk("LIST", "INF"), "", ""},
    };
    for (const ValueCase& each : cases) {
        EXPECT_EQ(Texts(Wave(each.mChunks + kData)), each.mInSound);
        EXPECT_EQ(Texts(Film(each.mChunks + kFilm)), each.mInFilms);
    }
}

}  // namespace
}  // namespace zephmetadata::media
