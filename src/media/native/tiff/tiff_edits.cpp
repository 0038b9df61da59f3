#include <algorithm>

#include "media/native/tiff/tiff_editor.h"

namespace zephmetadata::media {

namespace {

TiffEdit VersionOf(TiffDirectory directory) {
    constexpr std::uint16_t kExifVersion = 36864;
    constexpr std::uint16_t kGPSVersion = 0;
    return directory == TiffDirectory::kExif
               ? TiffEdit{directory, kExifVersion, TiffType::kUndefined, "0232"}
               : TiffEdit{directory, kGPSVersion, TiffType::kByte, std::string("\x02\x03\0\0", 4)};
}

std::uint16_t PointerTag(TiffDirectory directory) {
    return directory == TiffDirectory::kExif ? kTagExifDirectory : kTagGPSDirectory;
}

}  // namespace

bool TiffEditor::Load() {
    const TiffTables read = ReadTiffTables(mStream, mHeader, TiffDirectory::kMain);
    if (!read.mIsWhole) {
        return false;
    }
    for (std::size_t i = 0; i < mTables.size(); ++i) {
        if (const auto& table = read.mTables[i]; table) {
            mTables[i] = {true, table->mRange, table->mRange.mOffset, {}, table->mNext};
            for (const TiffEntry& entry : table->mEntries) {
                mTables[i].mSlots.push_back({entry, {}, {}, {}});
            }
        }
    }
    return true;
}

std::uint64_t TiffEditor::BytesOf(const TiffNewTable& table) const {
    return mHeader.CountBytes() + table.mSlots.size() * mHeader.EntryBytes() + mHeader.OffsetBytes();
}

/// Of the values outside the directory.
std::uint64_t TiffEditor::BytesApart(const TiffSlot& slot) const {
    if (!slot.mNew) {
        return slot.mEntry.mIsInline ? 0 : slot.mEntry.mPlace.mSize;
    }
    return slot.mNew->size() <= mHeader.OffsetBytes() ? 0 : slot.mNew->size();
}

/// TIFF 6.0 wants offsets of words, BigTIFF is better off with its own ones.
std::uint64_t TiffEditor::Aligned(std::uint64_t offset) const {
    const std::uint64_t unit = mHeader.mIsBig ? 8 : 2;
    return (offset + unit - 1) / unit * unit;
}

bool TiffEditor::IsSame(const TiffSlot& slot, const TiffEdit& edit) const {
    const bool isAlike = slot.mEntry.mType == static_cast<std::uint16_t>(edit.mType) && !slot.mNew &&
                         slot.mEntry.mPlace.mSize == edit.mBytes.size();
    if (!isAlike) {
        return false;
    }
    const auto bytes = ReadRange(mStream, slot.mEntry.mPlace);
    return bytes && (mHeader.mOrder == ByteOrder::kBig ? *bytes : WithSwappedUnits(*bytes, edit.mType)) == edit.mBytes;
}

/// Takes all entries of the tag away, from one on.
void TiffEditor::Remove(TiffNewTable& table, std::uint16_t tag, std::size_t from) {
    for (std::size_t i = table.mSlots.size(); i-- > from;) {
        const TiffSlot& slot = table.mSlots[i];
        if (slot.mEntry.mTag != tag) {
            continue;
        }
        if (!slot.mEntry.mIsInline) {
            mFreed.push_back(slot.mEntry.mPlace);
        }
        table.mSlots.erase(table.mSlots.begin() + static_cast<std::ptrdiff_t>(i));
        mIsEdited = true;
    }
}

void TiffEditor::Set(TiffNewTable& table, const TiffEdit& edit) {
    std::vector<TiffSlot>& slots = table.mSlots;
    auto found =
        std::find_if(slots.begin(), slots.end(), [&](const TiffSlot& slot) { return slot.mEntry.mTag == edit.mTag; });
    if (found == slots.end()) {
        found = std::find_if(slots.begin(), slots.end(),
                             [&](const TiffSlot& slot) { return slot.mEntry.mTag > edit.mTag; });
        found = slots.insert(found, TiffSlot{});
        found->mEntry.mTag = edit.mTag;
        found->mEntry.mIsInline = true;
    } else if (IsSame(*found, edit)) {
        return;
    }
    found->mEntry.mType = static_cast<std::uint16_t>(edit.mType);
    found->mEntry.mCount = edit.mBytes.size() / TiffTypeBytes(edit.mType);
    found->mNew = mHeader.mOrder == ByteOrder::kBig ? edit.mBytes : WithSwappedUnits(edit.mBytes, edit.mType);
    mIsEdited = true;
    Remove(table, edit.mTag, static_cast<std::size_t>(found - slots.begin()) + 1);
}

bool TiffEditor::Apply(const TiffEdit& edit) {
    const bool isPointer = edit.mTag == kTagExifDirectory || edit.mTag == kTagGPSDirectory;
    if (isPointer && edit.mDirectory == TiffDirectory::kMain) {
        return false;
    }
    TiffNewTable& table = TableOf(edit.mDirectory);
    if (edit.mBytes.empty()) {
        Remove(table, edit.mTag, 0);
        return true;
    }
    const std::size_t size = TiffTypeBytes(edit.mType);
    const bool isOfBigTiff =
        edit.mType == TiffType::kLong8 || edit.mType == TiffType::kSLong8 || edit.mType == TiffType::kIFD8;
    if (size == 0 || edit.mBytes.size() % size != 0 || (isOfBigTiff && !mHeader.mIsBig)) {
        return false;
    }
    Set(table, edit);
    return true;
}

/// Makes the pointer to a directory that is new, takes away that to one that has become empty.
void TiffEditor::Link(TiffDirectory directory) {
    TiffNewTable& table = TableOf(directory);
    TiffNewTable& main = TableOf(TiffDirectory::kMain);
    const std::uint16_t tag = PointerTag(directory);
    if (table.mSlots.empty()) {
        const bool hadEntries = table.mOld.mSize > mHeader.CountBytes() + mHeader.OffsetBytes();
        if (table.mIsThere && hadEntries) {
            Remove(main, tag, 0);
            table.mIsThere = false;
        }
        return;
    }
    if (!table.mIsThere) {
        const TiffEdit version = VersionOf(directory);
        if (table.mSlots.front().mEntry.mTag != version.mTag) {
            Set(table, version);
        }
        table.mIsThere = true;
        const TiffType type = mHeader.mIsBig ? TiffType::kIFD8 : TiffType::kLong;
        Set(main, {TiffDirectory::kMain, tag, type, std::string(mHeader.OffsetBytes(), '\xFF')});
    }
    for (TiffSlot& slot : main.mSlots) {
        if (slot.mEntry.mTag == tag) {
            slot.mTarget = directory;
        }
    }
}

std::optional<Plan> TiffEditor::MakePlan() {
    if (!mIsEdited) {
        return Plan();
    }
    Link(TiffDirectory::kExif);
    Link(TiffDirectory::kGPS);
    const bool isTooLarge = std::any_of(mTables.begin(), mTables.end(), [](const TiffNewTable& table) {
        return table.mSlots.size() > kMaxDirectoryEntries;
    });
    mSpace = TiffSpace::Of(mStream, mHeader);
    if (isTooLarge || !mSpace) {
        return std::nullopt;
    }
    const std::vector<TiffPiece> pieces = Pieces();
    const std::size_t tail = TailOf(pieces);
    std::for_each(pieces.begin(), pieces.begin() + static_cast<std::ptrdiff_t>(tail),
                  [&](const TiffPiece& piece) { PlaceBeforeTail(piece); });
    PlaceTail(pieces, tail);
    return AssignOffsets() && FillTail() && PatchTables() ? std::optional(std::move(mPlan)) : std::nullopt;
}

std::optional<Plan> PlanTiffEdits(const ByteSource& stream, std::span<const TiffEdit> edits) {
    const PagedSource pages(stream);
    const std::optional<TiffHeader> header = ReadTiffHeader(pages);
    if (!header || header->mIsRaw) {
        return std::nullopt;
    }
    TiffEditor editor(pages, *header);
    if (!editor.Load() ||
        !std::all_of(edits.begin(), edits.end(), [&](const TiffEdit& edit) { return editor.Apply(edit); })) {
        return std::nullopt;
    }
    return editor.MakePlan();
}

std::string NewTiff(std::span<const TiffEdit> edits, ByteOrder order) {
    constexpr std::uint64_t kHeaderBytes = 8;
    std::string empty = order == ByteOrder::kBig ? "MM" : "II";
    empty += NumberBytes(42, 2, order) + NumberBytes(kHeaderBytes, 4, order);
    empty += std::string(6, '\0');  // a directory without entries, and no next one
    const MemorySource stream(std::move(empty));
    const std::optional<Plan> plan = PlanTiffEdits(stream, edits);
    return plan ? Carried(*plan, stream).value_or(std::string()) : std::string();
}

}  // namespace zephmetadata::media
