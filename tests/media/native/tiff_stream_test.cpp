#include "media/native/tiff/tiff_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "media/native/tiff_fixture.h"

namespace zephmetadata::media {
namespace {

using Entry = TiffBuilder::Entry;
constexpr TiffDirectory kMain = TiffDirectory::kMain;
constexpr TiffDirectory kExif = TiffDirectory::kExif;
constexpr TiffDirectory kGPS = TiffDirectory::kGPS;

std::string Number(std::uint64_t value, std::size_t size) {
    return NumberBytes(value, size);
}
Entry Text(std::uint16_t tag, const std::string& text) {
    return {tag, TiffType::kAscii, text + '\0'};
}

/// A picture with a thumbnail, and all three directories, between them a maker note.
std::string Photo(ByteOrder order, bool isBig) {
    TiffBuilder builder(order, isBig);
    const std::uint64_t image = builder.Put("strip of image data");
    const std::uint64_t thumbnail = builder.Put("thumbnail");
    const std::uint64_t second = builder.PutDirectory({builder.Pointer(513, thumbnail), builder.Pointer(514, 9)});
    const std::uint64_t exif =
        builder.PutDirectory({Text(36867, "2001:02:03 04:05:06"),
                              {37380, TiffType::kSRational, Number(0xFFFFFFFF, 4) + Number(3, 4)},
                              {37500, TiffType::kUndefined, "maker's own note with offsets"},
                              {37510, TiffType::kUndefined, std::string("ASCII\0\0\0", 8) + "comment"}});
    const std::uint64_t gps = builder.PutDirectory(
        {{0, TiffType::kByte, std::string("\x02\x03\0\0", 4)},
         Text(1, "N"),
         {2, TiffType::kRational,
          Number(48, 4) + Number(1, 4) + Number(8, 4) + Number(1, 4) + Number(7, 4) + Number(2, 4)}});
    builder.Put("bytes nobody knows");
    return builder.Made(builder.PutDirectory({{256, TiffType::kShort, Number(640, 2)},
                                              Text(271, "Maker of cameras"),
                                              builder.Pointer(273, image),
                                              builder.Pointer(279, 19),
                                              Text(315, "Someone"),
                                              {700, TiffType::kByte, std::string(600, 'x')},
                                              builder.Pointer(34665, exif),
                                              builder.Pointer(34853, gps),
                                              {50718, TiffType::kDouble, Number(std::bit_cast<std::uint64_t>(1.5), 8)}},
                                             second));
}

struct Layout {
    const char* mName;
    ByteOrder mOrder;
    bool mIsBig;
};
constexpr Layout kLayouts[] = {{"Little", ByteOrder::kLittle, false},
                               {"Big", ByteOrder::kBig, false},
                               {"BigTiffLittle", ByteOrder::kLittle, true},
                               {"BigTiffBig", ByteOrder::kBig, true}};

class TiffLayoutTest : public testing::TestWithParam<Layout> {
protected:
    std::string mBytes = Photo(GetParam().mOrder, GetParam().mIsBig);
};
INSTANTIATE_TEST_SUITE_P(Layouts, TiffLayoutTest, testing::ValuesIn(kLayouts),
                         [](const auto& instance) { return std::string(instance.param.mName); });

TEST_P(TiffLayoutTest, FieldsOfAllTypesAreRead) {
    const MemorySource stream(mBytes);
    const TiffFields fields = ReadTiff(stream);
    EXPECT_TRUE(fields.mIsTiff && fields.mIsWhole);
    EXPECT_EQ(fields.mIsBig, GetParam().mIsBig);
    EXPECT_EQ(fields.mOrder, GetParam().mOrder);
    EXPECT_EQ(fields.mFields.size(), 9U + 4 + 3);
    EXPECT_EQ(fields.Find(kMain, 256)->Integer(), 640);
    EXPECT_EQ(fields.Find(kMain, 256)->Integer(1), std::nullopt);
    EXPECT_EQ(fields.Find(kMain, 50718)->Real(), 1.5);
    EXPECT_EQ(fields.Find(kExif, 37380)->Rational()->mNumerator, -1);
    EXPECT_EQ(fields.Find(kGPS, 2)->Real(2), 3.5);
    EXPECT_EQ(fields.Find(kGPS, 1)->Integer(), std::nullopt);
    for (const auto& [directory, tag] : {std::pair(kMain, 271), std::pair(kGPS, 1), std::pair(kExif, 37510)}) {
        const TiffField* const field = fields.Find(directory, static_cast<std::uint16_t>(tag));
        ASSERT_NE(field, nullptr) << tag;
        EXPECT_EQ(ReadRange(stream, field->mPlace), field->mBytes) << tag;
    }
}

std::vector<std::string> ReferredTo(const std::string& bytes) {
    const MemorySource stream(bytes);
    std::vector<std::string> found;
    for (const Range& range : TiffReferences(stream)) {
        found.push_back(ReadRange(stream, range).value_or("outside"));
    }
    return found;
}

/// Everything that the edits did not ask for is as it was and where it was.
void ExpectEdited(const std::string& before, const std::string& after, const std::vector<TiffEdit>& edits) {
    const TiffFields old = ReadTiff(MemorySource(before));
    const TiffFields found = ReadTiff(MemorySource(after));
    EXPECT_TRUE(found.mIsWhole);
    const auto isEdited = [&](const TiffField& field) {
        return std::any_of(edits.begin(), edits.end(), [&](const TiffEdit& edit) {
            return edit.mDirectory == field.mDirectory && edit.mTag == field.mTag;
        });
    };
    for (const TiffField& field : old.mFields) {
        const TiffField* const same = found.Find(field.mDirectory, field.mTag);
        const bool isPointer = field.mTag == 34665 || field.mTag == 34853;
        if (!isEdited(field) && !isPointer) {
            ASSERT_NE(same, nullptr) << field.mTag;
            EXPECT_EQ(same->mBytes, field.mBytes) << field.mTag;
            EXPECT_EQ(same->mType, field.mType) << field.mTag;
        }
    }
    for (const TiffEdit& edit : edits) {
        const TiffField* const field = found.Find(edit.mDirectory, edit.mTag);
        EXPECT_EQ(field == nullptr ? std::string() : field->mBytes, edit.mBytes) << edit.mTag;
        EXPECT_TRUE(field == nullptr || field->mType == edit.mType) << edit.mTag;
    }
    EXPECT_EQ(TiffReferences(MemorySource(after)), TiffReferences(MemorySource(before)));
    EXPECT_EQ(ReferredTo(after), ReferredTo(before));
}

std::string Edited(const std::string& bytes, const std::vector<TiffEdit>& edits) {
    const MemorySource stream(bytes);
    const std::optional<Plan> plan = PlanTiffEdits(stream, edits);
    return plan ? Carried(*plan, stream).value_or("unsound") : "refused";
}

const std::vector<TiffEdit> kGrowing = {
    {kMain, 315, TiffType::kAscii, std::string("Someone with a longer name\0", 27)}};
const std::vector<TiffEdit> kWithoutGPS = {{kGPS, 0, {}, {}}, {kGPS, 1, {}, {}}, {kGPS, 2, {}, {}}};

TEST_P(TiffLayoutTest, EditsLeaveEverythingElseWhereItIs) {
    const std::vector<std::vector<TiffEdit>> cases = {
        kGrowing,
        {{kMain, 315, TiffType::kAscii, std::string("Me\0", 3)}},
        {{kMain, 315, TiffType::kAscii, {}}, {kExif, 36867, TiffType::kAscii, {}}},
        {{kMain, 256, TiffType::kLong, Number(70000, 4)}},
        {{kMain, 256, TiffType::kShort, Number(1, 2) + Number(2, 2) + Number(3, 2) + Number(4, 2) + Number(5, 2)}},
        {{kMain, 270, TiffType::kAscii, std::string("New\0", 4)}, {kMain, 65001, TiffType::kShort, Number(1, 2)}},
        {{kExif, 37510, TiffType::kUndefined, std::string(400, 'c')},
         {kExif, 33434, TiffType::kRational, std::string(8, 1)}},
        {{kMain, 700, TiffType::kByte, std::string(5000, 'y')}, {kGPS, 6, TiffType::kRational, std::string(8, 1)}},
        {{kMain, 700, TiffType::kByte, std::string(600, 'y')}},
        kWithoutGPS,
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(i);
        ExpectEdited(mBytes, Edited(mBytes, cases[i]), cases[i]);
    }
}

TEST_P(TiffLayoutTest, WhatIsTakenAwayIsNotToBeFoundAnyMore) {
    ASSERT_NE(mBytes.find("Someone"), std::string::npos);
    EXPECT_EQ(Edited(mBytes, kGrowing).find(std::string("Someone\0", 8)), std::string::npos);
    EXPECT_EQ(Edited(mBytes, {{kMain, 315, TiffType::kAscii, {}}}).find("Someone"), std::string::npos);
    const TiffFields fields = ReadTiff(MemorySource(Edited(mBytes, kWithoutGPS)));
    EXPECT_EQ(fields.Find(kMain, 34853), nullptr);
}

TEST_P(TiffLayoutTest, NothingIsPlannedForWhatIsThereAlready) {
    const TiffFields fields = ReadTiff(MemorySource(mBytes));
    std::vector<TiffEdit> edits = {{kExif, 1, TiffType::kAscii, {}}};
    for (const TiffField& field : fields.mFields) {
        if (field.mTag != 34665 && field.mTag != 34853) {
            edits.push_back({field.mDirectory, field.mTag, field.mType, field.mBytes});
        }
    }
    const std::optional<Plan> plan = PlanTiffEdits(MemorySource(mBytes), edits);
    ASSERT_TRUE(plan);
    EXPECT_TRUE(plan->IsEmpty());
}

TEST_P(TiffLayoutTest, ValuesThatGrowAgainAndAgainLeaveNoGaps) {
    std::string bytes = mBytes;
    constexpr std::size_t kMost = 3000 + 700 + 60;
    for (std::size_t i = 0; i < 50; ++i) {
        const std::string_view size = i % 3 == 0 ? "" : "x";
        const std::vector<TiffEdit> edits = {{kMain, 700, TiffType::kByte, std::string(50 + i * 977 % 2900, 'x')},
                                             {kExif, 37510, TiffType::kUndefined, std::string(1 + i * 131 % 700, 'u')},
                                             {kExif, 33434, TiffType::kAscii, std::string(size)},
                                             {kGPS, 18, TiffType::kAscii, std::string(i % 60, 'g')}};
        const std::string next = Edited(bytes, edits);
        ExpectEdited(bytes, next, edits);
        bytes = next;
        // The values, the three directories, and the alignment of each.
        ASSERT_LE(bytes.size(), mBytes.size() + kMost + 20 * 20 + 64) << i;
    }
}

TEST(TiffStreamTest, AValueOfTwoFieldsIsNotWrittenOver) {
    TiffBuilder builder;
    const std::uint64_t first = builder.PutDirectory({{282, TiffType::kRational, Number(72, 4) + Number(1, 4)},
                                                      {283, TiffType::kRational, Number(72, 4) + Number(1, 4)}});
    std::string bytes = builder.Made(first);
    const std::string shared = bytes.substr(first + 2 + 8, 4);
    bytes.replace(first + 2 + 12 + 8, 4, shared);
    const std::vector<TiffEdit> edits = {{kMain, 282, TiffType::kRational, Number(300, 4) + Number(1, 4)}};
    ExpectEdited(bytes, Edited(bytes, edits), edits);
}

// What cameras and their programs do, and what damage does.
struct Oddity {
    const char* mName;
    std::vector<Entry> mMain;
    bool mIsWhole;
    std::uint64_t mNext = 0;
    std::size_t mCut = 0;  // bytes off the end
    const char* mCount = nullptr;
};
const Oddity kOddities[] = {
    {"Unsorted", {Text(315, "A"), Text(270, "B")}, true},
    {"RubbishBehindTheDirectory", {Text(315, "A")}, true, 0x7FFFFFFF},
    {"NoPointerToTheNext", {Text(315, "A")}, true, 0, 4},
    {"TextWithoutEnd", {{315, TiffType::kAscii, "A"}}, true},
    {"CountOfNone", {{270, TiffType::kAscii, {}}, Text(315, "A")}, true},
    {"UnknownType", {{270, TiffType{77}, "?"}, Text(315, "A")}, true},
    {"EmptyPointer", {Text(315, "A"), {34665, TiffType::kLong, std::string(4, '\0')}}, true},
    {"Repeated", {Text(315, "A"), Text(315, "B")}, true},
    {"ExifOutside", {Text(315, "A"), {34665, TiffType::kLong, std::string(4, '\x7F')}}, false},
    {"ExifGoesRound", {Text(315, "A"), {34665, TiffType::kLong, Number(8, 4)}}, false},
    {"PointerOfText", {Text(315, "A"), Text(34853, "abc")}, false},
    {"EntryCutOff", {Text(315, "A"), Text(316, "B")}, false, 0, 6},
    {"TooManyEntriesClaimed", {Text(315, "A")}, false, 0, 0, "\x7F\xFF"},
};
class TiffOddityTest : public testing::TestWithParam<Oddity> {};
INSTANTIATE_TEST_SUITE_P(Oddities, TiffOddityTest, testing::ValuesIn(kOddities),
                         [](const auto& instance) { return std::string(instance.param.mName); });

TEST_P(TiffOddityTest, IsReadAsFarAsItGoesAndEditedWhenNothingIsLost) {
    TiffBuilder builder;
    std::string bytes = builder.Made(builder.PutDirectory(GetParam().mMain, GetParam().mNext));
    bytes.resize(bytes.size() - GetParam().mCut);
    if (GetParam().mCount != nullptr) {
        bytes.replace(8, 2, GetParam().mCount);
    }
    const TiffFields fields = ReadTiff(MemorySource(bytes));
    EXPECT_EQ(fields.mIsWhole, GetParam().mIsWhole);
    ASSERT_NE(fields.Find(kMain, 315), nullptr);
    EXPECT_EQ(fields.Find(kMain, 315)->mBytes.front(), 'A');
    const std::vector<TiffEdit> edits = {{kMain, 315, TiffType::kAscii, "longer than before"},
                                         {kExif, 37510, TiffType::kUndefined, "new"}};
    if (!GetParam().mIsWhole) {
        EXPECT_EQ(Edited(bytes, edits), "refused");
        return;
    }
    ExpectEdited(bytes, Edited(bytes, edits), edits);
    const std::string without = Edited(bytes, {{kMain, 315, TiffType::kAscii, {}}});
    EXPECT_EQ(ReadTiff(MemorySource(without)).Find(kMain, 315), nullptr);
}

TEST(TiffStreamTest, ANewStreamHoldsWhatItIsGivenAndTheVersions) {
    const std::vector<TiffEdit> edits = {{kExif, 36867, TiffType::kAscii, std::string("2001:02:03 04:05:06\0", 20)},
                                         {kMain, 271, TiffType::kAscii, std::string("Maker\0", 6)},
                                         {kGPS, 6, TiffType::kRational, Number(9, 4) + Number(2, 4)}};
    for (const ByteOrder order : {ByteOrder::kLittle, ByteOrder::kBig}) {
        const std::string bytes = NewTiff(edits, order);
        const TiffFields fields = ReadTiff(MemorySource(bytes));
        ExpectEdited(NewTiff({}, order), bytes, edits);
        EXPECT_EQ(fields.mOrder, order);
        EXPECT_EQ(fields.mFields.size(), 1U + 2 + 2 + 2);
        EXPECT_EQ(fields.Find(kExif, 36864)->mBytes, "0232");
        EXPECT_EQ(fields.Find(kGPS, 0)->mBytes, std::string("\x02\x03\0\0", 4));
        EXPECT_EQ(fields.Find(kGPS, 6)->Real(), 4.5);
    }
}

TEST(TiffStreamTest, DirectoriesOfOneStreamMayStandAlone) {
    TiffBuilder builder(ByteOrder::kLittle);
    const std::string bytes = builder.Made(builder.PutDirectory({Text(36867, "2001"), builder.Pointer(34853, 8)}));
    const TiffFields fields = ReadTiff(MemorySource(bytes), kExif);
    EXPECT_TRUE(fields.mIsWhole);
    EXPECT_NE(fields.Find(kExif, 36867), nullptr);
    EXPECT_EQ(fields.Find(kMain, 36867), nullptr);
}

/// A stream of any size with nothing but zeros behind its start.
class LongSource final : public ByteSource {
public:
    LongSource(std::string start, std::uint64_t size) : mStart(std::move(start)), mSize(size) {}
    std::uint64_t Size() const override { return mSize; }
    bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const override {
        std::memset(into, 0, size);
        for (std::size_t i = 0; i < size && offset + i < mStart.size(); ++i) {
            static_cast<char*>(into)[i] = mStart[static_cast<std::size_t>(offset) + i];
        }
        return IsWithin({offset, size}, mSize);
    }

private:
    std::string mStart;
    std::uint64_t mSize;
};

TEST(TiffStreamTest, NoStreamOutgrowsItsOffsets) {
    constexpr std::uint64_t kLimit = std::uint64_t{1} << 32U;
    for (const Layout& layout : kLayouts) {
        const std::string bytes = Photo(layout.mOrder, layout.mIsBig);
        EXPECT_TRUE(PlanTiffEdits(LongSource(bytes, kLimit - 4096), kGrowing)) << layout.mName;
        EXPECT_EQ(PlanTiffEdits(LongSource(bytes, kLimit - 8), kGrowing).has_value(), layout.mIsBig) << layout.mName;
    }
}

TEST(TiffStreamTest, EditsThatFitNoStreamAreRefused) {
    const std::string bytes = Photo(ByteOrder::kBig, false);
    const std::vector<TiffEdit> cases = {{kMain, 34665, TiffType::kLong, Number(8, 4)},
                                         {kMain, 256, TiffType::kShort, "odd"},
                                         {kMain, 256, TiffType{99}, "x"},
                                         {kMain, 256, TiffType::kLong8, std::string(8, '\0')}};
    for (const TiffEdit& edit : cases) {
        EXPECT_EQ(Edited(bytes, {edit}), "refused") << edit.mTag << ' ' << static_cast<int>(edit.mType);
    }
    std::string raw = Photo(ByteOrder::kLittle, false);
    raw.replace(0, 4, "IIRO");
    EXPECT_TRUE(ReadTiff(MemorySource(raw)).mIsWhole);
    EXPECT_EQ(Edited(raw, kGrowing), "refused");
}

TEST(TiffStreamTest, DirectoriesThatReferToEachOtherEnd) {
    TiffBuilder builder;
    std::string offsets;
    for (std::uint64_t i = 0; i < 4000; ++i) {
        offsets += Number(8 + i, 4);
    }
    const std::uint64_t first =
        builder.PutDirectory({{273, TiffType::kLong, offsets}, {330, TiffType::kLong, offsets}}, 8);
    std::string bytes = builder.Made(first);
    bytes.replace(first + 2 + 12 + 12, 4, Number(first, 4));
    EXPECT_EQ(TiffReferences(MemorySource(bytes)).front().mOffset, 8U);
    EXPECT_LE(TiffReferences(MemorySource(bytes)).size(), 5'000'000U);
}

}  // namespace
}  // namespace zephmetadata::media
