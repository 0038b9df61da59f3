#include "media/containers/chunks/riff_form.h"

#include <algorithm>

namespace zephmetadata::media {

namespace {

constexpr std::uint32_t kSizeElsewhere = 0xFFFFFFFF;
constexpr std::size_t kSizeBytes = 4;

/// What a ds64 chunk says.
struct LongSizes {
    Range mPlace;
    std::uint64_t mForm = 0;
    std::vector<LongChunkSize> mChunks;
};

/// The sizes of the form, of its data, the number of samples, and a table of the sizes of other chunks.
std::optional<LongSizes> ReadLongSizes(const ByteSource& file, std::uint64_t at) {
    constexpr std::size_t kFixedBytes = 28;
    constexpr std::size_t kRowBytes = 12;
    constexpr std::size_t kMaxRows = 100;
    const std::string header = ReadUpTo(file, at, kChunkHeaderBytes);
    if (header.size() < kChunkHeaderBytes || !header.starts_with("ds64")) {
        return std::nullopt;
    }
    const std::size_t size =
        std::min<std::size_t>(Get32(header, 4, ByteOrder::kLittle), kFixedBytes + kMaxRows * kRowBytes);
    const std::string data = ReadUpTo(file, at + kChunkHeaderBytes, size);
    if (data.size() < kFixedBytes) {
        return std::nullopt;
    }
    LongSizes sizes{{at + kChunkHeaderBytes, 8}, Get64(data, 0, ByteOrder::kLittle), {}};
    sizes.mChunks.push_back({"data", Get64(data, 8, ByteOrder::kLittle)});
    const std::size_t rows =
        std::min<std::size_t>(Get32(data, 24, ByteOrder::kLittle), (data.size() - kFixedBytes) / kRowBytes);
    for (std::size_t row = 0; row < rows; ++row) {
        const std::size_t place = kFixedBytes + row * kRowBytes;
        sizes.mChunks.push_back({data.substr(place, 4), Get64(data, place + 4, ByteOrder::kLittle)});
    }
    return sizes;
}

bool HasLongSizes(std::string_view header) {
    return header.starts_with("RF64") || header.starts_with("BW64");
}

}  // namespace

Form ReadForm(const ByteSource& file, std::uint64_t at, const ChunkLayout& layout) {
    Form form;
    form.mLayout = layout;
    const auto header = ReadRange(file, {at, kFormHeaderBytes});
    if (!header) {
        return form;
    }
    form.mName = header->substr(kChunkHeaderBytes);
    std::uint64_t size = Get32(*header, kSizeBytes, layout.mOrder);
    std::vector<LongChunkSize> chunkSizes;
    if (auto sizes = HasLongSizes(*header) ? ReadLongSizes(file, at + kFormHeaderBytes) : std::nullopt) {
        chunkSizes = std::move(sizes->mChunks);
        if (size == kSizeElsewhere) {
            size = sizes->mForm;
            form.mLongSize = sizes->mPlace;
        }
    }
    form.mIsOpen = !HasLongSizes(*header) && (size == 0 || size == kSizeElsewhere);
    const std::uint64_t there = file.Size() - at - kChunkHeaderBytes;
    const bool isThere = size <= there && size >= kFormHeaderBytes - kChunkHeaderBytes;
    form.mWhole = {at, kChunkHeaderBytes + (isThere ? size : there)};
    form.mChunks =
        ReadChunks(file, {at + kFormHeaderBytes, form.mWhole.mSize - kFormHeaderBytes}, layout, {}, chunkSizes);
    form.mIsWhole = isThere && form.mChunks.mIsWhole;
    return form;
}

void PlanAppend(Plan& plan, const Form& form, std::string_view type, std::string_view data) {
    // The last chunk may have been left without its padding.
    const auto isAtEnd = [&](const Replacement& replacement) { return replacement.mRange.End() == form.mWhole.End(); };
    const bool isOdd =
        form.mWhole.mSize % 2 != 0 && std::none_of(plan.Replacements().begin(), plan.Replacements().end(), isAtEnd);
    plan.Insert(form.mWhole.End(), std::string(isOdd ? 1 : 0, '\0') + ChunkBytes(form.mLayout, type, data),
                Touch::kBlock);
}

bool PlanFormSize(Plan& plan, const Form& form) {
    std::uint64_t size = form.mWhole.mSize - kChunkHeaderBytes;
    for (const Replacement& replacement : plan.Replacements()) {
        if (replacement.mRange.mOffset >= form.mWhole.mOffset && replacement.mRange.End() <= form.mWhole.End()) {
            size += replacement.mBytes.size();
            size -= replacement.mRange.mSize;
        }
    }
    if (size == form.mWhole.mSize - kChunkHeaderBytes) {
        return true;
    }
    const Range place = form.mLongSize.value_or(Range{form.mWhole.mOffset + kSizeBytes, kSizeBytes});
    plan.Replace(place, NumberBytes(size, place.mSize, form.mLayout.mOrder), Touch::kStructure);
    return form.mLongSize || size < kSizeElsewhere;
}

}  // namespace zephmetadata::media
