#include "media/containers/jpeg/jpeg.h"

#include <gtest/gtest.h>

#include "media/containers/jpeg/jpeg_extended_xmp.h"
#include "media/support/jpeg_files.h"

namespace zephmetadata::media {
namespace {

using namespace testing_support;

constexpr std::string_view kTiff{"MM\0*\0\0\0\x08\0\0\0\0\0\0", 14};
constexpr const char* kElement = "<x:xmpmeta>new</x:xmpmeta>";
const std::string kGuid = "0123456789ABCDEF0123456789ABCDEF";

/// A packet that refers to a further part.
std::string Referring(const std::string& guid) {
    return "<x:xmpmeta xmpNote:HasExtendedXMP=\"" + guid + "\"/>";
}
std::string Extension(std::size_t whole, std::size_t at, std::string_view part, const std::string& guid = kGuid) {
    return ExtensionSegment(guid, whole, at, part);
}

FileBlocks BlocksOf(const std::string& bytes) {
    return JPEGContainer().Read(std::make_shared<MemorySource>(bytes));
}

/// The Exif block of a file; absent for none.
std::optional<std::string> ExifOf(const FileBlocks& blocks) {
    return blocks.mExif.empty() ? std::nullopt : std::optional(ReadUpTo(*blocks.mExif.front().mSource, 0, 1U << 20U));
}

using Text = std::optional<std::string>;
struct ReadCase {
    const char* mName;
    std::vector<std::string> mSegments;
    Text mXMP;
    Text mExif;
    Text mIIM;
    Text mDigest;
};

std::vector<ReadCase> ReadCases() {
    const std::string tiff(kTiff);
    const std::string digest(16, 'd');
    const std::string resources = Resource(7, "x") + Resource(0x0404, "datasets!", "n") + Resource(0x0425, digest);
    const std::string old = std::string("Adobe_Photoshop2.5:\0\1\0\0\0\0\0\0", 27);
    return {
        {"nothing", {JFIF()}, {}, {}, {}, {}},
        {"all",
         {JFIF(), ExifSegment(tiff), XMPSegment("p"), PhotoshopSegment(resources)},
         "p",
         tiff,
         "datasets!",
         digest},
        {"fill bytes and markers without a size",
         {"\xFF\xFF", XMPSegment("p"), "\xFF\xD0\xFF\xFF\xFF", ExifSegment(tiff)},
         "p",
         tiff,
         {},
         {}},
        {"the first of several",
         {XMPSegment("1"), ExifSegment(tiff), XMPSegment("2"), ExifSegment(tiff + "2")},
         "1",
         tiff,
         {},
         {}},
        {"another byte for padding", {ExifSegment(tiff, '\xFF')}, {}, tiff, {}, {}},
        {"Exif over two segments",
         {ExifSegment(tiff + "12"), ExifSegment("345"), JFIF(), ExifSegment("6")},
         {},
         tiff + "12345",
         {},
         {}},
        {"resources over segments",
         {PhotoshopSegment(resources.substr(0, 30)), JFIF(), PhotoshopSegment(resources.substr(30, 9)),
          PhotoshopSegment(resources.substr(39))},
         {},
         {},
         "datasets!",
         digest},
        {"padding in the next segment",
         {PhotoshopSegment(Resource(7, "x").substr(0, 13)),
          PhotoshopSegment(std::string(1, '\0') + Resource(0x0404, "i"))},
         {},
         {},
         "i",
         {}},
        {"resources apart",
         {PhotoshopSegment(Resource(0x0425, digest)), PhotoshopSegment(Resource(0x0404, "i"))},
         {},
         {},
         "i",
         digest},
        {"old Photoshop", {Segment(0xED, old + resources)}, {}, {}, "datasets!", digest},
        {"other markers and signatures",
         {Segment(0xE2, "Exif" + std::string(2, '\0') + tiff), Segment(0xE1, "Exif"), Segment(0xE1, ""),
          Segment(0xED, "Photoshop")},
         {},
         {},
         {},
         {}},
    };
}

TEST(JPEGTest, BlocksAreReadFromTheirSegments) {
    // A second picture behind the first has blocks of its own.
    const std::string second = JPEGOf({XMPSegment("second"), ExifSegment("second")});
    for (const ReadCase& row : ReadCases()) {
        const std::string bytes = JPEGOf(row.mSegments);
        ASSERT_TRUE(IsJPEG(bytes)) << row.mName;
        // A file cut off in its scan has all that it says of itself.
        for (const std::string& file : {bytes, bytes + second, bytes.substr(0, bytes.size() - 3)}) {
            const FileBlocks blocks = BlocksOf(file);
            EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success) << row.mName << ": " << blocks.mDetail;
            EXPECT_EQ(blocks.mXMP, row.mXMP) << row.mName;
            EXPECT_EQ(ExifOf(blocks), row.mExif) << row.mName;
            EXPECT_EQ(blocks.mIIM, row.mIIM) << row.mName;
            EXPECT_EQ(blocks.mIIMDigest, row.mDigest) << row.mName;
        }
    }
}

struct ExtensionCase {
    const char* mName;
    std::vector<std::string> mSegments;
    Text mExtended;  // absent when there is none
    bool mIsWhole = true;
};

TEST(JPEGTest, FurtherPartsOfThePacketArePutTogether) {
    const std::string packet = XMPSegment(Referring(kGuid));
    const std::string lower =
        XMPSegment("<a:HasExtendedXMP>\n" + std::string("0123456789abcdef0123456789abcdef") + " </a:HasExtendedXMP>");
    const std::string other = std::string(32, 'F');
    const std::vector<ExtensionCase> table = {
        {"none", {XMPSegment("p")}, {}},
        {"in order", {packet, Extension(5, 0, "abc"), Extension(5, 3, "de")}, "abcde"},
        {"any order and place", {Extension(5, 3, "de"), packet, JFIF(), Extension(5, 0, "abc")}, "abcde"},
        {"an element", {lower, Extension(2, 0, "ab")}, "ab"},
        {"repeated", {packet, Extension(3, 0, "ab"), Extension(3, 0, "ab"), Extension(3, 2, "c")}, "abc"},
        {"of another packet", {packet, Extension(2, 0, "xy", other), Extension(2, 0, "ab")}, "ab"},
        {"not referred to", {XMPSegment("p"), Extension(2, 0, "ab")}, {}},
        {"named in a text", {XMPSegment("a HasExtendedXMP=\"" + kGuid + "\""), Extension(2, 0, "ab")}, {}},
        {"gap", {packet, Extension(5, 0, "ab"), Extension(5, 3, "de")}, {}, false},
        {"end missing", {packet, Extension(5, 0, "abc")}, {}, false},
        {"none there", {packet, Extension(2, 0, "xy", other)}, {}, false},
        {"differing sizes", {packet, Extension(5, 0, "abc"), Extension(6, 3, "de")}, {}, false},
        {"claims the world", {packet, Extension(0xFFFFFFFF, 0xFFFFFFF0, "de")}, {}, false},
        {"too short",
         {packet, Segment(0xE1, std::string("http://ns.adobe.com/xmp/extension/\0", 35) + kGuid)},
         {},
         false}};
    for (const ExtensionCase& row : table) {
        const FileBlocks blocks = BlocksOf(JPEGOf(row.mSegments));
        const std::vector<std::string> expected =
            row.mExtended ? std::vector{*row.mExtended} : std::vector<std::string>();
        EXPECT_EQ(blocks.mExtendedXMP, expected) << row.mName;
        EXPECT_EQ(blocks.mIsWhole, row.mIsWhole) << row.mName;
    }
}

TEST(JPEGTest, DamagedHeadersAreReadAndNotWritten) {
    const std::string bytes = JPEGOf({JFIF(), XMPSegment("p"), ExifSegment(kTiff)});
    const std::vector<std::pair<const char*, std::string>> table = {
        {"bytes between segments", "\xFF\xD8" + XMPSegment("p") + "stray" + bytes.substr(2)},
        {"zeros between segments", "\xFF\xD8" + XMPSegment("p") + std::string(300, '\0') + bytes.substr(2)},
        {"a size too small", "\xFF\xD8" + XMPSegment("p") + std::string("\xFF\xE1\0\1", 4) + bytes.substr(2)},
        {"a picture in the headers", "\xFF\xD8" + XMPSegment("p") + bytes},
        {"a segment too long", "\xFF\xD8" + XMPSegment("p") + "\xFF\xE1\xFF\xFF"},
        {"nothing but fill bytes", "\xFF\xD8" + XMPSegment("p") + std::string(200000, '\xFF')}};
    for (const auto& [name, file] : table) {
        const FileBlocks blocks = BlocksOf(file);
        EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_DamagedFile) << name;
        EXPECT_FALSE(blocks.mDetail.empty()) << name;
        EXPECT_EQ(blocks.mXMP, "p") << name;
        const PlannedEdit edit = JPEGContainer().PlanEdit(std::make_shared<MemorySource>(file), XMPChange(kElement));
        EXPECT_EQ(edit.mStatus, FileStatus::kFileStatus_DamagedFile) << name;
    }
    const std::size_t scan = bytes.size() - 8;  // behind the scan's header
    for (std::size_t size = 3; size <= bytes.size(); ++size) {
        const bool isSound = BlocksOf(bytes.substr(0, size)).mStatus == FileStatus::kFileStatus_Success;
        EXPECT_EQ(isSound, size >= scan) << size;
    }
}

struct EditCase {
    const char* mName;
    std::vector<std::string> mBefore;
    BlockChanges mChanges;
    std::vector<std::string> mAfter;
};

void ExpectEdits(const std::vector<EditCase>& table) {
    const std::string tail = std::string("\0\0\0\x18", 4) + "ftypmp42 and more";
    for (const EditCase& row : table) {
        const std::string made = Edited(JPEGContainer(), JPEGOf(row.mBefore) + tail, row.mChanges);
        EXPECT_EQ(made, JPEGOf(row.mAfter) + tail) << row.mName;
        EXPECT_EQ(Edited(JPEGContainer(), made, row.mChanges), made) << row.mName << ", once more";
    }
}

TEST(JPEGTest, ThePacketIsWrittenToItsPlace) {
    const std::string exif = ExifSegment(kTiff);
    const std::string color = Segment(0xE2, "ICC_PROFILE and more");
    const std::string wrapped = XMPSegment(WrappedPacket(kElement));
    const std::string roomy = XMPSegment(std::string(500, ' '));
    const std::string inPlace = XMPSegment(WrappedPacket(kElement, 500));
    const std::string more = std::string(70000, 'e');
    const std::string guid = ExtendedXMPGuid(more);
    const std::string main = XMPSegment(WrappedPacket(Referring(guid), 500));
    const std::string parts =
        Extension(70000, 0, std::string(65400, 'e'), guid) + Extension(70000, 65400, std::string(4600, 'e'), guid);
    const std::string old = XMPSegment(Referring(kGuid) + std::string(500 - Referring(kGuid).size(), ' '));
    const std::string other = Extension(2, 0, "xy", std::string(32, 'F'));
    ExpectEdits({
        {"new", {color}, XMPChange(kElement), {wrapped, color}},
        {"new behind JFIF and Exif", {JFIF(), exif, color}, XMPChange(kElement), {JFIF(), exif, wrapped, color}},
        {"in place", {color, roomy, exif}, XMPChange(kElement), {color, inPlace, exif}},
        {"larger", {JFIF(), color, XMPSegment("tiny"), exif}, XMPChange(kElement), {JFIF(), color, wrapped, exif}},
        {"fill bytes stay",
         {"\xFF\xFF", roomy, "\xFF", exif},
         XMPChange(kElement),
         {"\xFF\xFF", inPlace, "\xFF", exif}},
        {"the first of several", {roomy, XMPSegment("2")}, XMPChange(kElement), {inPlace, XMPSegment("2")}},
        {"removed", {exif, roomy, color, XMPSegment("2")}, XMPChange(""), {exif, color}},
        {"removed with further parts",
         {Extension(5, 3, "de"), old, other, Extension(5, 0, "abc")},
         XMPChange(""),
         {other}},
        {"further parts", {roomy, color}, XMPChange(Referring(guid), more), {main, parts, color}},
        {"other further parts",
         {old, other, Extension(5, 3, "de"), color, Extension(5, 0, "abc")},
         XMPChange(Referring(guid), more),
         {main, parts, other, color}},
        {"no further parts any more", {old, Extension(2, 0, "ab"), color}, XMPChange(kElement), {inPlace, color}},
        {"the same further parts",
         {old, Extension(2, 0, "ab"), color},
         XMPChange(Referring(kGuid)),
         {XMPSegment(WrappedPacket(Referring(kGuid), 500)), Extension(2, 0, "ab"), color}},
    });
}

TEST(JPEGTest, DatasetsAreWrittenAmongTheOtherResources) {
    const std::string flags = Resource(0x2710, "\1\2", {}, "MeSa");
    const std::string thumbnail = Resource(0x040C, std::string(65000, 't'));
    const std::string digest = Resource(0x0425, std::string(16, 'd'));
    const std::string made = Resource(0x0425, IIMDigest("data"));
    const std::string iim = Resource(0x0404, "data");
    const std::string large(70000, 'l');
    const std::string largeResource = Resource(0x0404, large);
    const std::string spread = thumbnail + Resource(0x0404, "old!") + flags;
    const std::size_t most = 65533 - 14;
    ExpectEdits({
        {"new",
         {JFIF(), XMPSegment("p"), Extension(2, 0, "ab"), ExifSegment(kTiff)},
         IIMChange("data"),
         {JFIF(), XMPSegment("p"), Extension(2, 0, "ab"), PhotoshopSegment(iim), ExifSegment(kTiff)}},
        {"replaced",
         {PhotoshopSegment(flags + Resource(0x0404, "older") + digest)},
         IIMChange("data"),
         {PhotoshopSegment(flags + iim + made)}},
        {"digest apart",
         {PhotoshopSegment(flags + digest), JFIF(), PhotoshopSegment(Resource(0x0404, "x"))},
         IIMChange("data"),
         {PhotoshopSegment(flags + made), JFIF(), PhotoshopSegment(iim)}},
        {"added", {PhotoshopSegment(flags)}, IIMChange("data"), {PhotoshopSegment(flags + iim)}},
        {"removed",
         {PhotoshopSegment(Resource(0x0404, "x") + digest + flags)},
         IIMChange(""),
         {PhotoshopSegment(flags)}},
        {"removed with its segment", {JFIF(), PhotoshopSegment(Resource(0x0404, "x"))}, IIMChange(""), {JFIF()}},
        {"too large for a segment",
         {JFIF(), PhotoshopSegment(flags + Resource(0x0404, "x"))},
         IIMChange(large),
         {JFIF(), PhotoshopSegment((flags + largeResource).substr(0, most)),
          PhotoshopSegment((flags + largeResource).substr(most))}},
        {"segments beside it stay",
         {PhotoshopSegment(spread.substr(0, 100)), JFIF(), PhotoshopSegment(spread.substr(100, 64920)),
          PhotoshopSegment(spread.substr(65020))},
         IIMChange("data"),
         {PhotoshopSegment(spread.substr(0, 100)), JFIF(), PhotoshopSegment(spread.substr(100, 64920)),
          PhotoshopSegment((thumbnail + iim + flags).substr(65020))}},
    });
}

TEST(JPEGTest, ExifIsEditedInItsSegment) {
    const BlockChanges artist = ExifChange(std::string("somebody\0", 9));
    const std::string made = NewTiff(artist.mExif);
    ExpectEdits({
        {"new", {JFIF(), XMPSegment("p")}, artist, {JFIF(), ExifSegment(made), XMPSegment("p")}},
        {"edited",
         {XMPSegment("p"), ExifSegment(kTiff, '\xFF'), JFIF()},
         artist,
         {XMPSegment("p"), ExifSegment(*EditedExif(std::string(kTiff), artist.mExif), '\xFF'), JFIF()}},
        {"nothing to remove", {JFIF()}, ExifChange(""), {JFIF()}},
    });
    BlockChanges all = artist;
    all.mXMP = kElement;
    all.mIIM = "data";
    ExpectEdits({{"all new",
                  {JFIF(), Segment(0xE2, "color")},
                  all,
                  {JFIF(), ExifSegment(made), XMPSegment(WrappedPacket(kElement)),
                   PhotoshopSegment(Resource(0x0404, "data")), Segment(0xE2, "color")}}});
}

TEST(JPEGTest, WhatASegmentCannotHoldIsRefused) {
    const std::size_t most = JPEGContainer().MaxPacketBytes();
    const auto statusOf = [](const std::vector<std::string>& segments, const BlockChanges& changes) {
        const PlannedEdit edit = JPEGContainer().PlanEdit(std::make_shared<MemorySource>(JPEGOf(segments)), changes);
        EXPECT_EQ(edit.mDetail.empty(), edit.mStatus == FileStatus::kFileStatus_Success);
        return edit.mStatus;
    };
    EXPECT_EQ(statusOf({}, XMPChange(std::string(most + 100, 'x'))), FileStatus::kFileStatus_NotWritten);
    EXPECT_EQ(statusOf({}, ExifChange(std::string(65533, 'x'))), FileStatus::kFileStatus_NotWritten);
    EXPECT_EQ(statusOf({}, XMPChange(Referring(kGuid), "another part")), FileStatus::kFileStatus_NotWritten);
    EXPECT_EQ(statusOf({ExifSegment("no TIFF stream")}, ExifChange("me")), FileStatus::kFileStatus_DamagedFile);
    const std::string fullest = Edited(JPEGContainer(), JPEGOf({}), XMPChange(std::string(most, 'x')));
    EXPECT_EQ(BlocksOf(fullest).mXMP, ShortPacket(std::string(most, 'x')));
    // ISO 16684-3: the packet of a segment has at most this size.
    EXPECT_EQ(ShortPacket(std::string(most, 'x')).size(), 65502U);
}

/// A directory of three pictures, the first with the directory, whose offsets count from behind "MPF" and its NUL.
std::string DirectorySegment(ByteOrder order, std::size_t firstSize, std::size_t size, std::size_t second,
                             std::size_t third) {
    const auto number = [&](std::uint64_t value, std::size_t bytes) { return NumberBytes(value, bytes, order); };
    const auto entry = [&](std::size_t bytes, std::size_t offset) {
        return number(0x30000, 4) + number(bytes, 4) + number(offset, 4) + number(0, 4);
    };
    std::string data =
        std::string("MPF\0", 4) + (order == ByteOrder::kLittle ? "II" : "MM") + number(42, 2) + number(8, 4);
    data += number(2, 2) + number(0xB001, 2) + number(4, 2) + number(1, 4) + number(3, 4);
    data += number(0xB002, 2) + number(7, 2) + number(48, 4) + number(38, 4) + number(0, 4);
    return Segment(0xE2, data + entry(firstSize, 0) + entry(size, second) + entry(size, third));
}

TEST(JPEGTest, FurtherPicturesAreFoundAfterAnEdit) {
    const std::string second = JPEGOf({JFIF()});
    const std::string gap = "gap";
    const std::string packet = XMPSegment("p");
    for (const ByteOrder order : {ByteOrder::kLittle, ByteOrder::kBig}) {
        for (const bool isBefore : {false, true}) {
            const std::string before = isBefore ? JFIF() + packet : JFIF();
            const std::string after = isBefore ? "" : packet;
            const auto fileWith = [&](const std::string& directory) { return JPEGOf({before, directory, after}); };
            const std::size_t first = fileWith(DirectorySegment(order, 0, 0, 0, 0)).size();
            const std::size_t base = 2 + before.size() + 4 + 4;
            const std::size_t toSecond = first + gap.size() - base;
            const std::string directory =
                DirectorySegment(order, first, second.size(), toSecond, toSecond + second.size());
            const std::string bytes = Join({fileWith(directory), gap, second, second});
            for (const BlockChanges& changes : {XMPChange(kElement), XMPChange(""), IIMChange("data")}) {
                const std::string made = Edited(JPEGContainer(), bytes, changes);
                const std::size_t end = made.size() - 2 * second.size();
                const std::vector<Range> expected = {{end, second.size()}, {end + second.size(), second.size()}};
                EXPECT_EQ(JPEGContainer().References(MemorySource(made)), expected);
                // The size of the first picture follows, and nothing else of the directory changes.
                const std::size_t newBase = made.find("MPF") + 4;
                EXPECT_EQ(made.substr(newBase - 8, directory.size()),
                          DirectorySegment(order, end - gap.size(), second.size(), end - newBase,
                                           end + second.size() - newBase));
            }
        }
    }
}

TEST(JPEGTest, EntriesThatLieOverTheirDirectoryAreNone) {
    std::string directory = DirectorySegment(ByteOrder::kBig, 5, 6, 7, 8);
    const std::size_t placeOfEntries = 4 + 4 + 8 + 2 + 12 + 8;  // in the segment: the offset in the second field
    ASSERT_EQ(Get32(directory, placeOfEntries), 38U);
    PutNumber(directory, placeOfEntries, 5, 4, ByteOrder::kBig);
    const std::string packet = XMPSegment(WrappedPacket(kElement));
    ExpectEdits({{"over it", {directory, XMPSegment("p")}, XMPChange(kElement), {directory, packet}}});
}

}  // namespace
}  // namespace zephmetadata::media
