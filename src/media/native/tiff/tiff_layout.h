#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "media/native/tiff/tiff_stream.h"

/// How a TIFF stream is laid out: what reading, editing and walking it share.
namespace zephmetadata::media {

inline constexpr std::uint16_t kTagStripOffsets = 273;
inline constexpr std::uint16_t kTagSubDirectories = 330;
inline constexpr std::uint16_t kTagExifDirectory = 34665;
inline constexpr std::uint16_t kTagGPSDirectory = 34853;
inline constexpr std::uint16_t kTagMakerNote = 37500;
inline constexpr std::uint16_t kTagInteropDirectory = 40965;
inline constexpr std::uint16_t kTagDNGPrivateData = 50740;

/// The start of a stream. BigTIFF doubles most sizes.
struct TiffHeader {
    ByteOrder mOrder = ByteOrder::kLittle;
    bool mIsBig = false;
    bool mIsRaw = false;  ///< has the signature of a raw format that is laid out like TIFF
    std::uint64_t mFirst = 0;

    std::size_t CountBytes() const { return mIsBig ? 8 : 2; }
    std::size_t OffsetBytes() const { return mIsBig ? 8 : 4; }
    std::size_t EntryBytes() const { return mIsBig ? 20 : 12; }
    /// Of the values, or where they are, within an entry.
    std::size_t FieldPlace() const { return mIsBig ? 12 : 8; }
    /// Of the pointer to the first directory.
    std::uint64_t PointerPlace() const { return mIsBig ? 8 : 4; }
    std::uint64_t Bytes() const { return PointerPlace() + OffsetBytes(); }
};

std::optional<TiffHeader> ReadTiffHeader(const ByteSource& stream);

/// An entry of a directory as it stands there.
struct TiffEntry {
    std::uint16_t mTag = 0;
    std::uint16_t mType = 0;
    std::uint64_t mCount = 0;
    std::string mField;      ///< the last bytes of the entry: the values where they fit, or their offset
    Range mPlace;            ///< of the values; without size for a type that is none
    bool mIsInline = false;  ///< the values lie in the entry
};

struct TiffTable {
    Range mRange;  ///< as far as it is there, with the count and the pointer to the next one
    std::vector<TiffEntry> mEntries;
    std::string mNext;     ///< the pointer to the next one as it stands there; empty when the stream ends before it
    bool mIsWhole = true;  ///< all entries that the count claims are there

    /// The first of the tag.
    const TiffEntry* Find(std::uint16_t tag) const;
};

/// Absent when not even the count lies within the stream.
std::optional<TiffTable> ReadTiffTable(const ByteSource& stream, const TiffHeader& header, std::uint64_t offset);

/// The directories that say something of the picture as a whole.
struct TiffTables {
    std::array<std::optional<TiffTable>, 3> mTables;  // by TiffDirectory
    bool mIsWhole = true;                             // and so are all the values
};

TiffTables ReadTiffTables(const ByteSource& stream, const TiffHeader& header, TiffDirectory first);

/// Bytes of the numbers that a value of the type is made of: what byte order means for it.
std::size_t TiffUnitBytes(TiffType type);
/// The values with the bytes of each number the other way round.
std::string WithSwappedUnits(std::string values, TiffType type);

/// The values of an entry as numbers, those of integer types; at most @p most.
std::vector<std::uint64_t> TiffIntegers(const ByteSource& stream, const TiffHeader& header, const TiffEntry& entry,
                                        std::uint64_t most);

/// Calls @p visit for each directory that can be reached, in the order of referring, with what it is when it is one of
/// the three. False when there are more than @p most of them, or than a stream of this size could hold side by side.
using TiffVisitor = std::function<void(const TiffTable&, std::optional<TiffDirectory>)>;
bool WalkTiff(const ByteSource& stream, const TiffHeader& header, const TiffVisitor& visit,
              std::size_t most = kMaxDirectories);

/// What the entries of a directory refer to: image data, maker notes. Sizes are as claimed.
void AppendTiffBlobs(const ByteSource& stream, const TiffHeader& header, const TiffTable& table,
                     std::vector<Range>& blobs);

}  // namespace zephmetadata::media
