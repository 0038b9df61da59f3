#include "media/containers/boxes/film.h"

#include <random>

#include "media/containers/box_fixture.h"
#include "media/containers/xmp_packets.h"

namespace zephmetadata::media {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using Strings = std::vector<std::string>;

const std::string kBrand = BoxBytes("ftyp", "isom\0\0\0\0isom"s);
const std::string kSound = "the samples of the film";
const std::string kIndex = BoxBytes("mfra", BoxBytes("mfro", "\0\0\0\0\0\0\0\x18"s));

std::string PacketBox(std::string_view packet) {
    return UuidBoxBytes(kXMPUuid, packet);
}
std::string Header(const std::string& fields) {
    return BoxBytes("mvhd", fields + std::string(80, '\0'));
}
std::string Header32(std::uint32_t created, std::uint32_t modified, std::uint32_t scale, std::uint32_t duration) {
    return Header(NumberBytes(0, 4) + NumberBytes(created, 4) + NumberBytes(modified, 4) + NumberBytes(scale, 4) +
                  NumberBytes(duration, 4));
}
std::string Header64(std::uint64_t created, std::uint64_t modified, std::uint32_t scale, std::uint64_t duration) {
    return Header("\1\0\0\0"s + NumberBytes(created, 8) + NumberBytes(modified, 8) + NumberBytes(scale, 4) +
                  NumberBytes(duration, 8));
}
std::string Chunks(const std::string& type, std::uint64_t offset) {
    const std::size_t width = type == "stco" ? 4 : 8;
    return BoxBytes(
        type, NumberBytes(0, 4) + NumberBytes(2, 4) + NumberBytes(offset, width) + NumberBytes(offset + 4, width));
}
std::string UserData(const std::string& boxes, bool hasEndMark = false) {
    return BoxBytes("udta", boxes + std::string(hasEndMark ? 4 : 0, '\0'));
}
std::string Movie(const std::string& userData, std::uint64_t chunk, const std::string& type = "stco") {
    const std::string table = BoxBytes("minf", BoxBytes("stbl", Chunks(type, chunk)));
    return BoxBytes("moov", Header32(1, 1, 1, 1) + BoxBytes("trak", BoxBytes("mdia", table)) + userData);
}

/// A film that begins with its movie or with its samples; the chunk offsets of the movie are those of the samples.
std::string Film(const std::string& userData, const std::string& between, const std::string& after,
                 bool isMovieFirst = true, const std::string& type = "stco") {
    const std::string samples = BoxBytes("mdat", kSound);
    if (!isMovieFirst) {
        return kBrand + between + samples + Movie(userData, (kBrand + between).size() + 8, type) + after;
    }
    const std::size_t before = (kBrand + Movie(userData, 0, type) + between).size();
    return kBrand + Movie(userData, before + 8, type) + between + samples + after;
}

struct EditCase {
    const char* mName;
    std::string mFile;
    std::string mXMP;
    Strings mSmall;    ///< the boxes after an edit with a packet of a few bytes more
    Strings mLarge;    ///< and after one that no room suffices for
    Strings mRemoved;  ///< and when that one is removed
};

class FilmTest : public testing::TestWithParam<EditCase> {};

TEST_P(FilmTest, ReadsEditsAndRemoves) {
    const Container& film = FilmContainer();
    const EditCase& each = GetParam();
    ASSERT_TRUE(IsFilm(each.mFile));
    ASSERT_FALSE(IsCR3(each.mFile));
    EXPECT_THAT(film.References(MemorySource(each.mFile)), SizeIs(2));
    EXPECT_EQ(XMPOf(film, each.mFile), each.mXMP);

    const std::string small = Edited(film, each.mFile, NewXMP(Element("small")));
    EXPECT_THAT(XMPOf(film, small), HasSubstr(Element("small")));
    EXPECT_EQ(BoxTypes(small), each.mSmall);
    // The packet now has room: an edit in place.
    EXPECT_EQ(Edited(film, small, NewXMP(Element("small", 99))).size(), small.size());

    const std::string large = Edited(film, small, NewXMP(Element("large", 9000)));
    EXPECT_THAT(XMPOf(film, large), HasSubstr(Element("large", 9000)));
    EXPECT_EQ(BoxTypes(large), each.mLarge);
    EXPECT_THAT(large, HasSubstr(kSound));

    const std::string removed = Edited(film, large, NewXMP(""));
    EXPECT_EQ(XMPOf(film, removed), "<none>");
    EXPECT_EQ(BoxTypes(removed), each.mRemoved);
    EXPECT_THAT(removed, testing::Not(HasSubstr("xmpmeta")));
}

const std::string kOld = Element("old");

INSTANTIATE_TEST_SUITE_P(
    Files, FilmTest,
    testing::Values(EditCase{"Nothing",
                             Film("", "", ""),
                             "<none>",
                             {"ftyp", "moov", "mdat", "uuid"},
                             {"ftyp", "moov", "mdat", "uuid"},
                             {"ftyp", "moov", "mdat"}},
                    EditCase{"PacketAtTheEnd",
                             Film("", "", PacketBox(kOld), false, "co64"),
                             kOld,
                             {"ftyp", "mdat", "moov", "uuid"},
                             {"ftyp", "mdat", "moov", "uuid"},
                             {"ftyp", "mdat", "moov"}},
                    EditCase{"PacketBeforeTheSamples",
                             Film("", PacketBox(kOld), "", true, "co64"),
                             kOld,
                             {"ftyp", "moov", "free", "mdat", "uuid"},
                             {"ftyp", "moov", "free", "mdat", "uuid"},
                             {"ftyp", "moov", "free", "mdat"}},
                    EditCase{"RoomBeforeTheSamples",
                             Film("", PacketBox(WrappedPacket(kOld)), ""),
                             WrappedPacket(kOld),
                             {"ftyp", "moov", "uuid", "mdat"},
                             {"ftyp", "moov", "free", "mdat", "uuid"},
                             {"ftyp", "moov", "free", "mdat"}},
                    EditCase{"UserDataAtTheEnd",
                             Film(UserData(BoxBytes("XMP_", kOld) + BoxBytes("name", "x"), true), "", "", false),
                             kOld,
                             {"ftyp", "mdat", "moov"},
                             {"ftyp", "mdat", "moov"},
                             {"ftyp", "mdat", "moov"}},
                    EditCase{"UserDataBeforeTheSamples",
                             Film(UserData(BoxBytes("XMP_", kOld), true), "", ""),
                             kOld,
                             {"ftyp", "moov", "mdat", "uuid"},
                             {"ftyp", "moov", "mdat", "uuid"},
                             {"ftyp", "moov", "mdat"}},
                    EditCase{"IndexOfFragments",
                             Film("", "", kIndex),
                             "<none>",
                             {"ftyp", "moov", "mdat", "uuid", "mfra"},
                             {"ftyp", "moov", "mdat", "uuid", "mfra"},
                             {"ftyp", "moov", "mdat", "mfra"}},
                    EditCase{"OpenEnd",
                             Film("", "", "").substr(0, Film("", "", "").size() - kSound.size() - 8) +
                                 OpenBox("mdat", kSound),
                             "<none>",
                             {"ftyp", "moov", "mdat", "uuid"},
                             {"ftyp", "moov", "mdat", "uuid"},
                             {"ftyp", "moov", "mdat"}},
                    EditCase{"OpenEndIsThePacket",
                             Film("", "", OpenBox("uuid", std::string(kXMPUuid) + kOld)),
                             kOld,
                             {"ftyp", "moov", "mdat", "uuid"},
                             {"ftyp", "moov", "mdat", "uuid"},
                             {"ftyp", "moov", "mdat"}},
                    EditCase{"ZerosAtTheEnd",
                             Film("", "", std::string(12, '\0')),
                             "<none>",
                             {"ftyp", "moov", "mdat", "uuid"},
                             {"ftyp", "moov", "mdat", "uuid"},
                             {"ftyp", "moov", "mdat"}}),
    [](const auto& instance) { return std::string(instance.param.mName); });

TEST(FilmFileTest, RepeatedEditsDoNotGrowTheFile) {
    for (std::string file : {Film("", "", kIndex), Film(UserData(BoxBytes("XMP_", kOld)), "", "", false)}) {
        const std::size_t most = file.size() + 3 * kPacketPadding;
        for (const std::size_t size : {1U, 30000U, 5U, 90000U, 1U}) {
            file = Edited(FilmContainer(), file, NewXMP(Element("v", size)));
            EXPECT_LE(file.size(), most + size);
        }
    }
}

constexpr std::string_view kXMPNamespace = "http://ns.adobe.com/xap/1.0/";

std::string FieldsText(const std::string& movie) {
    std::string text;
    for (const NativeValue& value : ReadFile(FilmContainer(), kBrand + BoxBytes("moov", movie)).mValues) {
        text.append(value.mProperty);
        for (const NativeItem& item : value.mItems) {
            text.append(" " + item.mName + "=" + item.mText);
        }
        text += "; ";
    }
    return text;
}

std::string Rights(std::uint64_t language, const std::string& text) {
    return BoxBytes("cprt", NumberBytes(0, 4) + NumberBytes(language, 2) + text);
}

/// A metadata box with keys and their values; @p head stands before its boxes.
std::string Keys(const std::vector<std::pair<std::string, std::string>>& texts, const std::string& head = "") {
    std::string names = NumberBytes(0, 4) + NumberBytes(texts.size(), 4);
    std::string values;
    std::uint32_t index = 0;
    for (const auto& [key, text] : texts) {
        names += BoxBytes("mdta", "com.apple.quicktime." + key);
        values += BoxBytes(NumberBytes(++index, 4), BoxBytes("data", NumberBytes(1, 4) + NumberBytes(0, 4) + text));
    }
    return BoxBytes("meta", head + BoxBytes("hdlr", std::string(24, '\0')) + BoxBytes("keys", names) +
                                BoxBytes("ilst", values + BoxBytes(NumberBytes(9, 4), "")));
}

TEST(FilmFileTest, HeaderCopyrightAndKeysAreValues) {
    constexpr std::uint32_t kIn2020 = 3660681600;  // 2020-01-01T00:00:00Z in seconds since 1904
    constexpr std::uint64_t kIn2100 = 6185289600;
    const std::string none = Header32(0, 0, 0, 0);
    const std::vector<std::pair<std::string, std::string>> cases = {
        {Header32(kIn2020, kIn2020 + 86399, 600, 1200),
         "CreateDate =2020-01-01T00:00:00Z; ModifyDate =2020-01-01T23:59:59Z; "
         "duration xmpDM:value=1200 xmpDM:scale=1/600; "},
        {Header64(kIn2100, kIn2020, 1000, 0x100000000U),
         "CreateDate =2100-01-01T00:00:00Z; ModifyDate =2020-01-01T00:00:00Z; "
         "duration xmpDM:value=4294967296 xmpDM:scale=1/1000; "},
        {none, ""},
        {Header32(0, kIn2020, 1, 0xFFFFFFFF), "ModifyDate =2020-01-01T00:00:00Z; "},
        {Header64(~std::uint64_t{0}, 0, 1, ~std::uint64_t{0}), ""},
        {BoxBytes("mvhd", std::string(4, '\0')), ""},
        {BoxBytes("mvhd", ""), ""},
        {Keys({{"make", "Lumenta"},
               {"model", "L40"},
               {"software", "3.2"},
               {"creationdate", "2019-07-24T11:25:40+0300"}}),
         "Make =Lumenta; Model =L40; CreatorTool =3.2; shotDate =2019-07-24T11:25:40+03:00; "},
        {Keys({{"location.ISO6709", "+32.0929-034.8620+028.516/"}}, std::string(4, '\0')),
         "GPSLatitude =32,5.574000N; GPSLongitude =34,51.720000W; GPSAltitude =28516/1000; GPSAltitudeRef =0; "},
        {UserData(BoxBytes("\xA9xyz", NumberBytes(18, 2) + NumberBytes(0x15C7, 2) + "-51.4169-000.0806/")),
         "GPSLatitude =51,25.014000S; GPSLongitude =0,4.836000W; "},
        {Keys({{"location.ISO6709", "+3205.5-03451.7/"}, {"creationdate", "soon"}, {"make", ""}}), ""},
        {BoxBytes("meta", BoxBytes("hdlr", "") + BoxBytes("ilst", BoxBytes(NumberBytes(1, 4), "data"))), ""},
        {none + UserData(Rights(0x15C7, "Me\0"s)), "rights x-default=Me en=Me; "},  // eng
        {none + UserData(Rights(0x10B5, "Ich") + Rights(0x15C7, "Me")),             // deu
         "rights x-default=Ich de=Ich en=Me; "},
        {none + UserData(Rights(0x55C4, "Me")), "rights x-default=Me; "},         // und
        {none + UserData(Rights(0, "M\xE9 ")), "rights x-default=M\xC3\xA9; "},   // no language, no UTF-8
        {none + UserData(Rights(0x1DF4, "Me")), "rights x-default=Me got=Me; "},  // no short tag
        {none + UserData(Rights(0x15C7, "\xFE\xFF\0M"s) + Rights(0x15C7, "") + BoxBytes("cprt", "")), ""},
        {none + Rights(0x15C7, "beside the user data"), ""},
    };
    for (const auto& [movie, text] : cases) {
        EXPECT_EQ(FieldsText(movie), text);
    }
    EXPECT_EQ(ReadFile(FilmContainer(), kBrand + BoxBytes("moov", Header32(1, 0, 0, 0))).mValues.at(0).mNamespace,
              kXMPNamespace);
}

const std::string kEverything = Film(UserData(Rights(0x15C7, "Me") + BoxBytes("XMP_", kOld), true), "", kIndex);

TEST(FilmFileTest, CutFilesAreDamagedAndNotWritten) {
    const Container& film = FilmContainer();
    const std::size_t movieEnd = kEverything.find("mdat") - 4;
    for (std::size_t size = 0; size < kEverything.size(); ++size) {
        // Between two boxes behind the movie a cut cannot be told from the end.
        const bool isSound = size == movieEnd || size == kEverything.size() - kIndex.size();
        const std::string cut = kEverything.substr(0, size);
        const auto expected = isSound ? FileStatus::kFileStatus_Success : FileStatus::kFileStatus_DamagedFile;
        EXPECT_EQ(ReadFile(film, cut).mStatus, expected) << size;
        EXPECT_EQ(StatusOfEdit(film, cut, NewXMP(Element("new"))), expected) << size;
    }
}

TEST(FilmFileTest, DamageIsSurvivedAndWhatIsWrittenReadsBack) {
    std::mt19937 random(1);
    const std::string element = Element("new", 3000);
    std::size_t written = 0;
    for (int round = 0; round < 5000; ++round) {
        std::string file = kEverything;
        for (unsigned flips = 1 + static_cast<unsigned>(random() % 3); flips > 0; --flips) {
            file[random() % file.size()] ^= static_cast<char>(1U << random() % 8);
        }
        const auto source = Source(file);
        EXPECT_THAT(FilmContainer().References(*source), SizeIs(testing::Le(20U)));
        const PlannedEdit edit = FilmContainer().PlanEdit(source, NewXMP(element));
        ASSERT_EQ(edit.mStatus == FileStatus::kFileStatus_Success,
                  FilmContainer().Read(source).mStatus == FileStatus::kFileStatus_Success);
        if (edit.mStatus == FileStatus::kFileStatus_Success) {
            ++written;
            EXPECT_THAT(XMPOf(FilmContainer(), Carried(edit.mPlan, *source).value_or("")), HasSubstr(element)) << round;
        }
    }
    EXPECT_GT(written, 1000U);
}

TEST(FilmFileTest, RawPicturesHaveTheirDirectoriesInStreams) {
    const std::string canon = "\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48";
    const std::string streams = BoxBytes("CNCV", "version") + BoxBytes("CMT1", "main") + BoxBytes("CMT2", "exif") +
                                BoxBytes("CMT3", "notes") + BoxBytes("CMT4", "gps");
    const std::string brand = BoxBytes("ftyp", "crx \0\0\0\1crx isom"s);
    const std::string file =
        brand + BoxBytes("moov", UuidBoxBytes(canon, streams) + Header32(1, 1, 1, 1)) + PacketBox(kOld);
    ASSERT_TRUE(IsCR3(file));
    const FileBlocks blocks = ReadFile(CR3Container(), file);
    Strings found;
    for (const ExifStream& stream : blocks.mExif) {
        found.push_back(ReadRange(*stream.mSource, {0, stream.mSource->Size()}).value_or("") +
                        std::to_string(static_cast<int>(stream.mFirst)));
    }
    EXPECT_THAT(found, ElementsAre("main0", "exif1", "gps2"));
    EXPECT_EQ(blocks.mXMP, kOld);
    EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success);
    EXPECT_EQ(StatusOfEdit(CR3Container(), file, NewXMP(kOld)), FileStatus::kFileStatus_CannotCarryXMP);
    for (std::size_t size = 0; size < file.size() - PacketBox(kOld).size(); ++size) {
        EXPECT_EQ(ReadFile(CR3Container(), file.substr(0, size)).mStatus, FileStatus::kFileStatus_DamagedFile);
    }
    // The same box elsewhere is another maker's.
    EXPECT_THAT(ReadFile(CR3Container(), brand + UuidBoxBytes(canon, streams)).mExif, IsEmpty());
}

}  // namespace
}  // namespace zephmetadata::media
