#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "zephmetadata/media.h"

namespace zephmetadata::media {

/// A stretch of bytes in a source.
struct Range {
    std::uint64_t mOffset = 0;
    std::uint64_t mSize = 0;

    std::uint64_t End() const { return mOffset + mSize; }
    friend bool operator==(const Range&, const Range&) = default;
};

/// Whether the range lies within @p size bytes, whatever its numbers are.
constexpr bool IsWithin(const Range& range, std::uint64_t size) {
    return range.mOffset <= size && range.mSize <= size - range.mOffset;
}

/// The bytes of a range; absent when they are not all there. Memory is taken only for a range that lies within the source:
/// the caller bounds its size where a file could claim too much.
std::optional<std::string> ReadRange(const ByteSource& source, const Range& range);
/// As many bytes from @p offset on as there are, at most @p size; empty when they cannot be read.
std::string ReadUpTo(const ByteSource& source, std::uint64_t offset, std::size_t size);

/// Bytes in memory, which it owns.
class MemorySource : public ByteSource {
public:
    explicit MemorySource(std::string bytes) : mBytes(std::move(bytes)) {}

    std::uint64_t Size() const override { return mBytes.size(); }
    bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const override;
    std::string_view Bytes() const { return mBytes; }

private:
    std::string mBytes;
};

/// A range of another source, which it shares.
class WindowSource : public ByteSource {
public:
    /// @p range is cut where the source ends.
    WindowSource(std::shared_ptr<const ByteSource> source, Range range);

    std::uint64_t Size() const override { return mRange.mSize; }
    bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const override;

private:
    std::shared_ptr<const ByteSource> mSource;
    Range mRange;
};

/// Another source, asked for whole pages: readers of directories and boxes ask for a few bytes at a time.
class PagedSource : public ByteSource {
public:
    /// @p source outlives it.
    explicit PagedSource(const ByteSource& source) : mSource(source) {}

    std::uint64_t Size() const override { return mSource.Size(); }
    bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const override;

private:
    static constexpr std::size_t kPageBytes = std::size_t{8} << 10U;
    static constexpr std::size_t kPages = 4;

    struct Page {
        std::uint64_t mNumber = 0;
        std::string mBytes;
    };
    const Page* PageAt(std::uint64_t number) const;

    const ByteSource& mSource;
    mutable std::array<Page, kPages> mPageTable;
    mutable std::size_t mOldest = 0;
};

}  // namespace zephmetadata::media
