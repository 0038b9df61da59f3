#include "media/containers/boxes/heif.h"

#include "media/containers/block_compression.h"
#include "media/containers/box_fixture.h"
#include "media/containers/boxes/heif_items.h"
#include "media/containers/xmp_packets.h"

namespace zephmetadata::media {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using testing::HasSubstr;

const std::string kTiff("MM\0*\0\0\0\x08\0\0\0\0\0\0", 14);
const std::string kImage = "coded image, coded image";

struct Item {
    std::uint32_t mNumber = 0;
    std::string mType;
    std::string mData;
    std::string mContentType;
    std::string mEncoding;
    ItemSource mSource = ItemSource::kFile;
    std::vector<std::uint32_t> mDescribes;  // "cdsc"
};

Item XMPItem(std::uint32_t number, std::string data, std::vector<std::uint32_t> describes = {1}) {
    return {number, "mime", std::move(data), "application/rdf+xml", "", ItemSource::kFile, std::move(describes)};
}
Item ExifItem(std::uint32_t number, std::string data) {
    return {number, "Exif", std::move(data), "", "", ItemSource::kFile, {1}};
}

/// A file with the items, the first being the primary image.
struct HeifBuilder {
    std::string mBrand = "heic";
    std::vector<Item> mItems = {{1, "hvc1", kImage, "", "", ItemSource::kFile, {}}};
    std::uint8_t mLocationVersion = 1;
    std::uint8_t mOffsetBytes = 4;
    std::uint8_t mBaseBytes = 0;
    std::uint8_t mReferenceVersion = 0;
    bool mHasTwoReferenceBoxes = false;
    bool mHasTwoExtents = false;
    std::size_t mFreeBytes = 0;  // behind the meta box
    std::string mInTrack;        // contents of a "trak" box
    std::string mBehind;         // behind the data
    bool mIsOpen = false;        // the data goes on to the end of the file

    HeifBuilder& Add(Item item) {
        mItems.push_back(std::move(item));
        return *this;
    }

    static std::string InfoBox(const Item& item) {
        const bool isLong = item.mNumber > 0xFFFF;
        std::string contents =
            NumberBytes(item.mNumber, isLong ? 4 : 2) + NumberBytes(0, 2) + item.mType + "name" + '\0';
        if (item.mType == "mime") {
            contents += item.mContentType + '\0' + item.mEncoding + (item.mEncoding.empty() ? "" : "\0"s);
        }
        return FullBoxBytes("infe", {static_cast<std::uint8_t>(isLong ? 3 : 2), 0}, contents);
    }

    std::string References() const {
        const std::size_t size = mReferenceVersion == 0 ? 2 : 4;
        std::vector<std::string> boxes;
        for (const Item& item : mItems) {
            if (!item.mDescribes.empty()) {
                std::string contents = NumberBytes(item.mNumber, size) + NumberBytes(item.mDescribes.size(), 2);
                for (const std::uint32_t other : item.mDescribes) {
                    contents += NumberBytes(other, size);
                }
                boxes.push_back(BoxBytes("cdsc", contents));
            }
        }
        std::string all;
        std::string result;
        for (const std::string& box : boxes) {
            all += box;
            result += FullBoxBytes("iref", {mReferenceVersion, 0}, box);
        }
        const std::string one = all.empty() ? "" : FullBoxBytes("iref", {mReferenceVersion, 0}, all);
        return mHasTwoReferenceBoxes ? result : one;
    }

    /// The locations for data that begins at @p dataAt, and the data of both kinds.
    ItemLocations Locations(std::uint64_t dataAt, std::string& data, std::string& itemData) const {
        ItemLocations locations;
        locations.mVersion = mLocationVersion;
        locations.mOffsetBytes = mOffsetBytes;
        locations.mBaseBytes = mBaseBytes;
        for (const Item& item : mItems) {
            ItemLocation location{item.mNumber, static_cast<std::uint16_t>(item.mSource), 0, 0, {}};
            std::string& to = item.mSource == ItemSource::kFile ? data : itemData;
            const std::uint64_t origin = item.mSource == ItemSource::kFile ? dataAt : 0;
            const std::size_t half = mHasTwoExtents ? item.mData.size() / 2 : item.mData.size();
            for (const std::string& part : {item.mData.substr(0, half), item.mData.substr(half)}) {
                if (!part.empty()) {
                    location.mExtents.push_back({0, origin + to.size(), part.size()});
                    to += part + (mHasTwoExtents ? "gap" : "");
                }
            }
            if (mBaseBytes > 0 && !location.mExtents.empty()) {
                location.mBase = mOffsetBytes == 0 ? location.mExtents[0].mOffset : origin;
                for (ItemExtent& extent : location.mExtents) {
                    extent.mOffset -= location.mBase;
                }
            }
            locations.mItems.push_back(location);
        }
        return locations;
    }

    std::string Build() const {
        std::string list = NumberBytes(mItems.size(), 2);
        for (const Item& item : mItems) {
            list += InfoBox(item);
        }
        std::string file;
        std::uint64_t dataAt = 0;
        for (int round = 0; round < 2; ++round) {  // the second knows where the data begins
            std::string data;
            std::string itemData;
            const std::string locations = ItemLocationsBox(Locations(dataAt, data, itemData));
            const std::string handler = FullBoxBytes("hdlr", {}, "\0\0\0\0pict"s + std::string(13, '\0'));
            const std::string primary = FullBoxBytes("pitm", {}, NumberBytes(1, 2));
            const std::string rest =
                (itemData.empty() ? "" : BoxBytes("idat", itemData)) + FullBoxBytes("iinf", {}, list) + References();
            file = BoxBytes("ftyp", mBrand + "\0\0\0\0mif1"s) +
                   FullBoxBytes("meta", {}, handler + primary + locations + rest) +
                   (mFreeBytes == 0 ? "" : FreeBox(mFreeBytes)) + Track(dataAt);
            dataAt = file.size() + 8;
            file += (mIsOpen ? OpenBox("mdat", data) : BoxBytes("mdat", data)) + mBehind;
        }
        return file;
    }

    /// A film of one track, the chunk of which is the primary image, and which lists the metadata once more.
    std::string Track(std::uint64_t dataAt) const {
        if (mInTrack.empty()) {
            return {};
        }
        const std::string chunks = FullBoxBytes("stco", {}, NumberBytes(1, 4) + NumberBytes(dataAt, 4));
        std::string data;
        std::string itemData;
        ItemLocations locations = Locations(dataAt, data, itemData);
        locations.mItems.erase(locations.mItems.begin());
        std::string list = NumberBytes(mItems.size() - 1, 2);
        for (std::size_t i = 1; i < mItems.size(); ++i) {
            list += InfoBox(mItems[i]);
        }
        const std::string meta = FullBoxBytes("meta", {}, ItemLocationsBox(locations) + FullBoxBytes("iinf", {}, list));
        const std::string media = BoxBytes("mdia", BoxBytes("minf", BoxBytes("stbl", chunks)));
        return BoxBytes("moov", BoxBytes("trak", mInTrack + meta + media));
    }
};

std::string ExifData(std::string_view prefix) {
    return std::string(prefix) + kTiff;
}

struct Case {
    const char* mName;
    HeifBuilder mFile;
    std::string mXMP;
    std::string mExif;
};

void PrintTo(const Case& file, std::ostream* out) {
    *out << file.mName;
}

HeifBuilder With(std::vector<Item> items) {
    HeifBuilder builder;
    for (Item& item : items) {
        builder.Add(std::move(item));
    }
    return builder;
}

template <typename Change>
HeifBuilder Changed(HeifBuilder builder, Change change) {
    change(builder);
    return builder;
}

std::vector<Case> Cases() {
    const std::string old = Element("old");
    const HeifBuilder both = With({ExifItem(2, ExifData("\0\0\0\0"sv)), XMPItem(3, old)});
    Item packed = XMPItem(2, Compressed(old, Compression::kZlib).value_or(""));
    packed.mEncoding = "deflate";
    Item bare = packed;
    bare.mData = Compressed(old, Compression::kDeflate).value_or("");
    Item inMeta = XMPItem(2, old);
    inMeta.mSource = ItemSource::kItemData;
    const Item gainMap{5, "hvc1", "gain map", "", "", ItemSource::kFile, {}};
    const auto box = [&old](HeifBuilder& b) { b.mBehind = UuidBoxBytes(kXMPUuid, old); };
    return {
        {"Nothing", {}, "<none>", "<none>"},
        {"Both", both, old, kTiff},
        {"Version0", Changed(both, [](HeifBuilder& b) { b.mLocationVersion = 0; }), old, kTiff},
        {"Version2AndLongNumbers",
         Changed(With({XMPItem(0x12345, old)}),
                 [](HeifBuilder& b) { b.mLocationVersion = 2, b.mReferenceVersion = 1, b.mOffsetBytes = 8; }),
         old, "<none>"},
        {"Bases", Changed(both, [](HeifBuilder& b) { b.mBaseBytes = 4; }), old, kTiff},
        {"BasesAlone", Changed(both, [](HeifBuilder& b) { b.mBaseBytes = 8, b.mOffsetBytes = 0; }), old, kTiff},
        {"TwoExtents", Changed(both, [](HeifBuilder& b) { b.mHasTwoExtents = true; }), old, kTiff},
        {"TwoReferenceBoxes", Changed(both, [](HeifBuilder& b) { b.mHasTwoReferenceBoxes = true; }), old, kTiff},
        {"FreeSpace", Changed({}, [](HeifBuilder& b) { b.mFreeBytes = 300; }), "<none>", "<none>"},
        {"OpenEnd", Changed(both, [](HeifBuilder& b) { b.mIsOpen = true; }), old, kTiff},
        {"OpenEndAndNothing", Changed({}, [](HeifBuilder& b) { b.mIsOpen = true; }), "<none>", "<none>"},
        {"Trailer", Changed(both, [](HeifBuilder& b) { b.mBehind = "\0\0\1\2\3\4\5\6 trailer"s; }), old, kTiff},
        {"MotionPhoto", Changed(both, [](HeifBuilder& b) { b.mBehind = BoxBytes("mpvd", "film"); }), old, kTiff},
        {"OtherBoxLast", Changed(both, [](HeifBuilder& b) { b.mBehind = BoxBytes("abcd", "film"); }), old, kTiff},
        {"Sequence", Changed(both, [](HeifBuilder& b) { b.mInTrack = BoxBytes("free", ""), b.mBrand = "avis"; }), old,
         kTiff},
        {"Compressed", With({packed}), old, "<none>"},
        {"CompressedWithoutFrame", With({bare}), old, "<none>"},
        {"InTheMetaBox", With({inMeta, ExifItem(3, ExifData("\0\0\0\6Exif\0\0"sv))}), old, kTiff},
        {"ExifWithoutOffset", With({ExifItem(2, kTiff)}), "<none>", kTiff},
        {"ExifWithWrongOffset", With({ExifItem(2, ExifData("\0\0\0\0Exif\0\0"sv))}), "<none>", kTiff},
        {"GainMapFirst", With({XMPItem(2, Element("gain"), {5}), gainMap, XMPItem(3, old)}), old, "<none>"},
        {"GainMapOnly", With({XMPItem(2, Element("gain"), {5}), gainMap}), "<none>", "<none>"},
        {"BoxOfItsOwn", Changed({}, box), old, "<none>"},
        {"EmptyItem", With({XMPItem(2, "")}), "<none>", "<none>"},
    };
}

class HeifTest : public testing::TestWithParam<Case> {
protected:
    const Container& mContainer = HeifContainer();
};

TEST_P(HeifTest, ReadsEditsAndRemoves) {
    const std::string file = GetParam().mFile.Build();
    ASSERT_TRUE(IsHeif(file));
    EXPECT_EQ(ReadFile(mContainer, file).mStatus, FileStatus::kFileStatus_Success);
    EXPECT_EQ(XMPOf(mContainer, file), GetParam().mXMP);
    EXPECT_EQ(ExifOf(mContainer, file), GetParam().mExif);
    for (const std::size_t size : {0, 10000}) {
        const std::string edited = Edited(mContainer, file, NewXMP(Element("new", size)));
        EXPECT_THAT(XMPOf(mContainer, edited), HasSubstr(Element("new", size)));
        EXPECT_EQ(ExifOf(mContainer, edited), GetParam().mExif);
        const std::string removed = Edited(mContainer, edited, NewXMP(""));
        EXPECT_EQ(XMPOf(mContainer, removed), "<none>");
        EXPECT_EQ(removed.find("new"), std::string::npos) << "what was removed is still in the file";
        EXPECT_EQ(ExifOf(mContainer, removed), GetParam().mExif);
    }
    const std::string named = Edited(mContainer, file, NewArtist("Somebody with a name"));
    EXPECT_EQ(ArtistOf(mContainer, named), "Somebody with a name");
    EXPECT_EQ(XMPOf(mContainer, named), GetParam().mXMP);
}

TEST_P(HeifTest, ManyEditsDoNotPileUp) {
    std::string file = GetParam().mFile.Build();
    std::size_t after = 0;
    for (std::size_t i = 0; i < 20; ++i) {
        BlockChanges changes = NewArtist(std::string(100, static_cast<char>('a' + i)));
        changes.mXMP = i % 5 == 4 ? "" : Element("new", i * 7919 % 6000);
        file = Edited(mContainer, file, changes);
        after = i == 9 ? file.size() : after;
    }
    // Without XMP both times, and with the same free space left behind the tables.
    EXPECT_LE(file.size(), after);
}

INSTANTIATE_TEST_SUITE_P(Files, HeifTest, testing::ValuesIn(Cases()),
                         [](const auto& instance) { return std::string(instance.param.mName); });

TEST(HeifFileTest, NothingMovesWhereThereIsRoom) {
    const auto places = [](const HeifBuilder& builder, const std::string& element) {
        const std::string file = builder.Build();
        const std::string edited = Edited(HeifContainer(), file, NewXMP(element));
        return std::pair(file.find(kImage), edited.find(kImage));
    };
    HeifBuilder builder;
    auto [before, after] = places(builder, Element("new"));
    EXPECT_LT(before, after);
    // What two items take in the tables is 69 bytes of a description, 16 of a location and 26 of a reference.
    for (const std::size_t room : {111, 119, 500}) {
        builder.mFreeBytes = room;
        std::tie(before, after) = places(builder, Element("new"));
        EXPECT_EQ(before, after) << room;
    }
    std::tie(before, after) = places(With({XMPItem(2, Element("old", 300))}), Element("new"));
    EXPECT_EQ(before, after);
    std::tie(before, after) = places(With({XMPItem(2, Element("old", 300))}), "");
    EXPECT_EQ(before, after);
}

TEST(HeifFileTest, PlacesThatOthersShareAreNotWrittenOver) {
    // The picture's bytes are the packet's, too.
    HeifBuilder builder = With({XMPItem(2, Element("old", 300))});
    std::string file = builder.Build();
    const MemorySource source(file);
    const BoxList top = ReadBoxes(source, {0, source.Size()});
    ItemTable table = ReadItemTable(source, *top.Find("meta"));
    table.mLocations.mItems[0].mExtents[0] = table.mLocations.mItems[1].mExtents[0];
    file.replace(file.find("iloc") - 4, ItemLocationsBox(table.mLocations).size(), ItemLocationsBox(table.mLocations));
    const std::string edited = Edited(HeifContainer(), file, NewXMP(Element("new")));
    EXPECT_THAT(edited, HasSubstr(Element("old", 300)));
    EXPECT_THAT(XMPOf(HeifContainer(), edited), HasSubstr(Element("new")));
}

TEST(HeifFileTest, WhatIsDamagedOrDependedOnIsRefused) {
    const Container& container = HeifContainer();
    Item secret = XMPItem(2, Element("old"));
    secret.mEncoding = "rot13";
    EXPECT_NE(ReadFile(container, With({secret}).Build()).mWhyReadOnly, "");
    EXPECT_NE(StatusOfEdit(container, With({secret}).Build(), NewXMP(Element("new"))), FileStatus::kFileStatus_Success);
    Item dependent{3, "hvc1", "image", "", "", ItemSource::kFile, {2}};
    const std::string bound = With({XMPItem(2, Element("old")), dependent}).Build();
    EXPECT_EQ(StatusOfEdit(container, bound, NewXMP("")), FileStatus::kFileStatus_CannotCarryXMP);
    const std::string twice = With({XMPItem(2, "a"), XMPItem(2, "b")}).Build();
    EXPECT_EQ(ReadFile(container, twice).mStatus, FileStatus::kFileStatus_DamagedFile);
    CutEverywhere(container, With({ExifItem(2, kTiff), XMPItem(3, Element("old"))}).Build());
}

TEST(HeifFileTest, SequencesWithoutItemsKeepThePacketInABox) {
    const std::string film = BoxBytes("ftyp", "msf1\0\0\0\0hevc"s) + BoxBytes("moov", "") + OpenBox("mdat", kImage);
    ASSERT_TRUE(IsHeif(film));
    const std::string edited = Edited(HeifContainer(), film, NewXMP(Element("new")));
    EXPECT_THAT(BoxTypes(edited), testing::ElementsAre("ftyp", "moov", "mdat", "uuid"));
    EXPECT_EQ(Edited(HeifContainer(), edited, NewXMP("")).size(), film.size());
    EXPECT_EQ(StatusOfEdit(HeifContainer(), film, NewArtist("Somebody")), FileStatus::kFileStatus_CannotCarryXMP);
}

TEST(HeifFileTest, BrandsTell) {
    const std::vector<std::pair<std::string, bool>> brands = {{"heic", true},
                                                              {"avis", true},
                                                              {"abcd\0\0\0\0mif1"s, true},
                                                              {"isom\0\0\0\0iso8"s, false},
                                                              {"abcd\0\0\0\0", false},
                                                              {"qt  \0\0\0\0mif1"s, false},
                                                              {"crx \0\0\0\0heic"s, false}};
    for (const auto& [brand, isHeif] : brands) {
        const std::string head = BoxBytes("ftyp", brand.size() < 8 ? brand + std::string(4, '\0') : brand);
        EXPECT_EQ(IsHeif(head), isHeif) << brand;
        EXPECT_FALSE(IsHeif(head.substr(0, 11)));
    }
}

TEST(ItemLocationsTest, HostileCountsEnd) {
    // Extents of no bytes at all: 65535 of each item.
    std::string contents("\1\0\0\0\0\0\xFF\xFF", 8);
    for (int i = 0; i < 0xFFFF; ++i) {
        contents += NumberBytes(1, 2) + NumberBytes(0, 4) + "\xFF\xFF";
    }
    EXPECT_FALSE(ReadItemLocations(contents).has_value());
}

}  // namespace
}  // namespace zephmetadata::media
