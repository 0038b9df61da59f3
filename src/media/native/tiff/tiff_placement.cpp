#include <algorithm>
#include <array>
#include <iterator>
#include <limits>

#include "media/native/tiff/tiff_editor.h"

namespace zephmetadata::media {

namespace {

/// Values that are moved within the tail of a stream pass through memory.
constexpr std::uint64_t kMaxMovedBytes = std::uint64_t{16} << 20U;

/// Values that nobody knows may say where they lie themselves, as maker notes do; these do not.
bool MayMove(const TiffEntry& entry) {
    // XMP, IIM, image resources, the colour profile, texts of a window system, and those of Exif.
    constexpr auto kKnown =
        std::to_array<std::uint16_t>({27, 28, 700, 33723, 34377, 34675, 37510, 40091, 40092, 40093, 40094, 40095});
    const auto type = static_cast<TiffType>(entry.mType);
    const bool isPlain = type != TiffType::kUndefined && type != TiffType::kByte;
    const bool isKnown = std::find(std::begin(kKnown), std::end(kKnown), entry.mTag) != std::end(kKnown);
    return (isPlain || isKnown) && entry.mPlace.mSize <= kMaxMovedBytes && entry.mTag != kTagMakerNote;
}

/// Replaces the bytes at @p offset where they differ.
void ReplaceDifferences(Plan& plan, std::uint64_t offset, std::string_view before, std::string_view after) {
    constexpr std::size_t kWorthSparing = 12;  // about what a replacement costs
    std::size_t at = 0;
    while (true) {
        while (at < before.size() && before[at] == after[at]) {
            ++at;
        }
        if (at == before.size()) {
            return;
        }
        std::size_t end = at + 1;
        for (std::size_t i = end; i < before.size() && i < end + kWorthSparing; ++i) {
            end = before[i] == after[i] ? end : i + 1;
        }
        plan.Replace({offset + at, end - at}, std::string(after.substr(at, end - at)), Touch::kStructure);
        at = end;
    }
}

}  // namespace

/// What has a place of its own, or is to have one, in the order of the stream; new ones come first.
std::vector<TiffPiece> TiffEditor::Pieces() {
    std::vector<TiffPiece> pieces;
    for (TiffNewTable& table : mTables) {
        if (table.mOld.mSize > 0 || table.mIsThere) {
            pieces.push_back({table.mOld, table.mIsThere ? BytesOf(table) : 0, nullptr, &table});
        }
        for (TiffSlot& slot : table.mSlots) {
            const Range old = slot.mEntry.mIsInline ? Range{} : slot.mEntry.mPlace;
            if (const std::uint64_t size = BytesApart(slot); old.mSize > 0 || size > 0) {
                pieces.push_back({old, size, &slot, nullptr, slot.mNew || MayMove(slot.mEntry)});
            }
        }
    }
    for (const Range& freed : mFreed) {
        pieces.push_back({freed, 0, nullptr, nullptr});
    }
    std::stable_sort(pieces.begin(), pieces.end(), [](const TiffPiece& left, const TiffPiece& right) {
        return std::pair(left.mOld.mSize > 0, left.mOld.mOffset) < std::pair(right.mOld.mSize > 0, right.mOld.mOffset);
    });
    return pieces;
}

/// The first of the pieces that fill the stream up to its end and that nobody else refers to: these may be packed anew,
/// so that values that grow again and again do not leave a gap each time.
std::size_t TiffEditor::TailOf(const std::vector<TiffPiece>& pieces) const {
    std::uint64_t end = mStream.Size();
    std::size_t tail = pieces.size();
    for (; tail > 0; --tail) {
        const TiffPiece& piece = pieces[tail - 1];
        const bool isLast = piece.mOld.mSize > 0 && piece.mOld.End() <= end && Aligned(piece.mOld.End()) >= end;
        if (!isLast || !piece.mMayMove || !mSpace->IsExclusive(piece.mOld)) {
            break;
        }
        end = piece.mOld.mOffset;
    }
    return tail;
}

void TiffEditor::PlaceBeforeTail(const TiffPiece& piece) {
    const bool isExclusive = piece.mOld.mSize > 0 && mSpace->IsExclusive(piece.mOld);
    const bool isKept = piece.mSlot != nullptr && !piece.mSlot->mNew;
    const bool fits = isExclusive && piece.mNewSize > 0 && piece.mNewSize <= piece.mOld.mSize;
    // A directory that ends with the stream may lack the pointer to the next one; it needs none.
    const bool isSameTable = piece.mTable != nullptr && isExclusive && piece.mTable->mNext.empty() &&
                             piece.mNewSize == piece.mOld.mSize + mHeader.OffsetBytes();
    if (isKept || isSameTable || (fits && piece.mTable != nullptr)) {
        return;
    }
    if (fits && piece.mSlot != nullptr) {
        const std::string& bytes = *piece.mSlot->mNew;
        piece.mSlot->mNewPlace = piece.mOld.mOffset;
        mPlan.Replace({piece.mOld.mOffset, bytes.size()}, bytes, Touch::kBlock);
    } else if (piece.mNewSize > 0) {
        mMoved.push_back(piece);
    }
    const std::uint64_t written = fits ? piece.mNewSize : 0;
    if (isExclusive && written < piece.mOld.mSize) {  // what was taken away is not to be found any more
        const Range rest{piece.mOld.mOffset + written, piece.mOld.mSize - written};
        mPlan.Replace(rest, std::string(static_cast<std::size_t>(rest.mSize), '\0'), Touch::kSpace);
    }
}

void TiffEditor::PlaceTail(const std::vector<TiffPiece>& pieces, std::size_t tail) {
    const auto changed = std::find_if(pieces.begin() + static_cast<std::ptrdiff_t>(tail), pieces.end(),
                                      [](const TiffPiece& piece) { return piece.mNewSize != piece.mOld.mSize; });
    mCut = changed == pieces.end() ? mStream.Size() : changed->mOld.mOffset;
    for (auto piece = pieces.begin() + static_cast<std::ptrdiff_t>(tail); piece != changed; ++piece) {
        if (piece->mSlot != nullptr && piece->mSlot->mNew) {
            piece->mSlot->mNewPlace = piece->mOld.mOffset;
            mPlan.Replace(piece->mOld, *piece->mSlot->mNew, Touch::kBlock);
        }
    }
    std::vector<TiffPiece> repacked;
    std::copy_if(changed, pieces.end(), std::back_inserter(repacked),
                 [](const TiffPiece& piece) { return piece.mNewSize > 0; });
    mMoved.insert(mMoved.begin(), repacked.begin(), repacked.end());
}

/// False when the stream would outgrow its offsets.
bool TiffEditor::AssignOffsets() {
    const bool needsRoom = mCut == mStream.Size() && !mMoved.empty() && mSpace->EndsWithoutPointer();
    mEnd = mCut + (needsRoom ? mHeader.OffsetBytes() : 0);
    for (const TiffPiece& piece : mMoved) {
        const std::uint64_t place = Aligned(mEnd);
        if (piece.mTable != nullptr) {
            piece.mTable->mOffset = place;
        } else {
            piece.mSlot->mNewPlace = place;
        }
        mEnd = place + piece.mNewSize;
    }
    return mHeader.mIsBig || mEnd <= std::numeric_limits<std::uint32_t>::max();
}

std::string TiffEditor::EntryBytes(const TiffSlot& slot) const {
    TiffEntry entry = slot.mEntry;
    const std::size_t wide = mHeader.OffsetBytes();
    if (slot.mTarget) {
        const TiffNewTable& target = mTables[static_cast<std::size_t>(*slot.mTarget)];
        if (target.mOffset != target.mOld.mOffset) {
            const bool isWide = TiffTypeBytes(static_cast<TiffType>(entry.mType)) == wide;
            entry.mType = isWide           ? entry.mType
                          : mHeader.mIsBig ? static_cast<std::uint16_t>(TiffType::kIFD8)
                                           : static_cast<std::uint16_t>(TiffType::kLong);
            entry.mCount = 1;
            entry.mField = NumberBytes(target.mOffset, wide, mHeader.mOrder);
        }
    } else if (slot.mNewPlace) {
        entry.mField = NumberBytes(*slot.mNewPlace, wide, mHeader.mOrder);
    } else if (slot.mNew) {
        entry.mField = *slot.mNew;
        entry.mField.resize(wide, '\0');
    }
    return NumberBytes(entry.mTag, 2, mHeader.mOrder) + NumberBytes(entry.mType, 2, mHeader.mOrder) +
           NumberBytes(entry.mCount, wide, mHeader.mOrder) + entry.mField;
}

std::string TiffEditor::TableBytes(const TiffNewTable& table) const {
    std::string bytes = NumberBytes(table.mSlots.size(), mHeader.CountBytes(), mHeader.mOrder);
    for (const TiffSlot& slot : table.mSlots) {
        bytes += EntryBytes(slot);
    }
    bytes += table.mNext.empty() ? std::string(mHeader.OffsetBytes(), '\0') : table.mNext;
    return bytes;
}

bool TiffEditor::FillTail() {
    std::string bytes;
    for (const TiffPiece& piece : mMoved) {
        const std::uint64_t place = piece.mTable != nullptr ? piece.mTable->mOffset : *piece.mSlot->mNewPlace;
        bytes.resize(static_cast<std::size_t>(place - mCut), '\0');
        if (piece.mTable != nullptr) {
            bytes += TableBytes(*piece.mTable);
        } else if (piece.mSlot->mNew) {
            bytes += *piece.mSlot->mNew;
        } else {
            const auto kept = ReadRange(mStream, piece.mOld);
            if (!kept) {
                return false;
            }
            bytes += *kept;
        }
    }
    const Range old{mCut, mStream.Size() - mCut};
    if (!bytes.empty() || old.mSize > 0) {
        mPlan.Replace(old, std::move(bytes), Touch::kBlock);
    }
    return true;
}

/// Writes directories that stay over where they differ.
bool TiffEditor::PatchTables() {
    for (const TiffNewTable& table : mTables) {
        const bool stays = table.mIsThere && table.mOld.mSize > 0 && table.mOffset == table.mOld.mOffset;
        if (!stays || table.mOffset >= mCut) {
            continue;
        }
        const auto before = ReadRange(mStream, table.mOld);
        if (!before) {
            return false;
        }
        std::string after = TableBytes(table);
        after.resize(before->size(), '\0');
        ReplaceDifferences(mPlan, table.mOffset, *before, after);
    }
    const TiffNewTable& main = TableOf(TiffDirectory::kMain);
    if (main.mOffset != main.mOld.mOffset) {
        mPlan.Replace({mHeader.PointerPlace(), mHeader.OffsetBytes()},
                      NumberBytes(main.mOffset, mHeader.OffsetBytes(), mHeader.mOrder), Touch::kStructure);
    }
    return true;
}

}  // namespace zephmetadata::media
