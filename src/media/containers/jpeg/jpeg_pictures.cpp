#include "media/containers/jpeg/jpeg_pictures.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace zephmetadata::media {

namespace {

constexpr std::uint16_t kTagEntries = 0xB002;
constexpr std::size_t kHeaderBytes = 8;
constexpr std::size_t kFieldBytes = 12;
// An entry: attributes, size, offset, two numbers of other entries.
constexpr std::size_t kEntryBytes = 16;
constexpr std::size_t kSizeAt = 4;
constexpr std::size_t kOffsetAt = 8;

/// The bytes of a directory, a small TIFF stream, and where its entries stand in it.
struct Directory {
    std::string mBytes;
    ByteOrder mOrder = ByteOrder::kBig;
    Range mEntries;
};

std::optional<Range> EntriesIn(std::string_view bytes, ByteOrder order) {
    const std::uint64_t begin = Get32(bytes, 4, order);
    if (!IsWithin({begin, 2}, bytes.size())) {
        return std::nullopt;
    }
    const std::uint64_t fields = begin + 2;
    const std::uint64_t count = Get16(bytes, static_cast<std::size_t>(begin), order);
    for (std::uint64_t at = fields; at < fields + count * kFieldBytes; at += kFieldBytes) {
        if (!IsWithin({at, kFieldBytes}, bytes.size())) {
            return std::nullopt;
        }
        const auto field = static_cast<std::size_t>(at);
        const Range values{Get32(bytes, field + 8, order), Get32(bytes, field + 4, order)};
        // What would be written over its own directory is none.
        const bool isApart = values.mOffset >= fields + count * kFieldBytes;
        if (Get16(bytes, field, order) == kTagEntries && isApart && IsWithin(values, bytes.size())) {
            return values;
        }
    }
    return std::nullopt;
}

std::optional<Directory> DirectoryIn(const ByteSource& stream, const Range& body) {
    Directory directory{ReadRange(stream, body).value_or(std::string()), ByteOrder::kBig, {}};
    const std::string& bytes = directory.mBytes;
    if (bytes.size() < kHeaderBytes || (!bytes.starts_with("II*") && bytes.substr(0, 4) != std::string("MM\0*", 4))) {
        return std::nullopt;
    }
    directory.mOrder = bytes.front() == 'I' ? ByteOrder::kLittle : ByteOrder::kBig;
    const std::optional<Range> entries = EntriesIn(bytes, directory.mOrder);
    if (!entries) {
        return std::nullopt;
    }
    directory.mEntries = *entries;
    return directory;
}

void AddEntries(const Directory& directory, std::uint64_t base, std::vector<PictureEntry>& entries) {
    const std::uint64_t end = directory.mEntries.mOffset + directory.mEntries.mSize / kEntryBytes * kEntryBytes;
    for (std::uint64_t at = directory.mEntries.mOffset; at < end; at += kEntryBytes) {
        const auto place = static_cast<std::size_t>(at);
        const std::uint64_t size = Get32(directory.mBytes, place + kSizeAt, directory.mOrder);
        const std::uint64_t offset = Get32(directory.mBytes, place + kOffsetAt, directory.mOrder);
        if (size > 0) {
            // The first picture, and it alone, has no offset.
            entries.push_back({{base + at + kSizeAt, 4},
                               {base + at + kOffsetAt, 4},
                               directory.mOrder,
                               {offset == 0 ? 0 : base + offset, size},
                               offset == 0,
                               base});
        }
    }
}

/// What a field has to say once the plan is carried out; absent when it stays as it is.
struct NewField {
    Range mField;
    std::uint64_t mValue = 0;
    ByteOrder mOrder = ByteOrder::kBig;
};

std::optional<NewField> NewFieldOf(const PictureEntry& entry, std::uint64_t headersEnd, const OffsetMap& map) {
    const Range& picture = entry.mPicture;
    if (entry.mIsFirst) {
        // A size that leaves the headers out means something else.
        const std::optional<std::uint64_t> end = map.NewOffset(picture.mSize);
        return picture.mSize >= headersEnd && end ? std::optional(NewField{entry.mSizeField, *end, entry.mOrder})
                                                  : std::nullopt;
    }
    // A picture that somebody cut off moves as well, lest its entry come to point into another.
    const std::optional<std::uint64_t> begin = map.NewOffset(picture.mOffset);
    const std::optional<std::uint64_t> base = map.NewOffset(entry.mBase);
    if (!begin || !base || *begin < *base) {
        return std::nullopt;
    }
    return NewField{entry.mOffsetField, *begin - *base, entry.mOrder};
}

}  // namespace

std::vector<PictureEntry> PictureEntries(const ByteSource& stream, const std::vector<JPEGPart>& parts) {
    std::vector<PictureEntry> entries;
    for (const JPEGPart& part : parts) {
        const std::optional<Directory> directory =
            part.mRole == JPEGRole::kPictures ? DirectoryIn(stream, part.mBody) : std::nullopt;
        if (directory) {
            AddEntries(*directory, part.mBody.mOffset, entries);
        }
    }
    return entries;
}

bool PlanPictureEntries(const std::vector<PictureEntry>& entries, std::uint64_t headersEnd, std::uint64_t streamSize,
                        Plan& plan) {
    std::vector<NewField> fields;
    const OffsetMap map(plan);
    for (const PictureEntry& entry : entries) {
        const std::optional<NewField> field = NewFieldOf(entry, headersEnd, map);
        const bool isTooFar = field && field->mValue > std::numeric_limits<std::uint32_t>::max();
        if (isTooFar && entry.mPicture.mOffset < streamSize) {
            return false;
        }
        const std::uint64_t old = entry.mIsFirst ? entry.mPicture.mSize : entry.mPicture.mOffset - entry.mBase;
        if (field && !isTooFar && field->mValue != old) {
            fields.push_back(*field);
        }
    }
    for (const NewField& field : fields) {
        plan.Replace(field.mField, NumberBytes(field.mValue, field.mField.mSize, field.mOrder), Touch::kStructure);
    }
    return true;
}

}  // namespace zephmetadata::media
