#include <algorithm>

#include "media/native/exif/exif_codecs.h"
#include "media/native/exif/exif_values.h"

namespace zephmetadata::media {

namespace {

constexpr TiffDirectory kGPS = TiffDirectory::kGPS;
constexpr std::uint16_t kGPSVersionID = 0x0000;

const MirrorChange* ChangeOf(const ExifRow& row, std::span<const MirrorChange> changes) {
    const auto found = std::find_if(changes.begin(), changes.end(), [&](const MirrorChange& change) {
        return change.mProperty == row.mProperty && change.mNamespace == row.mNamespace;
    });
    return found == changes.end() ? nullptr : &*found;
}

TiffEdits Removal(const TiffFields& fields, const ExifRow& row) {
    TiffEdits edits;
    RemoveField(fields, row.mDirectory, row.mTag, edits);
    for (const std::uint16_t companion : row.mCompanions) {
        if (companion != 0) {
            RemoveField(fields, row.CompanionDirectory(), companion, edits);
        }
    }
    return edits;
}

std::optional<TiffEdits> EditsFor(const TiffFields& fields, const ExifRow& row, const MirrorChange& change) {
    if (!change.mValue || change.mValue->mItems.empty()) {
        return Removal(fields, row);
    }
    const NativeItems& items = change.mValue->mItems;
    if (change.mValue->mForm != row.mForm) {
        return std::nullopt;
    }
    return row.mCodec->mRead(fields, row) == items ? TiffEdits{} : row.mCodec->mWrite(fields, row, items);
}

bool IsThereAlready(const TiffFields& fields, const TiffEdit& edit) {
    const TiffField* const field = fields.Find(edit.mDirectory, edit.mTag);
    return field != nullptr && field->mType == edit.mType && !edit.mBytes.empty() && field->mBytes == edit.mBytes;
}

bool HasDirectory(const TiffFields& fields, TiffDirectory directory) {
    return std::any_of(fields.mFields.begin(), fields.mFields.end(),
                       [&](const TiffField& field) { return field.mDirectory == directory; });
}

/// A GPS directory has to say its version.
void AddGPSVersion(const TiffFields& fields, TiffEdits& edits) {
    const auto is = [](const TiffEdit& edit, bool isVersion) {
        return edit.mDirectory == kGPS && (edit.mTag == kGPSVersionID) == isVersion;
    };
    const bool isAny = std::any_of(edits.begin(), edits.end(), [&](const TiffEdit& edit) { return is(edit, false); });
    const bool isSaid = std::any_of(edits.begin(), edits.end(), [&](const TiffEdit& edit) { return is(edit, true); });
    if (isAny && !isSaid && !HasDirectory(fields, kGPS)) {
        edits.push_back({kGPS, kGPSVersionID, TiffType::kByte, std::string{2, 3, 0, 0}});
    }
}

}  // namespace

std::vector<TiffEdit> ExifEdits(const TiffFields& current, std::span<const MirrorChange> changes,
                                std::vector<RefusedProperty>* refused) {
    TiffEdits edits;
    std::vector<std::pair<TiffDirectory, std::uint16_t>> decided;
    for (const ExifRow& row : ExifRows()) {
        const MirrorChange* const change = ChangeOf(row, changes);
        const bool isFree = current.mIsTiff || (row.mFlags & kExifRow_MakesBlock) != 0;
        const std::pair field(row.mDirectory, row.mTag);
        if (change == nullptr || !isFree || (row.mFlags & kExifRow_Structural) != 0 ||
            std::find(decided.begin(), decided.end(), field) != decided.end()) {
            continue;
        }
        const auto wanted = EditsFor(current, row, *change);
        if (!wanted) {
            if (refused != nullptr) {
                refused->push_back({row.mNamespace, row.mProperty});
            }
            continue;
        }
        decided.push_back(field);
        std::copy_if(wanted->begin(), wanted->end(), std::back_inserter(edits),
                     [&](const TiffEdit& edit) { return !IsThereAlready(current, edit); });
    }
    AddGPSVersion(current, edits);
    return edits;
}

}  // namespace zephmetadata::media
