#include "media/containers/boxes/jpeg_xl.h"

#include "media/containers/block_compression.h"
#include "media/containers/box_fixture.h"

namespace zephmetadata::media {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using testing::ElementsAre;
using testing::HasSubstr;

const std::string kHead = BoxBytes("JXL ", "\r\n\x87\n") + BoxBytes("ftyp", "jxl \0\0\0\0jxl "sv);
const std::string kCodestream = "\xFF\x0A picture";
const std::string kTiff("MM\0*\0\0\0\x08\0\0\0\0\0\0", 14);

std::string Brob(std::string_view type, std::string_view bytes) {
    return BoxBytes("brob", std::string(type) + Compressed(bytes, Compression::kBrotli).value_or(""));
}

struct Case {
    const char* mName;
    std::string mBytes;
    std::string mXMP;
    bool mHasExif;
    std::vector<std::string> mTypesAfter;  // of an edit of XMP and Exif
};

class JpegXLTest : public testing::TestWithParam<Case> {};

TEST_P(JpegXLTest, ReadsEditsAndRemoves) {
    const Container& container = JpegXLContainer();
    const Case& file = GetParam();
    ASSERT_TRUE(IsJpegXL(file.mBytes));
    EXPECT_EQ(XMPOf(container, file.mBytes), file.mXMP);
    EXPECT_EQ(ExifOf(container, file.mBytes), file.mHasExif ? kTiff : "<none>");

    BlockChanges changes = NewArtist("Somebody");
    changes.mXMP = Element("new");
    const std::string edited = Edited(container, file.mBytes, changes);
    EXPECT_THAT(XMPOf(container, edited), HasSubstr(Element("new")));
    EXPECT_EQ(ArtistOf(container, edited), "Somebody");
    EXPECT_EQ(BoxTypes(edited), file.mTypesAfter);
    EXPECT_THAT(edited, HasSubstr(kCodestream));

    const std::string removed = Edited(container, edited, NewXMP(""));
    EXPECT_EQ(XMPOf(container, removed), "<none>");
    EXPECT_EQ(ArtistOf(container, removed), "Somebody");
    EXPECT_THAT(removed, HasSubstr(kCodestream));
}

const std::string kExifBox = BoxBytes("Exif", std::string(4, '\0') + kTiff);

INSTANTIATE_TEST_SUITE_P(
    Files, JpegXLTest,
    testing::Values(Case{"Bare", kCodestream, "<none>", false, {"JXL ", "ftyp", "Exif", "xml ", "jxlc"}},
                    Case{"Nothing",
                         kHead + BoxBytes("jxlc", kCodestream),
                         "<none>",
                         false,
                         {"JXL ", "ftyp", "Exif", "xml ", "jxlc"}},
                    Case{"OpenEnd",
                         kHead + BoxBytes("jxll", "\x0A") + OpenBox("jxlc", kCodestream),
                         "<none>",
                         false,
                         {"JXL ", "ftyp", "jxll", "Exif", "xml ", "jxlc"}},
                    Case{"Both",
                         kHead + kExifBox + BoxBytes("xml ", Element("old")) + BoxBytes("jxlp", "\0\0\0\0part"sv) +
                             BoxBytes("jxlp", "\x80\0\0\1"s + kCodestream),
                         Element("old"),
                         true,
                         {"JXL ", "ftyp", "Exif", "xml ", "jxlp", "jxlp"}},
                    Case{"CompressedAndLast",
                         kHead + BoxBytes("jxlc", kCodestream) + Brob("Exif", std::string(4, '\0') + kTiff) +
                             Brob("xml ", Element("old")),
                         Element("old"),
                         true,
                         {"JXL ", "ftyp", "jxlc", "brob", "brob"}},
                    Case{"OtherDocuments",
                         kHead + BoxBytes("xml ", "<svg/>") + Brob("jumb", "?") + Brob("xml ", "<svg/>") +
                             BoxBytes("jxlc", kCodestream),
                         "<none>",
                         false,
                         {"JXL ", "ftyp", "Exif", "xml ", "xml ", "brob", "brob", "jxlc"}}),
    [](const auto& instance) { return std::string(instance.param.mName); });

TEST(JpegXLFileTest, PacketKeepsItsSizeWhereAJpegFileIsMadeOfIt) {
    const std::string old = Element("old", 9000);
    const auto file = [&old](std::string_view type) {
        return kHead + BoxBytes("xml ", old) + BoxBytes(type, "") + BoxBytes("jxlc", kCodestream);
    };
    EXPECT_EQ(Edited(JpegXLContainer(), file("jbrd"), NewXMP(Element("new"))).size(), file("jbrd").size());
    EXPECT_LT(Edited(JpegXLContainer(), file("free"), NewXMP(Element("new"))).size(), file("free").size() - 6000);
}

TEST(JpegXLFileTest, DamageIsSeen) {
    const std::string sound = kHead + kExifBox + Brob("xml ", Element("old")) + BoxBytes("jxlc", kCodestream);
    CutEverywhere(JpegXLContainer(), sound);
    const std::vector<std::string> damaged = {kHead, kHead + BoxBytes("brob", "xml rubbish") + BoxBytes("jxlc", "")};
    for (const std::string& bytes : damaged) {
        EXPECT_EQ(ReadFile(JpegXLContainer(), bytes).mStatus, FileStatus::kFileStatus_DamagedFile);
    }
}

TEST(CompressionTest, EveryFormComesBackAndCutsShow) {
    const std::string text = Element("text", 100000);
    for (const Compression how :
         {Compression::kNone, Compression::kZlib, Compression::kGzip, Compression::kDeflate, Compression::kBrotli}) {
        const std::string packed = Compressed(text, how).value_or("");
        EXPECT_EQ(Decompressed(packed, how, text.size()), text);
        EXPECT_EQ(Decompressed(packed, how, text.size() - 1), std::nullopt);
        const auto cut = Decompressed(std::string_view(packed).substr(0, packed.size() / 2), how, text.size());
        EXPECT_EQ(cut.has_value(), how == Compression::kNone);
    }
}

}  // namespace
}  // namespace zephmetadata::media
