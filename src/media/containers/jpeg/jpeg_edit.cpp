#include "media/containers/jpeg/jpeg_edit.h"

#include <algorithm>

#include "media/containers/jpeg/jpeg_extended_xmp.h"
#include "media/containers/jpeg/jpeg_parts.h"
#include "media/containers/jpeg/jpeg_pictures.h"
#include "media/native/iim/image_resources.h"

namespace zephmetadata::media {

namespace {

/// The packet in the size of the one that was there, or with room behind it where the segment has it.
std::string PacketOf(std::string_view element, std::uint64_t oldSize) {
    std::string packet = WrappedPacket(element, static_cast<std::size_t>(oldSize));
    const bool fits = packet.size() <= std::max<std::uint64_t>(kMaxJPEGPacketBytes, oldSize);
    return fits ? packet : ShortPacket(element);
}

/// Segments of one role that hold the bytes one after the other, each behind the signature.
std::string SplitSegments(std::uint8_t marker, std::string_view signature, std::string_view bytes) {
    const std::size_t most = kMaxSegmentBytes - signature.size();
    std::string segments;
    for (std::size_t at = 0; at < bytes.size(); at += most) {
        segments += SegmentBytes(marker, std::string(signature).append(bytes.substr(at, most)));
    }
    return segments;
}

/// The parts of a block that a change of it touches, from mFirst to mLast, and what they hold then.
struct TouchedParts {
    std::size_t mFirst = 0;
    std::size_t mLast = 0;
    std::string_view mBytes;
};

TouchedParts PartsBetween(const JPEGParts& parts, std::string_view before, std::string_view after) {
    const std::size_t shorter = std::min(before.size(), after.size());
    const auto same = static_cast<std::size_t>(
        std::mismatch(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(shorter), after.begin()).first -
        before.begin());
    std::size_t sameEnd = 0;
    while (sameEnd < shorter - same && before[before.size() - 1 - sameEnd] == after[after.size() - 1 - sameEnd]) {
        ++sameEnd;
    }
    TouchedParts touched;
    std::size_t begin = 0;  // of the first of them
    while (touched.mFirst + 1 < parts.size() && begin + parts[touched.mFirst]->mBody.mSize <= same) {
        begin += static_cast<std::size_t>(parts[touched.mFirst++]->mBody.mSize);
    }
    touched.mLast = touched.mFirst;
    std::size_t end = begin + static_cast<std::size_t>(parts[touched.mFirst]->mBody.mSize);
    while (touched.mLast + 1 < parts.size() && end < before.size() - sameEnd) {
        end += static_cast<std::size_t>(parts[++touched.mLast]->mBody.mSize);
    }
    touched.mBytes = after.substr(begin, after.size() - (before.size() - end) - begin);
    return touched;
}

class Editor {
public:
    explicit Editor(const ByteSource& stream)
        : mStream(stream), mHeaders(ReadJPEGHeaders(stream)), mParts(PartsOf(stream, mHeaders)) {
        if (!mHeaders.mDetail.empty()) {
            Refuse(FileStatus::kFileStatus_DamagedFile, mHeaders.mDetail);
        }
    }

    void EditExif(std::span<const TiffEdit> edits);
    void EditXMP(const std::string& element, const std::string& extended);
    void EditIIM(const std::string& datasets, bool renewsDigest);
    PlannedEdit Result();

private:
    void Refuse(FileStatus status, const char* detail) { Refuse(status, UTF8String(detail)); }
    void Refuse(FileStatus status, const UTF8String& detail) {
        if (mEdit.mStatus == FileStatus::kFileStatus_Success) {
            mEdit = RefusedEdit(status, detail);
        }
    }

    /// The place behind SOI and what has to follow it directly.
    std::uint64_t BehindAPP0() const;
    std::uint64_t BehindExif() const;
    std::uint64_t BehindXMP() const;

    /// What stands before the body of a part.
    std::string SignatureOf(const JPEGPart& part) const {
        const Range& data = part.mSegment.mData;
        return ReadRange(mStream, {data.mOffset, part.mBody.mOffset - data.mOffset}).value_or(std::string());
    }
    std::string BodyOf(const JPEGPart& part) const { return ReadRange(mStream, part.mBody).value_or(std::string()); }
    /// New segments in the place of the first of some parts.
    void ReplaceParts(std::span<const JPEGPart* const> parts, std::string segments);
    void RemoveExtension(const std::string& guid);
    void RemoveXMP();
    void EditGroup(const ResourceParts& group, std::span<const ResourceChange> changes);

    const ByteSource& mStream;
    JPEGHeaders mHeaders;
    std::vector<JPEGPart> mParts;
    PlannedEdit mEdit;
};

std::uint64_t Editor::BehindAPP0() const {
    constexpr std::uint64_t kBehindSOI = 2;
    const auto other = std::find_if(mParts.begin(), mParts.end(),
                                    [](const JPEGPart& part) { return part.mSegment.mMarker != kMarkerAPP0; });
    return other == mParts.begin() ? kBehindSOI : std::prev(other)->mSegment.mWhole.End();
}

std::uint64_t Editor::BehindExif() const {
    const JPEGParts exif = ExifParts(mStream, mParts);
    return exif.empty() ? BehindAPP0() : exif.back()->mSegment.mWhole.End();
}

std::uint64_t Editor::BehindXMP() const {
    const JPEGPart* part = FirstOf(mParts, JPEGRole::kXMP);
    if (part == nullptr) {
        return BehindExif();
    }
    // Nothing may come between the packet and its further parts.
    const JPEGPart* const last = &mParts.back();
    while (part != last && (part + 1)->mRole == JPEGRole::kExtendedXMP) {
        ++part;
    }
    return part->mSegment.mWhole.End();
}

void Editor::ReplaceParts(std::span<const JPEGPart* const> parts, std::string segments) {
    for (const JPEGPart* const part : parts) {
        mEdit.mPlan.Replace(part->mSegment.mWhole, std::move(segments), Touch::kBlock);
        segments.clear();
    }
}

void Editor::EditExif(std::span<const TiffEdit> edits) {
    const JPEGParts parts = ExifParts(mStream, mParts);
    const std::optional<std::string> old = parts.empty() ? std::nullopt : JoinedBodies(mStream, parts);
    const bool onlyRemoves =
        std::all_of(edits.begin(), edits.end(), [](const TiffEdit& edit) { return edit.mBytes.empty(); });
    if (edits.empty() || (parts.empty() && onlyRemoves)) {
        return;
    }
    const std::optional<std::string> block = EditedExif(old, edits);
    if (!block) {
        Refuse(FileStatus::kFileStatus_DamagedFile, "its Exif block is damaged");
        return;
    }
    const std::string signature = parts.empty() ? std::string(kExifSignature) : SignatureOf(*parts.front());
    if (block->size() > kMaxSegmentBytes - signature.size() && parts.size() < 2) {
        Refuse(FileStatus::kFileStatus_NotWritten, "the Exif block would become larger than JPEG allows");
        return;
    }
    std::string segments = SplitSegments(kMarkerAPP1, signature, *block);
    if (parts.empty()) {
        mEdit.mPlan.Insert(BehindAPP0(), std::move(segments), Touch::kBlock);
    } else if (block != old) {
        ReplaceParts(parts, std::move(segments));
    }
}

void Editor::RemoveExtension(const std::string& guid) {
    if (!guid.empty()) {
        ReplaceParts(ExtendedXMPOf(mStream, mParts, guid).mParts, {});
    }
}

void Editor::RemoveXMP() {
    std::vector<std::string> extensions;
    for (const JPEGPart& part : mParts) {
        if (part.mRole == JPEGRole::kXMP) {
            extensions.push_back(ExtensionOf(BodyOf(part)));
            mEdit.mPlan.Remove(part.mSegment.mWhole, Touch::kBlock);
        }
    }
    std::sort(extensions.begin(), extensions.end());
    extensions.erase(std::unique(extensions.begin(), extensions.end()), extensions.end());
    for (const std::string& guid : extensions) {
        RemoveExtension(guid);
    }
}

void Editor::EditXMP(const std::string& element, const std::string& extended) {
    if (element.empty()) {
        RemoveXMP();
        return;
    }
    const std::string guid = ExtensionOf(element);
    if (!extended.empty() && guid != ExtendedXMPGuid(extended)) {
        Refuse(FileStatus::kFileStatus_NotWritten, "the packet does not refer to its further part");
        return;
    }
    const JPEGPart* const part = FirstOf(mParts, JPEGRole::kXMP);
    const std::string packet = PacketOf(element, part == nullptr ? 0 : part->mBody.mSize);
    if (packet.size() > kMaxSegmentBytes - kXMPSignature.size()) {
        Refuse(FileStatus::kFileStatus_NotWritten, "the packet would become larger than JPEG allows");
        return;
    }
    std::string segments = SegmentBytes(kMarkerAPP1, std::string(kXMPSignature) + packet);
    segments += ExtensionSegments(extended);
    const std::string oldGuid = part == nullptr ? std::string() : ExtensionOf(BodyOf(*part));
    // A packet that goes on referring to the further part that is there keeps it.
    if (oldGuid != guid || !extended.empty()) {
        RemoveExtension(oldGuid);
    }
    if (!extended.empty() && guid != oldGuid) {
        RemoveExtension(guid);
    }
    if (part == nullptr) {
        mEdit.mPlan.Insert(BehindExif(), std::move(segments), Touch::kBlock);
    } else {
        ReplaceParts({&part, 1}, std::move(segments));
    }
}

void Editor::EditGroup(const ResourceParts& group, std::span<const ResourceChange> changes) {
    const std::string bytes = EditedImageResources(group.mBytes, changes);
    if (bytes == group.mBytes) {
        return;
    }
    const TouchedParts touched = PartsBetween(group.mParts, group.mBytes, bytes);
    const std::string signature = SignatureOf(*group.mParts[touched.mFirst]);
    ReplaceParts(std::span(group.mParts).subspan(touched.mFirst, touched.mLast - touched.mFirst + 1),
                 SplitSegments(kMarkerAPP13, signature, touched.mBytes));
}

void Editor::EditIIM(const std::string& datasets, bool renewsDigest) {
    const std::vector<ResourceParts> groups = ResourcePartsOf(mStream, mParts);
    if (groups.empty() && !datasets.empty()) {
        const std::string resources = EditedImageResources({}, IIMChanges({}, datasets));
        mEdit.mPlan.Insert(BehindXMP(), SplitSegments(kMarkerAPP13, kPhotoshopSignature, resources), Touch::kBlock);
        return;
    }
    // The datasets may stand in one group and their digest in another.
    const auto holder = std::find_if(groups.begin(), groups.end(), [](const ResourceParts& group) {
        return ReadImageResources(group.mBytes).Find(kResourceIIM) != nullptr;
    });
    const std::size_t place = holder == groups.end() ? 0 : static_cast<std::size_t>(holder - groups.begin());
    for (std::size_t i = 0; i < groups.size(); ++i) {
        std::vector<ResourceChange> changes = IIMChanges(ReadImageResources(groups[i].mBytes), datasets, renewsDigest);
        if (i != place && !datasets.empty()) {
            changes.erase(changes.begin());
        }
        EditGroup(groups[i], changes);
    }
}

PlannedEdit Editor::Result() {
    if (mEdit.mStatus == FileStatus::kFileStatus_Success &&
        !PlanPictureEntries(PictureEntries(mStream, mParts), mHeaders.mEnd, mStream.Size(), mEdit.mPlan)) {
        Refuse(FileStatus::kFileStatus_NotWritten, "a further picture would lie too far behind the first one");
    }
    return std::move(mEdit);
}

}  // namespace

PlannedEdit PlanJPEGEdit(const ByteSource& stream, const BlockChanges& changes) {
    Editor editor(stream);
    editor.EditExif(changes.mExif);
    if (changes.mXMP) {
        editor.EditXMP(*changes.mXMP, changes.mExtendedXMP);
    }
    if (changes.mIIM) {
        editor.EditIIM(*changes.mIIM, changes.mRenewsIIMDigest);
    }
    return editor.Result();
}

}  // namespace zephmetadata::media
