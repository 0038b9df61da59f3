#include "media/containers/tiff/tiff.h"

#include <algorithm>
#include <array>

#include "media/containers/tiff/tiff_blocks.h"
#include "media/native/iim/image_resources.h"
#include "media/native/tiff/tiff_layout.h"

namespace zephmetadata::media {

namespace {

constexpr std::string_view kDamaged = "A directory or a value of the TIFF file lies outside of it.";
constexpr std::string_view kCutOff = "Image data of the TIFF file lies outside of it.";
constexpr std::string_view kTooLarge = "The TIFF file would outgrow its offsets of 32 bits.";

/// Whether image data of the first directory is cut off. Numbers that are missing claim nothing. Files that were stripped
/// of all image data are kept for their metadata: what is written behind that lies where image data is said to be, so that
/// a little of it seems to be there.
bool IsCutOff(const TiffFields& fields, std::uint64_t size) {
    constexpr auto kPlaces =
        std::to_array<std::pair<std::uint16_t, std::uint16_t>>({{273, 279}, {324, 325}});  // strips, tiles
    constexpr double kLittle = 1.0 / 16;
    double claimed = 0;
    double there = 0;
    for (const auto& [offsetTag, sizeTag] : kPlaces) {
        const TiffField* const offsets = fields.Find(TiffDirectory::kMain, offsetTag);
        const TiffField* const sizes = fields.Find(TiffDirectory::kMain, sizeTag);
        for (std::size_t i = 0; offsets != nullptr && sizes != nullptr; ++i) {
            const auto offset = offsets->Integer(i);
            const auto bytes = sizes->Integer(i);
            if (!offset || !bytes) {
                break;
            }
            const std::uint64_t left = size - std::min(size, static_cast<std::uint64_t>(*offset));
            claimed += static_cast<double>(*bytes);
            there += static_cast<double>(std::min(left, static_cast<std::uint64_t>(*bytes)));
        }
    }
    return there < claimed && there > claimed * kLittle;
}

TiffType TypeOf(const TiffFields& fields, std::uint16_t tag, TiffType typeOfNew) {
    const TiffField* const field = fields.Find(TiffDirectory::kMain, tag);
    const bool isOfBytes =
        field != nullptr && (field->mType == TiffType::kByte || field->mType == TiffType::kUndefined);
    return isOfBytes ? field->mType : typeOfNew;
}

TiffEdit EditOfXMP(const ByteSource& file, const TiffFields& fields, std::string_view element) {
    const TiffField* const old = fields.Find(TiffDirectory::kMain, kTiffTagXMP);
    const bool hasRoom = old != nullptr && IsWithin(old->mPlace, file.Size());
    return {TiffDirectory::kMain, kTiffTagXMP, TypeOf(fields, kTiffTagXMP, TiffType::kByte),
            WrappedPacket(element, hasRoom ? static_cast<std::size_t>(old->mPlace.mSize) : 0)};
}

/// The file's own field of the datasets is of long numbers, which calls for padding.
bool IsOfLongs(const TiffFields& fields) {
    const TiffField* const field = fields.Find(TiffDirectory::kMain, kTiffTagIIM);
    return field != nullptr && field->mType == TiffType::kLong;
}

std::string PaddedToLongs(std::string datasets) {
    datasets.resize((datasets.size() + 3) / 4 * 4, '\0');
    return datasets;
}

/// The datasets in the form that the file's own field has, if there is one.
TiffEdit EditOfIIM(const ByteSource& file, const TiffFields& fields, std::string datasets) {
    if (!IsOfLongs(fields)) {
        return {TiffDirectory::kMain, kTiffTagIIM, TypeOf(fields, kTiffTagIIM, TiffType::kUndefined),
                std::move(datasets)};
    }
    datasets = PaddedToLongs(std::move(datasets));
    const std::optional<TiffIIM> found = TiffIIMInFile(file, fields);
    // The stream turns the bytes of numbers about when it is little-endian.
    if ((fields.mOrder == ByteOrder::kLittle) != (found && found->mIsTurnedAbout)) {
        datasets = WithSwappedUnits(std::move(datasets), TiffType::kLong);
    }
    return {TiffDirectory::kMain, kTiffTagIIM, TiffType::kLong, std::move(datasets)};
}

/// Datasets go into the field, unless the file has them among its image resources alone; a digest follows them.
void AddEditsOfIIM(const ByteSource& file, const TiffFields& fields, const std::string& datasets, bool renewsDigest,
                   std::vector<TiffEdit>& edits) {
    std::vector<ResourceChange> changes;
    const std::string bytes = TiffFieldInFile(file, fields, kTiffTagImageResources).value_or(std::string());
    const ImageResources resources = ReadImageResources(bytes);
    if (resources.Find(kResourceIIM) != nullptr) {
        changes.push_back({kResourceIIM, datasets.empty() ? std::nullopt : std::optional(datasets)});
    }
    if (changes.empty() || fields.Find(TiffDirectory::kMain, kTiffTagIIM) != nullptr) {
        edits.push_back(EditOfIIM(file, fields, datasets));
    }
    if (renewsDigest && resources.Find(kResourceIIMDigest) != nullptr) {
        changes.push_back({kResourceIIMDigest, IIMDigest(IsOfLongs(fields) ? PaddedToLongs(datasets) : datasets)});
    }
    if (!changes.empty()) {
        edits.push_back({TiffDirectory::kMain, kTiffTagImageResources,
                         TypeOf(fields, kTiffTagImageResources, TiffType::kByte),
                         EditedImageResources(bytes, changes)});
    }
}

class TIFF : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        FileBlocks blocks;
        const TiffFields fields = ReadTiff(*file);
        const bool isWhole = fields.mIsTiff && fields.mIsWhole;
        if (!isWhole || IsCutOff(fields, file->Size())) {
            blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
            blocks.mDetail = std::string(isWhole ? kCutOff : kDamaged);
        }
        if (fields.mIsTiff) {
            AddTiffBlocks(*file, fields, blocks);
            blocks.mExif.push_back({file, TiffDirectory::kMain});
        }
        return blocks;
    }

    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        const TiffFields fields = ReadTiff(*file);
        if (!fields.mIsTiff || !fields.mIsWhole) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, std::string(kDamaged));
        }
        std::vector<TiffEdit> edits = changes.mExif;
        if (changes.mXMP) {
            edits.push_back(EditOfXMP(*file, fields, *changes.mXMP));
        }
        if (changes.mIIM) {
            AddEditsOfIIM(*file, fields, *changes.mIIM, changes.mRenewsIIMDigest, edits);
        }
        std::optional<Plan> plan = PlanTiffEdits(*file, edits);
        if (!plan) {
            return RefusedEdit(FileStatus::kFileStatus_NotWritten, std::string(kTooLarge));
        }
        return {FileStatus::kFileStatus_Success, {}, *std::move(plan)};
    }

    std::vector<Range> References(const ByteSource& file) const override { return TiffReferences(file); }
};

}  // namespace

bool IsTIFF(std::string_view head) {
    using namespace std::string_view_literals;
    constexpr auto kSignatures =
        std::to_array<std::string_view>({"II\x2A\0"sv, "MM\0\x2A"sv, "II\x2B\0\x08\0\0\0"sv, "MM\0\x2B\0\x08\0\0"sv});
    return std::any_of(std::begin(kSignatures), std::end(kSignatures),
                       [&](std::string_view signature) { return head.starts_with(signature); });
}

const Container& TIFFContainer() {
    static const TIFF container;
    return container;
}

}  // namespace zephmetadata::media
