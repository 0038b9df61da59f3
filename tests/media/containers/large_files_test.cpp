#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "media/bytes.h"
#include "media/formats.h"

// What is long in a file is not read for its metadata.
namespace zephmetadata::media {
namespace {

constexpr std::uint64_t kHole = std::uint64_t{1} << 30U;

/// A file of more than a gigabyte, zeros but for its two ends. Counts what it is asked for.
class CountingSource final : public ByteSource {
public:
    CountingSource(std::string start, std::string end) : mStart(std::move(start)), mEnd(std::move(end)) {}

    std::uint64_t Size() const override { return mStart.size() + kHole + mEnd.size(); }
    bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const override {
        if (!IsWithin({offset, size}, Size())) {
            return false;
        }
        mBytesRead += size;
        std::memset(into, 0, size);
        Put(mStart, 0, offset, into, size);
        Put(mEnd, mStart.size() + kHole, offset, into, size);
        return true;
    }
    std::uint64_t BytesRead() const { return mBytesRead; }

private:
    /// What of @p part, which lies at @p place, is within the stretch from @p offset on.
    static void Put(std::string_view part, std::uint64_t place, std::uint64_t offset, void* into, std::size_t size) {
        const std::uint64_t begin = std::max(place, offset);
        const std::uint64_t end = std::min(place + part.size(), offset + size);
        if (begin < end) {
            std::memcpy(static_cast<char*>(into) + (begin - offset), part.data() + (begin - place), end - begin);
        }
    }

    std::string mStart;
    std::string mEnd;
    mutable std::uint64_t mBytesRead = 0;
};

const std::string kPacket = WrappedPacket("<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"/>");

std::string Box(std::string_view kind, std::string_view content) {
    return NumberBytes(8 + content.size(), 4).append(kind).append(content);
}
const std::string kFilmHead = Box("ftyp", std::string("isom\0\0\2\0isommp42", 16));
/// A movie with a header and a packet in its user data, whose chunk offsets lead into the hole.
const std::string kMovie =
    Box("moov",
        Box("mvhd", std::string(100, '\0')) +
            Box("trak", Box("mdia", Box("minf", Box("stbl", Box("stco", NumberBytes(1, 8) + NumberBytes(64, 4)))))) +
            Box("udta", Box("XMP_", kPacket)));

struct LargeFile {
    const char* mFormat;
    std::string mStart;
    std::string mEnd;
};
const LargeFile kLargeFiles[] = {
    {"Film", kFilmHead + NumberBytes(1, 4) + "mdat" + NumberBytes(16 + kHole, 8), kMovie},
    {"Film", kFilmHead + kMovie + NumberBytes(8 + kHole, 4) + "mdat", {}},
    {"RIFF",
     "RIFF" + NumberBytes(12 + kHole + 8 + kPacket.size(), 4, ByteOrder::kLittle) + "WAVEdata" +
         NumberBytes(kHole, 4, ByteOrder::kLittle),
     "_PMX" + NumberBytes(kPacket.size(), 4, ByteOrder::kLittle) + kPacket},
    {"AIFF", "FORM" + NumberBytes(12 + kHole + 12 + kPacket.size(), 4) + "AIFFSSND" + NumberBytes(kHole, 4),
     "APPL" + NumberBytes(4 + kPacket.size(), 4) + "XMP " + kPacket},
};

TEST(LargeFilesTest, ReadingTouchesTheMetadataAlone) {
    // The first bytes that tell the format, the packet, and a page at each end of what lies between.
    const std::uint64_t most = kSniffedBytes + kPacket.size() + std::uint64_t{32} * 1024;
    for (const LargeFile& file : kLargeFiles) {
        const auto source = std::make_shared<CountingSource>(file.mStart, file.mEnd);
        const FormatRow* const format = FormatOf(*source);
        ASSERT_NE(format, nullptr) << file.mFormat;
        EXPECT_EQ(format->mName, file.mFormat);
        const FileBlocks blocks = format->mContainer().Read(source);
        EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success) << file.mFormat << ": " << blocks.mDetail;
        EXPECT_EQ(blocks.mXMP, kPacket) << file.mFormat;
        EXPECT_LE(source->BytesRead(), most) << file.mFormat;
    }
}

}  // namespace
}  // namespace zephmetadata::media
