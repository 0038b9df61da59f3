#include "mirroring_fixture.h"

#include "media/native/iim/iim_edit.h"
#include "media/native/iim/iim_records.h"

namespace zephmetadata::media {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint16_t kMakeTag = 0x010F;
constexpr std::uint16_t kDescriptionTag = 0x010E;
constexpr std::uint16_t kDateTag = 0x9003;
constexpr std::uint16_t kFNumberTag = 0x829D;

TiffEdit Make(const std::string& name) {
    return {TiffDirectory::kMain, kMakeTag, TiffType::kAscii, name + '\0'};
}
TiffEdit Description(const std::string& text) {
    return {TiffDirectory::kMain, kDescriptionTag, TiffType::kAscii, text + '\0'};
}
TiffEdit Date(const std::string& date) {
    return {TiffDirectory::kExif, kDateTag, TiffType::kAscii, date + '\0'};
}
TiffEdit FNumber(std::uint32_t numerator, std::uint32_t denominator) {
    return {TiffDirectory::kExif, kFNumberTag, TiffType::kRational,
            NumberBytes(numerator, 4) + NumberBytes(denominator, 4)};
}
const TiffEdit kDate = Date("2020:01:02 03:04:05");

/// Datasets with their version, which an edit would add.
std::string City(const std::string& name) {
    return IIMDatasetBytes(2, 0, "\0\4"s) + IIMDatasetBytes(2, 90, name);
}

struct JoinRow {
    std::string mBody;
    std::vector<TiffEdit> mExif;
    std::string mProperty;
    std::string mShown;
    bool mIsNative;
};

TEST_F(MirroringTest, ThePacketIsShownWhereItAgreesWithExifAndExifWhereNot) {
    const std::vector<JoinRow> rows = {
        {Simple("exif:DateTimeOriginal", "2020-01-02T03:04:05.25+02:00"),
         {kDate},
         "exif:DateTimeOriginal",
         "2020-01-02T03:04:05.25+02:00",
         false},
        {Simple("exif:DateTimeOriginal", "2019-01-02T03:04:05+02:00"),
         {kDate},
         "exif:DateTimeOriginal",
         "2020-01-02T03:04:05",
         true},
        {Simple("exif:DateTimeOriginal", "2019-01-02"), {Make("M")}, "exif:DateTimeOriginal", "2019-01-02", false},
        {"", {kDate}, "photoshop:DateCreated", "2020-01-02T03:04:05", true},
        {Simple("photoshop:DateCreated", "2020-01-02T03:04:05Z"),
         {kDate},
         "photoshop:DateCreated",
         "2020-01-02T03:04:05Z",
         false},
        {Simple("exif:FNumber", "14/5"), {FNumber(28, 10)}, "exif:FNumber", "14/5", false},
        {Simple("exif:FNumber", "4/1"), {FNumber(28, 10)}, "exif:FNumber", "28/10", true},
        {Simple("tiff:Make", "Acm\xC3\xA9"), {Make("Acm?")}, "tiff:Make", "Acm\xC3\xA9", false},
        {Simple("tiff:Make", "Acme"), {Make("Other")}, "tiff:Make", "Other", true},
        {Languages("dc:description", {{"x-default", "Harbour"}, {"de", "Hafen"}}),
         {Description("Harbour")},
         "dc:description[2]",
         "Hafen",
         false},
        {Languages("dc:description", {{"x-default", "Harbour"}, {"de", "Hafen"}}),
         {Description("Quay")},
         "dc:description[1]",
         "Quay",
         true},
    };
    for (const JoinRow& row : rows) {
        const EditedFile file = EditBlocks(Blocks(row.mBody, row.mExif), &EditLabel);
        const std::string name = row.mBody + " " + row.mProperty;
        for (const FileSide* trees : {&file.mBefore, &file.mAfter}) {
            EXPECT_EQ(ValueOf(trees->mJoined.get(), row.mProperty), row.mShown) << name;
            EXPECT_EQ(toolkit::IsNative(trees->mJoined.get(), SchemaOf(row.mProperty), row.mProperty), row.mIsNative)
                << name;
        }
        EXPECT_EQ(ValueOf(file.mAfter.mPacket.get(), row.mProperty), ValueOf(file.mBefore.mPacket.get(), row.mProperty))
            << name;
        EXPECT_EQ(file.mWhyNot, "") << name;
    }
}

TEST_F(MirroringTest, DatasetsGoBeforeThePacketOnlyWhenTheyWereChangedSince) {
    const std::string iim = City("Bergen");
    struct Row {
        std::optional<std::string> mDigest;
        std::string mBody;
        std::string mShown;
        bool mIsNative;
    };
    const std::string oslo = Simple("photoshop:City", "Oslo");
    const std::vector<Row> rows = {
        {IIMDigest(iim), oslo, "Oslo", false},
        {{}, oslo, "Oslo", false},
        {std::string(16, '\7'), oslo, "Bergen", true},
        {IIMDigest(iim), "", "Bergen", true},
        {{}, Simple("xmp:Label", "x"), "Bergen", true},
        {std::string(16, '\7'), "", "Bergen", true},
        {std::string(16, '\7'), Simple("photoshop:City", "Bergen"), "Bergen", false},
    };
    for (const Row& row : rows) {
        FileBlocks blocks = Blocks(row.mBody);
        blocks.mIIM = iim;
        blocks.mIIMDigest = row.mDigest;
        const EditedFile file = EditBlocks(blocks, &EditLabel);
        const auto at = &row - rows.data();
        EXPECT_EQ(ValueOf(file.mBefore.mJoined.get(), "photoshop:City"), row.mShown) << at;
        EXPECT_EQ(toolkit::IsNative(file.mBefore.mJoined.get(), SchemaOf("photoshop:City"), "photoshop:City"),
                  row.mIsNative)
            << at;
        EXPECT_EQ(file.mChanges.mIIM, std::nullopt) << at;
        EXPECT_EQ(file.mWhyNot, "") << at;

        const EditedFile moved = EditBlocks(blocks, [](auto tree) { Set(tree, "photoshop:City", "Kirkenes"); });
        EXPECT_EQ(moved.mChanges.mIIM, City("Kirkenes")) << at;
        EXPECT_EQ(ValueOf(moved.mAfter.mJoined.get(), "photoshop:City"), "Kirkenes") << at;
        EXPECT_EQ(moved.mWhyNot, "") << at;
    }
}

const std::string kOddities =
    Languages("dc:title", {{"x-default", ""}, {"de", "Hafen"}}) + Array("dc:subject", "Bag", {"a", "", "b"}) +
    Languages("dc:rights", {{"x-default", "one"}, {"en", "two"}}) + Array("dc:creator", "Seq", {"", "Me"}) +
    Simple("photoshop:City", "") + Simple("exif:FNumber", "4/1") + Simple("tiff:Make", "Acme") +
    "<exif:Flash rdf:parseType='Resource'><exif:Fired>False</exif:Fired></exif:Flash>" +
    "<xmp:BaseURL rdf:resource='http://a.test/'/>";

TEST_F(MirroringTest, AnUnrelatedEditLeavesEverythingElse) {
    FileBlocks blocks = Blocks(kOddities, {Make("Other"), kDate, FNumber(28, 10), Description("Quay")});
    blocks.mIIM = City("Bergen") + IIMDatasetBytes(2, 25, "keyword");
    for (const std::optional<std::string>& digest :
         {std::optional<std::string>(), std::optional("0123456789abcdef"s)}) {
        blocks.mIIMDigest = digest;
        const EditedFile file = EditBlocks(blocks, &EditLabel);
        EXPECT_EQ(file.mWhyNot, "");
        EXPECT_THAT(file.mChanges.mExif, IsEmpty());
        EXPECT_EQ(file.mChanges.mIIM, std::nullopt);
        ASSERT_EQ(file.mChanges.mProperties.size(), 1U);
        for (const auto& [before, after] : {std::pair(file.mBefore.mPacket, file.mAfter.mPacket),
                                            std::pair(file.mBefore.mJoined, file.mAfter.mJoined)}) {
            Delete(after.get(), "xmp:Label");
            EXPECT_TRUE(toolkit::TreesEqual(before.get(), after.get())) << toolkit::SerializePacket(after.get());
        }
        EXPECT_EQ(ValueOf(file.mAfter.mPacket.get(), "dc:title[1]"), "");
        EXPECT_EQ(ValueOf(file.mAfter.mPacket.get(), "dc:title[2]"), "Hafen");
        EXPECT_EQ(ValueOf(file.mAfter.mPacket.get(), "dc:subject[2]"), "");
        EXPECT_EQ(ValueOf(file.mAfter.mPacket.get(), "dc:subject[3]"), "b");
    }
    const EditedFile same = EditBlocks(blocks, [](auto) {});
    EXPECT_TRUE(same.mChanges.mProperties.empty());
}

TEST_F(MirroringTest, AnEditOfAPropertyChangesItsFieldAlone) {
    const TiffEdit width{TiffDirectory::kMain, 0x0100, TiffType::kShort, NumberBytes(640, 2)};
    const FileBlocks blocks = Blocks(Simple("tiff:Make", "Acme"), {Make("Other"), kDate, FNumber(28, 10), width});
    const EditedFile brighter = EditBlocks(blocks, [](auto tree) { Set(tree, "exif:FNumber", "4/1"); });
    EXPECT_THAT(brighter.mChanges.mExif, ElementsAre(FNumber(4, 1)));
    EXPECT_EQ(ValueOf(brighter.mAfter.mJoined.get(), "exif:FNumber"), "4/1");
    EXPECT_EQ(ValueOf(brighter.mAfter.mJoined.get(), "tiff:Make"), "Other");
    EXPECT_EQ(brighter.mWhyNot, "");

    const EditedFile nameless = EditBlocks(blocks, [](auto tree) { Delete(tree, "tiff:Make"); });
    ASSERT_EQ(nameless.mChanges.mExif.size(), 1U);
    EXPECT_EQ(nameless.mChanges.mExif.front().mTag, kMakeTag);
    EXPECT_EQ(nameless.mChanges.mExif.front().mBytes, "");
    EXPECT_EQ(ValueOf(nameless.mAfter.mJoined.get(), "tiff:Make"), "<none>");
    EXPECT_EQ(ValueOf(nameless.mAfter.mPacket.get(), "tiff:Make"), "<none>");
    EXPECT_EQ(nameless.mWhyNot, "");

    EXPECT_EQ(EditBlocks(blocks, [](auto tree) { Set(tree, "tiff:ImageWidth", "3"); }).mWhyNot,
              "tiff:ImageWidth describes the stored picture and follows it alone");
    // A value that the field cannot hold is refused, not rounded.
    EXPECT_EQ(EditBlocks(blocks, [](auto tree) { Set(tree, "exif:FNumber", "wide"); }).mChanges.mRefused,
              "exif:FNumber");
}

TEST_F(MirroringTest, AFieldIsDeletedByItsTechnicalNameAlone) {
    struct Row {
        std::string mBody;
        std::vector<std::string> mDeleted;
        std::string mWhyNot;
    };
    const std::string date = "2020-01-02T03:04:05";
    const std::vector<Row> rows = {
        {"", {"photoshop:DateCreated"}, "exif:DateTimeOriginal"},
        {"", {"exif:DateTimeOriginal"}, ""},
        {"", {"photoshop:DateCreated", "exif:DateTimeOriginal"}, ""},
        // The other one stays in the packet.
        {Simple("exif:DateTimeOriginal", date), {"photoshop:DateCreated"}, ""},
        {Simple("exif:DateTimeOriginal", date) + Simple("photoshop:DateCreated", date),
         {"photoshop:DateCreated", "exif:DateTimeOriginal"},
         ""},
    };
    for (const Row& row : rows) {
        const EditedFile file = EditBlocks(Blocks(row.mBody, {Make("M"), kDate}), [&](auto tree) {
            for (const std::string& name : row.mDeleted) {
                Delete(tree, name);
            }
        });
        const auto at = &row - rows.data();
        EXPECT_EQ(file.mWhyNot.substr(0, file.mWhyNot.find(' ')), row.mWhyNot) << at;
        EXPECT_EQ(ValueOf(file.mAfter.mJoined.get(), row.mDeleted.front()), "<none>") << at;
    }
    // Changed, both follow.
    const XMPMetaPtr tree = toolkit::NewTree();
    const EditedFile file = EditBlocks(
        Blocks("", {kDate}), [&](auto wanted) { Set(wanted, "photoshop:DateCreated", "2021-01-01T00:00:00"); });
    EXPECT_EQ(file.mWhyNot, "");
    FollowChanges(file.mChanges, file.mAfter.mContent, tree.get());
    EXPECT_EQ(ValueOf(tree.get(), "exif:DateTimeOriginal"), "2021-01-01T00:00:00");
}

TEST_F(MirroringTest, TellDamagedPacketsFromNone) {
    using enum FileStatus;
    struct Row {
        std::optional<std::string> mXMP;
        bool mHasExif;
        FileStatus mStatus;
    };
    const std::vector<Row> rows = {
        {Packet(Simple("tiff:Make", "A")), true, kFileStatus_Success},
        {Packet(""), false, kFileStatus_Success},
        {Packet("<tiff:Make>A"), true, kFileStatus_DamagedXMP},
        {"no packet", true, kFileStatus_DamagedXMP},
        {Packet("").substr(0, 60), false, kFileStatus_DamagedXMP},
        {" \n\0 "s, true, kFileStatus_Success},
        {" \n\0 "s, false, kFileStatus_NoXMP},
        {{}, true, kFileStatus_Success},
        {{}, false, kFileStatus_NoXMP},
    };
    for (const Row& row : rows) {
        FileBlocks blocks = Blocks("", row.mHasExif ? std::vector{Make("M")} : std::vector<TiffEdit>());
        blocks.mXMP = row.mXMP;
        const MediaTree trees = JoinBlocks(blocks);
        EXPECT_EQ(trees.mStatus, row.mStatus) << row.mXMP.value_or("");
        EXPECT_EQ(trees.mJoined == nullptr, row.mStatus == kFileStatus_DamagedXMP) << row.mXMP.value_or("");
    }
    FileBlocks extended = Blocks(Simple("tiff:Make", "A"));
    extended.mExtendedXMP = {Packet(Simple("tiff:Model", "B"))};
    EXPECT_EQ(ValueOf(JoinBlocks(extended).mJoined.get(), "tiff:Model"), "B");
    extended.mExtendedXMP = {Packet("<tiff:Model>")};
    EXPECT_EQ(JoinBlocks(extended).mStatus, kFileStatus_DamagedXMP);
}

TEST_F(MirroringTest, FieldsOfTheFormatFillInWhatNothingElseSays) {
    constexpr std::string_view kDC = "http://purl.org/dc/elements/1.1/";
    FileBlocks blocks = Blocks(Languages("dc:title", {{"x-default", "Packet"}}));
    blocks.mValues = {{kDC, "title", ValueForm::kLangAlt, {{"x-default", "Field"}}},
                      {kDC, "source", ValueForm::kSimple, {{"", "Field"}}},
                      {kDC, "subject", ValueForm::kBag, {{"", "one"}, {"", "two"}}}};
    const EditedFile file = EditBlocks(blocks, [](auto tree) { Set(tree, "dc:source", "edited"); });
    EXPECT_EQ(ValueOf(file.mBefore.mJoined.get(), "dc:title[1]"), "Packet");
    EXPECT_EQ(ValueOf(file.mBefore.mJoined.get(), "dc:source"), "Field");
    EXPECT_EQ(ValueOf(file.mBefore.mJoined.get(), "dc:subject[2]"), "two");
    // Once edited the packet says it; what was not edited does not move into it.
    EXPECT_EQ(ValueOf(file.mAfter.mJoined.get(), "dc:source"), "edited");
    EXPECT_EQ(ValueOf(file.mAfter.mPacket.get(), "dc:subject[1]"), "<none>");
    EXPECT_EQ(file.mWhyNot, "");
}

}  // namespace
}  // namespace zephmetadata::media
