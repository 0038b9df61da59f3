#include "media/containers/boxes/jpeg_2000.h"

#include "media/containers/box_fixture.h"
#include "media/containers/xmp_packets.h"

namespace zephmetadata::media {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using testing::ElementsAre;
using testing::HasSubstr;

const std::string kHead = BoxBytes("jP  ", "\r\n\x87\n") + BoxBytes("ftyp", "jp2 \0\0\0\0jp2 "sv) +
                          BoxBytes("jp2h", BoxBytes("ihdr", std::string(14, '\1')));
const std::string kPicture = "\xFF\x4F\xFF\x51 picture";
const std::string kTiff("II*\0\x08\0\0\0\0\0\0\0\0\0", 14);
const std::string kGeo = UuidBoxBytes("\xB1\x4B\xF8\xBD\x08\x3D\x4B\x43\xA5\xAE\x8C\xD7\xD5\xA6\xCE\x03", "geo");
const std::string kIIMUuid = "\x33\xC7\xA4\xD2\xB8\x1D\x47\x23\xA0\xBA\xF1\xA3\xE0\x97\xAD\x38";
const std::string kOldExifUuid = "\x05\x37\xCD\xAB\x9D\x0C\x44\x31\xA7\x2A\xFA\x56\x1F\x2A\x11\x3E";

std::string XMPBox(std::string_view text) {
    return UuidBoxBytes(kXMPUuid, text);
}

struct Case {
    const char* mName;
    std::string mBytes;
    std::string mXMP;
    std::string mExif;
    std::vector<std::string> mTypesAfter;  // of an edit of XMP and Exif
};

class Jpeg2000Test : public testing::TestWithParam<Case> {};

TEST_P(Jpeg2000Test, ReadsEditsAndRemoves) {
    const Container& container = Jpeg2000Container();
    const Case& file = GetParam();
    ASSERT_TRUE(IsJpeg2000(file.mBytes));
    EXPECT_EQ(XMPOf(container, file.mBytes), file.mXMP);
    EXPECT_EQ(ExifOf(container, file.mBytes), file.mExif);

    BlockChanges changes = NewArtist("Somebody");
    changes.mXMP = Element("new");
    const std::string edited = Edited(container, file.mBytes, changes);
    EXPECT_THAT(XMPOf(container, edited), HasSubstr(Element("new")));
    EXPECT_EQ(ArtistOf(container, edited), "Somebody");
    EXPECT_EQ(BoxTypes(edited), file.mTypesAfter);
    EXPECT_THAT(edited, HasSubstr(kPicture));

    const std::string removed = Edited(container, edited, NewXMP(""));
    EXPECT_EQ(XMPOf(container, removed), "<none>");
    EXPECT_EQ(ArtistOf(container, removed), "Somebody");
}

INSTANTIATE_TEST_SUITE_P(
    Files, Jpeg2000Test,
    testing::Values(Case{"Nothing",
                         kHead + kGeo + BoxBytes("jp2c", kPicture),
                         "<none>",
                         "<none>",
                         {"jP  ", "ftyp", "jp2h", "uuid", "jp2c", "uuid", "uuid"}},
                    Case{"OpenEnd",
                         kHead + OpenBox("jp2c", kPicture),
                         "<none>",
                         "<none>",
                         {"jP  ", "ftyp", "jp2h", "jp2c", "uuid", "uuid"}},
                    Case{"BothBeforeThePicture",
                         kHead + UuidBoxBytes("JpgTiffExif->JP2", kTiff) + XMPBox(Element("old")) +
                             BoxBytes("xml ", "<gml/>") + OpenBox("jp2c", kPicture),
                         Element("old"),
                         kTiff,
                         {"jP  ", "ftyp", "jp2h", "uuid", "uuid", "xml ", "jp2c"}},
                    Case{"OldExifWithSignature",
                         kHead + BoxBytes("jp2c", kPicture) + UuidBoxBytes(kOldExifUuid, "Exif\0\0"s + kTiff),
                         "<none>",
                         kTiff,
                         {"jP  ", "ftyp", "jp2h", "jp2c", "uuid", "uuid"}},
                    Case{"OpenEndIsXMP",
                         kHead + BoxBytes("jp2c", kPicture) + OpenBox("uuid", std::string(kXMPUuid) + Element("old")),
                         Element("old"),
                         "<none>",
                         {"jP  ", "ftyp", "jp2h", "jp2c", "uuid", "uuid"}}),
    [](const auto& instance) { return std::string(instance.param.mName); });

TEST(Jpeg2000FileTest, NothingMovesWhereBoxesReferToPlaces) {
    const Container& container = Jpeg2000Container();
    const std::string old = kHead + XMPBox(Element("old")) + BoxBytes("ftbl", "places") + BoxBytes("jp2c", kPicture);
    std::string file = Edited(container, old, NewXMP(Element("new", 500)));
    EXPECT_EQ(file.find("places"), old.find("places"));
    EXPECT_EQ(file.find(kPicture), old.find(kPicture));
    EXPECT_THAT(BoxTypes(file), ElementsAre("jP  ", "ftyp", "jp2h", "free", "ftbl", "jp2c", "uuid"));
    file = Edited(container, file, NewXMP(Element("new", 50000)));
    EXPECT_THAT(BoxTypes(file), ElementsAre("jP  ", "ftyp", "jp2h", "free", "ftbl", "jp2c", "uuid"));
    EXPECT_EQ(Edited(container, file, NewXMP("")).size(), old.size());
}

TEST(Jpeg2000FileTest, DatasetsAreReadAndWritten) {
    const std::string file = kHead + UuidBoxBytes(kIIMUuid, "\x1C\x02\x5A\0\0"s) + BoxBytes("jp2c", kPicture);
    EXPECT_EQ(ReadFile(Jpeg2000Container(), file).mIIM, "\x1C\x02\x5A\0\0"s);
    BlockChanges changes;
    changes.mIIM = "\x1C\x02\x5A\0\x01X"s;
    EXPECT_EQ(ReadFile(Jpeg2000Container(), Edited(Jpeg2000Container(), file, changes)).mIIM, changes.mIIM);
}

TEST(Jpeg2000FileTest, WhatCannotCarryMetadataIsRefusedAndDamageIsSeen) {
    const Container& container = Jpeg2000Container();
    ASSERT_TRUE(IsJpeg2000(kPicture));
    EXPECT_EQ(ReadFile(container, kPicture).mStatus, FileStatus::kFileStatus_Success);
    EXPECT_EQ(StatusOfEdit(container, kPicture, NewXMP(Element("new"))), FileStatus::kFileStatus_CannotCarryXMP);
    CutEverywhere(container, kHead + XMPBox(Element("old")) + BoxBytes("jp2c", kPicture));
}

}  // namespace
}  // namespace zephmetadata::media
