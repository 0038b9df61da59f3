// TIFF streams, files and Exif blocks: read as far as they go, and edited without a change to what was not asked for.
#include <algorithm>
#include <array>

#include "media/files/plan_check.h"
#include "media/native/exif/exif_values.h"
#include "support.h"

using namespace zephmetadata::media;

namespace {

constexpr std::string_view kDC = "http://purl.org/dc/elements/1.1/";
constexpr std::string_view kTIFF = "http://ns.adobe.com/tiff/1.0/";
constexpr std::string_view kEXIF = "http://ns.adobe.com/exif/1.0/";

/// The stream's last byte says which of them are made.
std::vector<MirrorChange> Changes(unsigned choice) {
    const auto simple = [](std::string_view nameSpace, std::string_view property, const char* text) {
        return MirrorChange{nameSpace, property, NativeValue{nameSpace, property, ValueForm::kSimple, {{"", text}}}};
    };
    const auto all = std::to_array<MirrorChange>({
        simple(kTIFF, "Make", "Lumenta"),
        simple(kEXIF, "FNumber", "81/10"),
        simple(kEXIF, "GPSLatitude", "58,58.1982N"),
        simple(kEXIF, "DateTimeOriginal", "2024-05-18T05:42:10.5+02:00"),
        {kEXIF, "UserComment",
         NativeValue{kEXIF, "UserComment", ValueForm::kLangAlt, {{"x-default", "two boats \xCE\xA9"}}}},
        {kDC, "description",
         NativeValue{kDC, "description", ValueForm::kLangAlt, {{"x-default", std::string(300, 'd')}}}},
        {kDC, "creator", std::nullopt},
        {kEXIF, "GPSLongitude", std::nullopt},
    });
    std::vector<MirrorChange> changes;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if ((choice >> i & 1U) != 0) {
            changes.push_back(all[i]);
        }
    }
    return changes;
}

/// The header and the three directories, as far as they are there.
std::vector<Range> Tables(const MemorySource& stream, const TiffFields& fields) {
    const std::size_t wide = fields.mIsBig ? 8 : 4;
    const auto numberAt = [&](std::uint64_t offset, std::size_t size) {
        const std::optional<std::string> bytes = ReadRange(stream, {offset, size});
        return bytes ? GetNumber(*bytes, 0, size, fields.mOrder) : 0;
    };
    std::vector<std::uint64_t> starts = {numberAt(wide, wide)};
    for (const std::uint16_t tag : std::to_array<std::uint16_t>({0x8769, 0x8825})) {
        const TiffField* const pointer = fields.Find(TiffDirectory::kMain, tag);
        starts.push_back(static_cast<std::uint64_t>(pointer == nullptr ? 0 : pointer->Integer().value_or(0)));
    }
    const std::size_t countBytes = fields.mIsBig ? 8 : 2;
    const std::size_t entryBytes = 4 + 2 * wide;
    std::vector<Range> tables = {{0, 2 * wide}};
    for (const std::uint64_t start : starts) {
        tables.push_back({start, countBytes + numberAt(start, countBytes) * entryBytes + wide});
    }
    return tables;
}

/// Whether values of their own lie in what says where they are, which changes with them: no program writes that.
bool IsTwisted(const MemorySource& stream, const TiffFields& fields) {
    const std::vector<Range> tables = Tables(stream, fields);
    return std::any_of(fields.mFields.begin(), fields.mFields.end(), [&](const TiffField& field) {
        return field.mPlace.mSize > (fields.mIsBig ? 8U : 4U) &&
               std::any_of(tables.begin(), tables.end(), [&](const Range& table) {
                   return field.mPlace.mOffset < table.End() && table.mOffset < field.mPlace.End();
               });
    });
}

bool IsOf(const std::vector<TiffEdit>& edits, const TiffField& field) {
    return std::any_of(edits.begin(), edits.end(), [&](const TiffEdit& edit) {
        return edit.mDirectory == field.mDirectory && edit.mTag == field.mTag;
    });
}

void RequireEdited(const TiffFields& before, const TiffFields& after, const std::vector<TiffEdit>& edits) {
    fuzz::Require(after.mIsTiff && after.mIsWhole, "an edited stream is whole");
    for (const TiffField& field : before.mFields) {
        const bool isPointer = field.mTag == 0x8769 || field.mTag == 0x8825;
        if (isPointer || IsOf(edits, field)) {
            continue;
        }
        const TiffField* const same = after.Find(field.mDirectory, field.mTag);
        fuzz::Require(same != nullptr && same->mType == field.mType && same->mBytes == field.mBytes,
                      "a field that was not asked for stays");
    }
    for (const TiffEdit& edit : edits) {
        const TiffField* const field = after.Find(edit.mDirectory, edit.mTag);
        fuzz::Require((field == nullptr ? std::string() : field->mBytes) == edit.mBytes,
                      "a field says what it was set to");
    }
}

/// The stream with the edits; null when it is refused.
std::shared_ptr<const MemorySource> Edited(const MemorySource& stream, const std::vector<TiffEdit>& edits) {
    const std::optional<Plan> plan = PlanTiffEdits(stream, edits);
    if (!plan) {
        return nullptr;
    }
    std::optional<std::string> bytes = Carried(*plan, stream);
    fuzz::Require(bytes.has_value(), "a plan is sound");
    auto made = std::make_shared<const MemorySource>(*std::move(bytes));
    fuzz::Require(ReferenceDifference(*plan, TiffReferences(stream), TiffReferences(*made)).empty(),
                  "what the stream refers to stays where it is");
    return made;
}

void EditStream(const MemorySource& stream, const TiffFields& fields, const std::vector<MirrorChange>& changes) {
    std::vector<RefusedProperty> refused;
    const std::vector<TiffEdit> edits = ExifEdits(fields, changes, &refused);
    fuzz::Require(refused.empty(), "the values fit into the fields");
    const auto made = Edited(stream, edits);
    if (!made || IsTwisted(stream, fields)) {
        return;
    }
    const TiffFields after = ReadTiff(*made);
    RequireEdited(fields, after, edits);
    for (const MirrorChange& change : changes) {
        fuzz::Require(!change.mValue || ExifAgrees(after, *change.mValue), "edited fields say what was asked for");
    }
    fuzz::Require(ExifEdits(after, changes).empty(), "the same edit again changes nothing");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemorySource stream{std::string(fuzz::Text(data, size))};
    for (const TiffDirectory first : {TiffDirectory::kExif, TiffDirectory::kGPS}) {
        ExifValues(ReadTiff(stream, first));
    }
    const TiffFields fields = ReadTiff(stream);
    for (const NativeValue& value : ExifValues(fields)) {
        fuzz::Require(ExifAgrees(fields, value), "fields agree with what they say");
    }
    const std::vector<MirrorChange> changes = Changes(size == 0 ? 1 : data[size - 1]);
    if (fields.mIsTiff) {
        EditStream(stream, fields, changes);
        return 0;
    }
    const std::vector<TiffEdit> edits = ExifEdits(fields, changes);
    RequireEdited({}, ReadTiff(MemorySource(NewTiff(edits))), edits);
    return 0;
}
