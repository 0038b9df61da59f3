#include "media/containers/documents/psd.h"

#include <algorithm>
#include <array>
#include <limits>

#include "media/bytes.h"
#include "media/native/iim/image_resources.h"

namespace zephmetadata::media {

namespace {

constexpr std::string_view kSignature = "8BPS";
constexpr std::uint16_t kVersionPSD = 1;
constexpr std::uint16_t kVersionPSB = 2;
constexpr std::size_t kVersionAt = 4;
constexpr std::uint64_t kHeaderBytes = 26;
constexpr std::size_t kSizeBytes = 4;

/// A section that begins with its size in @p sizeBytes bytes; absent when it is not there as a whole.
std::optional<Range> SectionAt(const ByteSource& file, std::uint64_t at, std::size_t sizeBytes) {
    const std::optional<std::string> size = ReadRange(file, {at, sizeBytes});
    if (!size) {
        return std::nullopt;
    }
    const Range section{at + sizeBytes, GetNumber(*size, 0, sizeBytes, ByteOrder::kBig)};
    return IsWithin(section, file.Size()) ? std::optional(section) : std::nullopt;
}

struct Document {
    UTF8String mDetail;             ///< how it is damaged; empty when it is sound
    std::optional<Range> mSection;  ///< of the image resources
    ImageResources mResources;      ///< with places in the section
};

bool HasHugeBlock(const ImageResources& resources) {
    constexpr std::array kBlocks = {kResourceXMP, kResourceExif, kResourceIIM, kResourceIIMDigest};
    return std::any_of(std::begin(kBlocks), std::end(kBlocks), [&](std::uint16_t number) {
        const ImageResource* const found = resources.Find(number);
        return found != nullptr && found->mData.mSize > kMaxBlockBytes;
    });
}

Document ReadDocument(const std::shared_ptr<const ByteSource>& file) {
    Document document;
    const std::string head = ReadUpTo(*file, 0, kHeaderBytes);
    const std::optional<Range> palette = IsPSD(head) ? SectionAt(*file, kHeaderBytes, kSizeBytes) : std::nullopt;
    document.mSection = palette ? SectionAt(*file, palette->End(), kSizeBytes) : std::nullopt;
    if (!document.mSection) {
        document.mDetail = "it is cut off before its layers";
        return document;
    }
    const WindowSource section(file, *document.mSection);
    document.mResources = ReadImageResources(PagedSource(section));
    const std::size_t layersSize = Get16(head, kVersionAt) == kVersionPSB ? 2 * kSizeBytes : kSizeBytes;
    if (!document.mResources.mIsWhole) {
        document.mDetail = "its image resources are damaged";
    } else if (!SectionAt(*file, document.mSection->End(), layersSize)) {
        document.mDetail = "it is cut off in its layers";
    } else if (HasHugeBlock(document.mResources)) {
        document.mDetail = "a metadata block is larger than any can be";
    }
    return document;
}

/// The place of a resource's data in the file; absent for none.
std::optional<Range> DataOf(const Document& document, std::uint16_t number) {
    const ImageResource* const found = document.mResources.Find(number);
    if (found == nullptr || found->mData.mSize > kMaxBlockBytes) {
        return std::nullopt;
    }
    return Range{document.mSection->mOffset + found->mData.mOffset, found->mData.mSize};
}

std::optional<std::string> BytesOf(const ByteSource& file, const Document& document, std::uint16_t number) {
    const std::optional<Range> data = DataOf(document, number);
    return data ? ReadRange(file, *data) : std::nullopt;
}

ResourceChange XMPChange(const Document& document, const std::string& element) {
    if (element.empty()) {
        return {kResourceXMP, std::nullopt};
    }
    const std::optional<Range> old = DataOf(document, kResourceXMP);
    return {kResourceXMP, WrappedPacket(element, old ? static_cast<std::size_t>(old->mSize) : 0)};
}

/// What is to change among the resources; absent when the Exif block cannot be edited.
std::optional<std::vector<ResourceChange>> ChangesOf(const ByteSource& file, const Document& document,
                                                     const BlockChanges& changes) {
    std::vector<ResourceChange> resources;
    const std::optional<std::string> exif = BytesOf(file, document, kResourceExif);
    const bool setsExif = std::any_of(changes.mExif.begin(), changes.mExif.end(),
                                      [](const TiffEdit& edit) { return !edit.mBytes.empty(); });
    if (setsExif || (exif && !changes.mExif.empty())) {
        std::optional<std::string> edited = EditedExif(exif, changes.mExif);
        if (!edited) {
            return std::nullopt;
        }
        resources.push_back({kResourceExif, std::move(edited)});
    }
    if (changes.mXMP) {
        resources.push_back(XMPChange(document, *changes.mXMP));
    }
    if (changes.mIIM) {
        const std::vector<ResourceChange> datasets =
            IIMChanges(document.mResources, *changes.mIIM, changes.mRenewsIIMDigest);
        resources.insert(resources.end(), datasets.begin(), datasets.end());
    }
    return resources;
}

class PSD final : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        FileBlocks blocks;
        const Document document = ReadDocument(file);
        if (!document.mDetail.empty()) {
            blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
            blocks.mDetail = document.mDetail;
        }
        blocks.mXMP = BytesOf(*file, document, kResourceXMP);
        blocks.mIIM = BytesOf(*file, document, kResourceIIM);
        blocks.mIIMDigest = BytesOf(*file, document, kResourceIIMDigest);
        if (const std::optional<Range> exif = DataOf(document, kResourceExif)) {
            blocks.mExif.push_back({std::make_shared<WindowSource>(file, *exif), TiffDirectory::kMain});
        }
        return blocks;
    }

    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        const Document document = ReadDocument(file);
        if (!document.mDetail.empty()) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, document.mDetail);
        }
        const std::optional<std::vector<ResourceChange>> resources = ChangesOf(*file, document, changes);
        if (!resources) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, "its Exif block is damaged");
        }
        const Range& section = *document.mSection;
        const Plan inSection = PlanResourceChanges(document.mResources, *resources);
        const std::uint64_t total = inSection.NewSize(section.mSize);
        if (total > std::numeric_limits<std::uint32_t>::max()) {
            return RefusedEdit(FileStatus::kFileStatus_NotWritten, "its image resources would become too large");
        }
        PlannedEdit edit;
        for (const Replacement& replacement : inSection.Replacements()) {
            const Range& range = replacement.mRange;
            edit.mPlan.Replace({section.mOffset + range.mOffset, range.mSize}, replacement.mBytes, replacement.mTouch);
        }
        if (total != section.mSize) {
            edit.mPlan.Replace({section.mOffset - kSizeBytes, kSizeBytes}, NumberBytes(total, kSizeBytes),
                               Touch::kStructure);
        }
        return edit;
    }
};

}  // namespace

bool IsPSD(std::string_view head) {
    if (!head.starts_with(kSignature) || head.size() < kVersionAt + 2) {
        return false;
    }
    const std::uint16_t version = Get16(head, kVersionAt);
    return version == kVersionPSD || version == kVersionPSB;
}

const Container& PSDContainer() {
    static const PSD container;
    return container;
}

}  // namespace zephmetadata::media
