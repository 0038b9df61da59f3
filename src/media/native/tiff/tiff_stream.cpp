#include "media/native/tiff/tiff_stream.h"

#include <algorithm>

#include "media/native/tiff/tiff_layout.h"

namespace zephmetadata::media {

namespace {

/// Entries may claim the same bytes over and over: what all of them together may take of memory.
constexpr std::uint64_t kMaxBytesOfFields = 64 * kMaxFieldBytes;
/// Blobs of all directories together: directories may share their lists of strips.
constexpr std::size_t kMaxReferences = 4'000'000;

/// The fields of one directory after another.
class FieldReader {
public:
    FieldReader(const ByteSource& stream, TiffFields& fields) : mStream(stream), mFields(fields) {}
    void Add(TiffDirectory directory, const TiffTable& table);

private:
    std::optional<std::string> Values(const TiffEntry& entry);

    const ByteSource& mStream;
    TiffFields& mFields;
    std::uint64_t mLeft = kMaxBytesOfFields;
};

/// Absent when they cannot be read.
std::optional<std::string> FieldReader::Values(const TiffEntry& entry) {
    const std::uint64_t size = entry.mPlace.mSize;
    if (!IsWithin(entry.mPlace, mStream.Size())) {
        return std::nullopt;
    }
    if (size > kMaxFieldBytes || size > mLeft) {
        return std::string();
    }
    mLeft -= size;
    auto bytes = ReadRange(mStream, entry.mPlace);
    if (!bytes) {
        return std::nullopt;
    }
    const auto type = static_cast<TiffType>(entry.mType);
    return mFields.mOrder == ByteOrder::kBig ? *std::move(bytes) : WithSwappedUnits(*std::move(bytes), type);
}

void FieldReader::Add(TiffDirectory directory, const TiffTable& table) {
    std::vector<bool> seen(65536);
    for (const TiffEntry& entry : table.mEntries) {
        const auto type = static_cast<TiffType>(entry.mType);
        if (seen[entry.mTag] || TiffTypeBytes(type) == 0) {
            continue;
        }
        auto values = Values(entry);
        if (!values) {
            mFields.mIsWhole = false;
            continue;
        }
        seen[entry.mTag] = true;
        mFields.mFields.push_back({directory, entry.mTag, type, entry.mCount, *std::move(values), entry.mPlace});
    }
}

}  // namespace

const TiffField* TiffFields::Find(TiffDirectory directory, std::uint16_t tag) const {
    const auto found = std::find_if(mFields.begin(), mFields.end(), [&](const TiffField& field) {
        return field.mDirectory == directory && field.mTag == tag;
    });
    return found == mFields.end() ? nullptr : &*found;
}

TiffFields ReadTiff(const ByteSource& stream, TiffDirectory first) {
    TiffFields fields;
    const PagedSource pages(stream);
    const std::optional<TiffHeader> header = ReadTiffHeader(pages);
    if (!header) {
        fields.mIsWhole = false;
        return fields;
    }
    fields.mIsTiff = true;
    fields.mIsBig = header->mIsBig;
    fields.mOrder = header->mOrder;
    const TiffTables tables = ReadTiffTables(pages, *header, first);
    fields.mIsWhole = tables.mIsWhole;
    FieldReader reader(pages, fields);
    for (std::size_t i = 0; i < tables.mTables.size(); ++i) {
        if (tables.mTables[i]) {
            reader.Add(static_cast<TiffDirectory>(i), *tables.mTables[i]);
        }
    }
    return fields;
}

std::vector<Range> TiffReferences(const ByteSource& stream) {
    std::vector<Range> references;
    const PagedSource pages(stream);
    const std::optional<TiffHeader> header = ReadTiffHeader(pages);
    if (!header) {
        return references;
    }
    WalkTiff(pages, *header, [&](const TiffTable& table, std::optional<TiffDirectory> kind) {
        if (!kind) {  // the three are what an edit may move
            references.push_back({table.mRange.mOffset, table.mRange.mSize - table.mNext.size()});
        }
        if (references.size() < kMaxReferences) {
            AppendTiffBlobs(pages, *header, table, references);
        }
    });
    // What is not there cannot be moved.
    std::erase_if(references, [&](const Range& range) {
        return range.mOffset >= stream.Size() || !IsWithin(range, stream.Size());
    });
    return references;
}

}  // namespace zephmetadata::media
