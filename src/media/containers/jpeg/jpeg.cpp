#include "media/containers/jpeg/jpeg.h"

#include "media/containers/jpeg/jpeg_edit.h"
#include "media/containers/jpeg/jpeg_extended_xmp.h"
#include "media/containers/jpeg/jpeg_parts.h"
#include "media/containers/jpeg/jpeg_pictures.h"
#include "media/native/iim/image_resources.h"

namespace zephmetadata::media {

namespace {

void ReadPacket(const ByteSource& stream, const std::vector<JPEGPart>& parts, FileBlocks& blocks) {
    const JPEGPart* const part = FirstOf(parts, JPEGRole::kXMP);
    if (part == nullptr) {
        return;
    }
    blocks.mXMP = ReadRange(stream, part->mBody);
    if (!blocks.mXMP) {
        blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
        blocks.mDetail = "its packet cannot be read";
        return;
    }
    const std::string guid = ExtensionOf(*blocks.mXMP);
    if (guid.empty()) {
        return;
    }
    ExtendedPacket extended = ExtendedXMPOf(stream, parts, guid);
    blocks.mIsWhole = extended.mPacket.has_value();
    if (extended.mPacket) {
        blocks.mExtendedXMP.push_back(std::move(*extended.mPacket));
    }
}

void ReadExif(const std::shared_ptr<const ByteSource>& stream, const std::vector<JPEGPart>& parts, FileBlocks& blocks) {
    const JPEGParts exif = ExifParts(*stream, parts);
    if (exif.size() == 1) {
        blocks.mExif.push_back({std::make_shared<WindowSource>(stream, exif.front()->mBody), TiffDirectory::kMain});
    } else if (std::optional<std::string> bytes = JoinedBodies(*stream, exif); bytes && !exif.empty()) {
        blocks.mExif.push_back({std::make_shared<MemorySource>(std::move(*bytes)), TiffDirectory::kMain});
    }
}

void ReadResources(const ByteSource& stream, const std::vector<JPEGPart>& parts, FileBlocks& blocks) {
    for (const ResourceParts& group : ResourcePartsOf(stream, parts)) {
        const ImageResources resources = ReadImageResources(group.mBytes);
        const auto read = [&](std::uint16_t number, std::optional<std::string>& into) {
            const ImageResource* const found = resources.Find(number);
            if (found != nullptr && !into) {
                into = group.mBytes.substr(static_cast<std::size_t>(found->mData.mOffset),
                                           static_cast<std::size_t>(found->mData.mSize));
            }
        };
        read(kResourceIIM, blocks.mIIM);
        read(kResourceIIMDigest, blocks.mIIMDigest);
    }
}

class JPEG final : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override { return ReadJPEGBlocks(file); }

    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        return PlanJPEGEdit(*file, changes);
    }

    std::vector<Range> References(const ByteSource& file) const override {
        std::vector<Range> pictures;
        for (const PictureEntry& entry : PictureEntries(file, PartsOf(file, ReadJPEGHeaders(file)))) {
            if (!entry.mIsFirst && IsWithin(entry.mPicture, file.Size())) {
                pictures.push_back(entry.mPicture);
            }
        }
        return pictures;
    }

    std::size_t MaxPacketBytes() const override { return kMaxJPEGPacketBytes - ShortPacket({}).size(); }
};

}  // namespace

bool IsJPEG(std::string_view head) {
    return head.starts_with("\xFF\xD8\xFF");
}

const Container& JPEGContainer() {
    static const JPEG container;
    return container;
}

FileBlocks ReadJPEGBlocks(const std::shared_ptr<const ByteSource>& stream) {
    FileBlocks blocks;
    const JPEGHeaders headers = ReadJPEGHeaders(*stream);
    if (!headers.mDetail.empty()) {
        blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
        blocks.mDetail = headers.mDetail;
    }
    const std::vector<JPEGPart> parts = PartsOf(*stream, headers);
    ReadPacket(*stream, parts, blocks);
    ReadExif(stream, parts, blocks);
    ReadResources(*stream, parts, blocks);
    return blocks;
}

}  // namespace zephmetadata::media
