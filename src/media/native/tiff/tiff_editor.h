#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "media/native/tiff/tiff_space.h"

/// The way from edits to a plan for a TIFF stream.
namespace zephmetadata::media {

/// An entry on its way into the new directory.
struct TiffSlot {
    TiffEntry mEntry;                        // type and count are the new ones, the rest is as it was
    std::optional<std::string> mNew;         // new values, in the stream's order
    std::optional<TiffDirectory> mTarget;    // a pointer to one of the directories
    std::optional<std::uint64_t> mNewPlace;  // of values that do not fit into the entry, when it is another one
};

struct TiffNewTable {
    bool mIsThere = false;
    Range mOld;  // without size when it is new
    std::uint64_t mOffset = 0;
    std::vector<TiffSlot> mSlots;
    std::string mNext;
};

/// Something that has a place of its own in the stream: a directory, values, or what nobody needs any more.
struct TiffPiece {
    Range mOld;                  // without size for a new one
    std::uint64_t mNewSize = 0;  // 0: it goes
    TiffSlot* mSlot = nullptr;
    TiffNewTable* mTable = nullptr;
    bool mMayMove = true;
};

class TiffEditor {
public:
    TiffEditor(const ByteSource& stream, const TiffHeader& header) : mStream(stream), mHeader(header) {}
    bool Load();
    bool Apply(const TiffEdit& edit);
    std::optional<Plan> MakePlan();

private:
    TiffNewTable& TableOf(TiffDirectory directory) { return mTables[static_cast<std::size_t>(directory)]; }
    std::uint64_t BytesOf(const TiffNewTable& table) const;
    std::uint64_t BytesApart(const TiffSlot& slot) const;
    std::uint64_t Aligned(std::uint64_t offset) const;
    bool IsSame(const TiffSlot& slot, const TiffEdit& edit) const;
    void Set(TiffNewTable& table, const TiffEdit& edit);
    void Remove(TiffNewTable& table, std::uint16_t tag, std::size_t from);
    void Link(TiffDirectory directory);
    std::vector<TiffPiece> Pieces();
    std::size_t TailOf(const std::vector<TiffPiece>& pieces) const;
    void PlaceBeforeTail(const TiffPiece& piece);
    void PlaceTail(const std::vector<TiffPiece>& pieces, std::size_t tail);
    bool AssignOffsets();
    bool FillTail();
    std::string EntryBytes(const TiffSlot& slot) const;
    std::string TableBytes(const TiffNewTable& table) const;
    bool PatchTables();

    const ByteSource& mStream;
    TiffHeader mHeader;
    std::array<TiffNewTable, 3> mTables;
    std::vector<Range> mFreed;  // places of values that are gone
    bool mIsEdited = false;
    std::optional<TiffSpace> mSpace;
    std::vector<TiffPiece> mMoved;  // what is written from mCut on, in this order
    std::uint64_t mCut = 0;         // the bytes from here on are written anew
    std::uint64_t mEnd = 0;
    Plan mPlan;
};

}  // namespace zephmetadata::media
