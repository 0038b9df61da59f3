#include "media/containers/jpeg/jpeg_parts.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "media/bytes.h"
#include "media/containers/container.h"
#include "media/native/iim/image_resources.h"

namespace zephmetadata::media {

namespace {

// Image resources as the first versions of Photoshop put them into JPEG files: a few bytes follow it.
constexpr std::string_view kOldPhotoshopSignature = "Adobe_Photoshop2.5:";
constexpr std::string_view kResourceSignature = "8BIM";
// The byte behind the NUL that ends the name of Exif is padding, and some writers leave other values there.
constexpr std::string_view kExifName{"Exif\0", 5};
constexpr std::size_t kLongestHead = 40;

struct Signature {
    std::string_view mBegin;
    std::size_t mSize;  // of what stands before the body
    JPEGRole mRole;
    std::uint8_t mMarker;
};
constexpr std::array kSignatures = {
    Signature{kExifName, kExifSignature.size(), JPEGRole::kExif, kMarkerAPP1},
    Signature{kXMPSignature, kXMPSignature.size(), JPEGRole::kXMP, kMarkerAPP1},
    Signature{kExtensionSignature, kExtensionSignature.size(), JPEGRole::kExtendedXMP, kMarkerAPP1},
    Signature{kPicturesSignature, kPicturesSignature.size(), JPEGRole::kPictures, kMarkerAPP2},
    Signature{kPhotoshopSignature, kPhotoshopSignature.size(), JPEGRole::kPhotoshop, kMarkerAPP13},
    Signature{kOldPhotoshopSignature, kOldPhotoshopSignature.size(), JPEGRole::kPhotoshop, kMarkerAPP13},
};

JPEGPart WithBody(const JPEGSegment& segment, JPEGRole role, std::size_t at) {
    const std::uint64_t size = std::min<std::uint64_t>(at, segment.mData.mSize);
    return {role, segment, {segment.mData.mOffset + size, segment.mData.mSize - size}};
}

JPEGPart PartOf(const ByteSource& stream, const JPEGSegment& segment) {
    const bool isPlain = std::none_of(std::begin(kSignatures), std::end(kSignatures),
                                      [&](const Signature& signature) { return signature.mMarker == segment.mMarker; });
    const std::uint64_t size = isPlain ? 0 : std::min<std::uint64_t>(kLongestHead, segment.mData.mSize);
    const std::string head = ReadUpTo(stream, segment.mData.mOffset, static_cast<std::size_t>(size));
    for (const Signature& signature : kSignatures) {
        if (signature.mMarker != segment.mMarker || !head.starts_with(signature.mBegin)) {
            continue;
        }
        const bool isOld = signature.mBegin == kOldPhotoshopSignature;
        const std::size_t resource = isOld ? head.find(kResourceSignature) : std::string::npos;
        return WithBody(segment, signature.mRole, resource == std::string::npos ? signature.mSize : resource);
    }
    return WithBody(segment, JPEGRole::kOther, 0);
}

bool BeginsTiff(const ByteSource& stream, const JPEGPart& part) {
    const std::string head = ReadUpTo(stream, part.mBody.mOffset, 4);
    return head == std::string_view("II*\0", 4) || head == std::string_view("MM\0*", 4);
}

/// Whether the last resource goes on in the next part.
bool GoesOn(const ByteSource& stream, ResourceParts& group, const JPEGPart& next) {
    const ImageResources resources = ReadImageResources(std::string_view(group.mBytes).substr(group.mLast));
    if (!resources.mResources.empty()) {
        group.mLast += static_cast<std::size_t>(resources.mResources.back().mWhole.mOffset);
    }
    const std::string head = ReadUpTo(stream, next.mBody.mOffset, kResourceSignature.size());
    return !resources.mIsWhole || !BeginsImageResource(head);
}

}  // namespace

std::vector<JPEGPart> PartsOf(const ByteSource& stream, const JPEGHeaders& headers) {
    std::vector<JPEGPart> parts;
    parts.reserve(headers.mSegments.size());
    for (const JPEGSegment& segment : headers.mSegments) {
        parts.push_back(PartOf(stream, segment));
    }
    return parts;
}

std::optional<std::string> JoinedBodies(const ByteSource& stream, const JPEGParts& parts) {
    std::string bytes;
    for (const JPEGPart* const part : parts) {
        const std::optional<std::string> body = ReadRange(stream, part->mBody);
        if (!body || bytes.size() + body->size() > kMaxBlockBytes) {
            return std::nullopt;
        }
        bytes += *body;
    }
    return bytes;
}

const JPEGPart* FirstOf(const std::vector<JPEGPart>& parts, JPEGRole role) {
    const auto found =
        std::find_if(parts.begin(), parts.end(), [&](const JPEGPart& part) { return part.mRole == role; });
    return found == parts.end() ? nullptr : &*found;
}

JPEGParts ExifParts(const ByteSource& stream, const std::vector<JPEGPart>& parts) {
    JPEGParts exif;
    const JPEGPart* part = FirstOf(parts, JPEGRole::kExif);
    if (part == nullptr) {
        return exif;
    }
    const JPEGPart* const end = parts.data() + parts.size();
    do {
        exif.push_back(part++);
    } while (part != end && part->mRole == JPEGRole::kExif && !BeginsTiff(stream, *part));
    return exif;
}

std::vector<ResourceParts> ResourcePartsOf(const ByteSource& stream, const std::vector<JPEGPart>& parts) {
    std::vector<ResourceParts> groups;
    std::uint64_t total = 0;
    for (const JPEGPart& part : parts) {
        if (part.mRole != JPEGRole::kPhotoshop) {
            continue;
        }
        const std::optional<std::string> body = ReadRange(stream, part.mBody);
        total += part.mBody.mSize;
        if (!body || total > kMaxBlockBytes) {
            break;
        }
        if (groups.empty() || !GoesOn(stream, groups.back(), part)) {
            groups.emplace_back();
        }
        groups.back().mParts.push_back(&part);
        groups.back().mBytes += *body;
    }
    return groups;
}

}  // namespace zephmetadata::media
