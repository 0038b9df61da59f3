#include "media/containers/jpeg/jpeg_extended_xmp.h"

#include <algorithm>

#include "media/bytes.h"
#include "media/containers/container.h"
#include "media/native/iim/md5.h"

namespace zephmetadata::media {

namespace {

constexpr std::size_t kGUIDBytes = 32;
constexpr std::size_t kExtensionHead = kGUIDBytes + 8;
/// ISO 16684-3 bounds the bytes of a part; readers need not take a fuller segment.
constexpr std::size_t kMaxExtensionPart = 65400;

char Upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool IsHexDigit(char c) {
    return (c >= '0' && c <= '9') || (Upper(c) >= 'A' && Upper(c) <= 'F');
}

/// @p text is what follows the name of the property: an attribute's value or an element's content.
std::string GUIDBehindName(std::string_view text) {
    constexpr std::string_view kSpace = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(" \t\r\n=>\"'");
    if (begin == std::string_view::npos || begin == 0 ||
        text.substr(0, begin).find_first_of("=>") == std::string_view::npos) {
        return {};
    }
    std::string guid(text.substr(begin, kGUIDBytes));
    const std::size_t end = text.find_first_not_of(kSpace, begin + guid.size());
    const bool isClosed =
        end != std::string_view::npos && std::string_view("<\"'").find(text[end]) != std::string_view::npos;
    if (!isClosed || guid.size() < kGUIDBytes || !std::all_of(guid.begin(), guid.end(), &IsHexDigit)) {
        return {};
    }
    std::transform(guid.begin(), guid.end(), guid.begin(), &Upper);
    return guid;
}

/// A part of an extended packet.
struct Piece {
    std::uint64_t mWhole = 0;
    std::uint64_t mOffset = 0;
    Range mData;
};

/// Bytes of the whole, given all pieces in whatever order; a repeated one says nothing new.
std::optional<std::string> Assembled(const ByteSource& stream, std::vector<Piece> pieces) {
    std::stable_sort(pieces.begin(), pieces.end(),
                     [](const Piece& left, const Piece& right) { return left.mOffset < right.mOffset; });
    std::string bytes;
    for (const Piece& piece : pieces) {
        if (piece.mWhole != pieces.front().mWhole || piece.mOffset > bytes.size() || bytes.size() > kMaxBlockBytes) {
            return std::nullopt;
        }
        if (piece.mOffset + piece.mData.mSize > bytes.size()) {
            bytes.resize(static_cast<std::size_t>(piece.mOffset));
            bytes += ReadRange(stream, piece.mData).value_or(std::string());
        }
    }
    return !pieces.empty() && bytes.size() == pieces.front().mWhole ? std::optional(bytes) : std::nullopt;
}

}  // namespace

std::string ExtensionOf(std::string_view packet) {
    constexpr std::string_view kName = ":HasExtendedXMP";
    std::string guid;
    for (std::size_t at = packet.find(kName); at != std::string_view::npos && guid.empty();
         at = packet.find(kName, at + 1)) {
        guid = GUIDBehindName(packet.substr(at + kName.size()));
    }
    return guid;
}

ExtendedPacket ExtendedXMPOf(const ByteSource& stream, const std::vector<JPEGPart>& parts, std::string_view guid) {
    ExtendedPacket extended;
    std::vector<Piece> pieces;
    for (const JPEGPart& part : parts) {
        if (part.mRole != JPEGRole::kExtendedXMP || part.mBody.mSize < kExtensionHead) {
            continue;
        }
        std::string head = ReadUpTo(stream, part.mBody.mOffset, kExtensionHead);
        head.resize(kExtensionHead, '\0');
        std::transform(head.begin(), head.begin() + kGUIDBytes, head.begin(), &Upper);
        if (head.starts_with(guid)) {
            extended.mParts.push_back(&part);
            pieces.push_back({Get32(head, kGUIDBytes),
                              Get32(head, kGUIDBytes + 4),
                              {part.mBody.mOffset + kExtensionHead, part.mBody.mSize - kExtensionHead}});
        }
    }
    extended.mPacket = Assembled(stream, std::move(pieces));
    return extended;
}

std::string ExtensionSegments(std::string_view packet) {
    const std::string head = std::string(kExtensionSignature) + ExtendedXMPGuid(packet) + NumberBytes(packet.size(), 4);
    std::string segments;
    for (std::size_t at = 0; at < packet.size(); at += kMaxExtensionPart) {
        std::string data = head + NumberBytes(at, 4);
        segments += SegmentBytes(kMarkerAPP1, data.append(packet.substr(at, kMaxExtensionPart)));
    }
    return segments;
}

std::string ExtendedXMPGuid(std::string_view packet) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string guid;
    for (const char byte : MD5(packet)) {
        const auto value = static_cast<unsigned char>(byte);
        guid += {kDigits[value >> 4U], kDigits[value & 0xFU]};
    }
    return guid;
}

}  // namespace zephmetadata::media
