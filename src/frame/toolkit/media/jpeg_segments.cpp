#include "frame/toolkit/media/jpeg_segments.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <map>
#include <optional>
#include <string_view>

namespace zephmetadata::toolkit {

namespace {

/// No packet of a photo comes near this; the length in a segment is the file's own claim.
constexpr std::size_t kMaxExtendedBytes = std::size_t{64} << 20U;
constexpr std::size_t kMaxExtendedPackets = 16;

constexpr int kMarkerApp1 = 0xE1;
constexpr int kMarkerStartOfScan = 0xDA;
constexpr int kMarkerEndOfImage = 0xD9;

struct Segment {
    int mMarker = 0;
    std::string mContent;
};

/// Walks the segments of a JPEG file (ITU-T T.81, B.1.1) up to the first scan.
class SegmentReader {
public:
    explicit SegmentReader(const std::string& nativePath) : mIn(nativePath, std::ios::binary) {
        mIsJpeg = mIn.get() == 0xFF && mIn.get() == 0xD8;
    }

    /// Absent at the first scan, at the end, and where the file is no JPEG file any more.
    std::optional<Segment> Next() {
        if (!mIsJpeg || mIn.get() != 0xFF) {
            return std::nullopt;
        }
        Segment segment;
        do {
            segment.mMarker = mIn.get();
        } while (segment.mMarker == 0xFF);  // fill bytes
        if (segment.mMarker == kMarkerStartOfScan || segment.mMarker == kMarkerEndOfImage) {
            mReachedImage = segment.mMarker == kMarkerStartOfScan;
            return std::nullopt;
        }
        const int high = mIn.get();
        const int low = mIn.get();
        const int size = high * 256 + low - 2;
        if (!mIn || size < 0) {
            return std::nullopt;
        }
        segment.mContent.resize(static_cast<std::size_t>(size));
        mIn.read(segment.mContent.data(), size);
        return mIn ? std::optional(std::move(segment)) : std::nullopt;
    }

    /// What follows the segments; valid once Next answered that there are no more.
    std::istream* Image() { return mReachedImage ? &mIn : nullptr; }

private:
    std::ifstream mIn;
    bool mIsJpeg = false;
    bool mReachedImage = false;
};

std::uint32_t BigEndian32(std::string_view bytes) {
    std::uint32_t value = 0;
    for (const char c : bytes.substr(0, 4)) {
        value = value << 8U | static_cast<unsigned char>(c);
    }
    return value;
}

/// One packet as it is put together from its parts.
struct ExtendedPacket {
    std::string mText;
    std::size_t mFilled = 0;
    bool mIsSound = true;

    void Add(std::uint32_t whole, std::uint32_t offset, std::string_view part) {
        if (mText.empty()) {
            mIsSound = whole <= kMaxExtendedBytes;
            mText.resize(mIsSound ? whole : 0);
        }
        mIsSound = mIsSound && whole == mText.size() && offset <= whole && part.size() <= whole - offset;
        if (mIsSound) {
            std::copy(part.begin(), part.end(), mText.begin() + offset);
            mFilled += part.size();
        }
    }
};

}  // namespace

ExtendedPackets ExtendedJpegPackets(const std::string& nativePath) {
    using namespace std::string_view_literals;
    constexpr std::string_view kSignature = "http://ns.adobe.com/xmp/extension/\0"sv;
    constexpr std::size_t kIdentifier = 32;
    constexpr std::size_t kHeader = kIdentifier + 8;  // identifier, length of the whole, offset of the part
    std::map<std::string, ExtendedPacket> packets;
    SegmentReader reader(nativePath);
    while (const auto segment = reader.Next()) {
        std::string_view content = segment->mContent;
        if (segment->mMarker != kMarkerApp1 || !content.starts_with(kSignature) ||
            content.size() < kSignature.size() + kHeader) {
            continue;
        }
        content.remove_prefix(kSignature.size());
        const std::string identifier(content.substr(0, kIdentifier));
        if (packets.size() < kMaxExtendedPackets || packets.contains(identifier)) {
            packets[identifier].Add(BigEndian32(content.substr(kIdentifier)),
                                    BigEndian32(content.substr(kIdentifier + 4)), content.substr(kHeader));
        }
    }
    ExtendedPackets extended;
    for (auto& [identifier, packet] : packets) {
        if (packet.mIsSound && packet.mFilled == packet.mText.size()) {
            extended.mTexts.push_back(std::move(packet.mText));
        } else {
            extended.mIsComplete = false;
        }
    }
    return extended;
}

bool SameJpegImage(const std::string& left, const std::string& right) {
    SegmentReader leftReader(left);
    SegmentReader rightReader(right);
    while (leftReader.Next()) {
    }
    while (rightReader.Next()) {
    }
    std::istream* const leftImage = leftReader.Image();
    std::istream* const rightImage = rightReader.Image();
    if (leftImage == nullptr || rightImage == nullptr) {
        return leftImage == rightImage;
    }
    using Bytes = std::istreambuf_iterator<char>;
    return std::equal(Bytes(*leftImage), Bytes(), Bytes(*rightImage), Bytes());
}

}  // namespace zephmetadata::toolkit
