#include "media/files/byte_sources.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "zephmetadata/byte_target.h"

namespace zephmetadata {

ByteSource::~ByteSource() = default;
ByteTarget::~ByteTarget() = default;

namespace media {

std::optional<std::string> ReadRange(const ByteSource& source, const Range& range) {
    if (!IsWithin(range, source.Size()) || range.mSize > std::numeric_limits<std::size_t>::max()) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(range.mSize), '\0');
    if (!bytes.empty() && !source.ReadAt(range.mOffset, bytes.data(), bytes.size())) {
        return std::nullopt;
    }
    return bytes;
}

std::string ReadUpTo(const ByteSource& source, std::uint64_t offset, std::size_t size) {
    const std::uint64_t there = source.Size();
    const std::uint64_t left = offset < there ? there - offset : 0;
    return ReadRange(source, {offset, std::min<std::uint64_t>(left, size)}).value_or(std::string());
}

bool MemorySource::ReadAt(std::uint64_t offset, void* into, std::size_t size) const {
    if (!IsWithin({offset, size}, mBytes.size())) {
        return false;
    }
    if (size > 0) {
        std::memcpy(into, mBytes.data() + offset, size);
    }
    return true;
}

WindowSource::WindowSource(std::shared_ptr<const ByteSource> source, Range range)
    : mSource(std::move(source)), mRange(range) {
    mRange.mOffset = std::min(mRange.mOffset, mSource->Size());
    mRange.mSize = std::min(mRange.mSize, mSource->Size() - mRange.mOffset);
}

bool WindowSource::ReadAt(std::uint64_t offset, void* into, std::size_t size) const {
    return IsWithin({offset, size}, mRange.mSize) && mSource->ReadAt(mRange.mOffset + offset, into, size);
}

const PagedSource::Page* PagedSource::PageAt(std::uint64_t number) const {
    for (const Page& page : mPageTable) {
        if (!page.mBytes.empty() && page.mNumber == number) {
            return &page;
        }
    }
    Page& page = mPageTable[mOldest];
    mOldest = (mOldest + 1) % kPages;
    page = {number, ReadUpTo(mSource, number * kPageBytes, kPageBytes)};
    return page.mBytes.empty() ? nullptr : &page;
}

bool PagedSource::ReadAt(std::uint64_t offset, void* into, std::size_t size) const {
    if (!IsWithin({offset, size}, Size())) {
        return false;
    }
    if (size >= kPageBytes) {
        return mSource.ReadAt(offset, into, size);
    }
    auto* to = static_cast<char*>(into);
    while (size > 0) {
        const Page* const page = PageAt(offset / kPageBytes);
        const auto at = static_cast<std::size_t>(offset % kPageBytes);
        if (page == nullptr || at >= page->mBytes.size()) {
            return false;
        }
        const std::size_t part = std::min(size, page->mBytes.size() - at);
        to = std::copy_n(page->mBytes.begin() + static_cast<std::ptrdiff_t>(at), part, to);
        offset += part;
        size -= part;
    }
    return true;
}

}  // namespace media
}  // namespace zephmetadata
