#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/plan.h"

/// Boxes: the structure of ISO base media files (ISO/IEC 14496-12, 4.2), which QuickTime, HEIF, JPEG 2000 (ISO/IEC
/// 15444-1, annex I) and JPEG XL (ISO/IEC 18181-2) share. Numbers are big-endian.
namespace zephmetadata::media {

/// No file comes near these; they bound what a hostile one can cost.
inline constexpr std::size_t kMaxBoxes = 100000;
inline constexpr std::size_t kMaxBoxDepth = 16;
inline constexpr std::size_t kNoBox = static_cast<std::size_t>(-1);

/// What the size field of a box says.
enum class BoxSize : std::uint8_t {
    kShort,  ///< 32 bits
    kLong,   ///< 64 bits behind the type
    /// Nothing: the box goes on to the end of the file. What is appended to the file becomes part of it, so that a plan
    /// that appends has to make the size explicit first (MakeExplicit). Within another box it ends with that one.
    kToEnd,
};

struct Box {
    std::string mType;  ///< four bytes, not always ASCII
    std::string mUuid;  ///< of a "uuid" box: sixteen bytes, part of its header
    Range mWhole;       ///< with its header
    std::uint8_t mHeaderBytes = 8;
    BoxSize mSize = BoxSize::kShort;
    std::size_t mParent = kNoBox;  ///< in the list of ReadBoxTree; kNoBox for the outermost

    Range Contents() const { return {mWhole.mOffset + mHeaderBytes, mWhole.mSize - mHeaderBytes}; }
    bool IsUuid(std::string_view uuid) const { return mType == "uuid" && mUuid == uuid; }
};

struct BoxList {
    std::vector<Box> mBoxes;  ///< in the order of the file; in a tree each before what it holds
    /// The bytes behind the last box that are none, the first one that is cut off included; empty when there are none.
    /// Some lists in QuickTime files end in four zero bytes (see IsZeroRest).
    Range mRest;
    /// Of a tree: false when a box within another one is cut off, when boxes are nested too deep or are too many.
    bool mIsWhole = true;

    /// The first of the type from @p from on.
    const Box* Find(std::string_view type, std::size_t from = 0) const;
    const Box* FindUuid(std::string_view uuid) const;
    /// The first of the type within the box @p parent; kNoBox for the outermost.
    const Box* FindIn(std::size_t parent, std::string_view type) const;
    /// Along types from the outermost on ({"moov", "udta"}), through the first of each.
    const Box* FindPath(std::initializer_list<std::string_view> types) const;
    std::size_t IndexOf(const Box& box) const { return static_cast<std::size_t>(&box - mBoxes.data()); }
};

/// The boxes side by side in a range of a file. Reads their headers alone: give a PagedSource where they are small.
BoxList ReadBoxes(const ByteSource& file, Range range);

/// How many bytes of a box's contents come before the boxes in it (0, 4 for a full box such as "meta" ...); absent for a
/// box that is not to be entered. @p parents is the list so far, for Box::mParent.
using ChildrenAt =
    std::function<std::optional<std::uint64_t>(const ByteSource& file, const Box& box, const BoxList& parents)>;
/// The boxes in a range and in them. The rest is that of the outermost.
BoxList ReadBoxTree(const ByteSource& file, Range range, const ChildrenAt& childrenAt);
/// 4 for a "meta" box of ISO/IEC 14496-12, a full box; 0 for one of QuickTime, which is none.
std::uint64_t MetaChildrenAt(const ByteSource& file, const Box& meta);

/// Whether a rest of a list is zeros alone, at most 64 KiB of them: an end mark or padding.
bool IsZeroRest(const ByteSource& file, Range rest);
/// Whether a rest of a list is the beginning of another box, and not nothing or bytes that somebody appended.
bool IsCutBox(const ByteSource& file, Range rest);

/// Version and flags, the first four bytes of a full box's contents.
struct FullBoxHead {
    std::uint8_t mVersion = 0;
    std::uint32_t mFlags = 0;
};
std::optional<FullBoxHead> ReadFullBoxHead(const ByteSource& file, const Box& box);

// Writing.

/// A box of the type, or with a "uuid" type of the UUID, with the contents; the short size as long as it fits.
std::string BoxBytes(std::string_view type, std::string_view contents);
std::string UuidBoxBytes(std::string_view uuid, std::string_view contents);
std::string FullBoxBytes(std::string_view type, FullBoxHead head, std::string_view contents);
/// The header alone of a box of @p contentsSize bytes.
std::string BoxHeader(std::string_view type, std::uint64_t contentsSize);
/// A "free" box of exactly @p size bytes, at least 8 and less than 4 GiB.
std::string FreeBox(std::uint64_t size);

/// Writes the new size of a box, header included, into its size field. False when it does not fit there. A box to the end
/// of the file has nothing to be changed.
bool ResizeBox(Plan& plan, const Box& box, std::uint64_t newSize);
/// Gives a box to the end of the file its size, before something is appended behind it. One of 4 GiB or more needs a
/// longer header, which moves its contents by eight bytes: absolute offsets have to follow the plan. @p newSize is given
/// when the plan changes the size of the box.
void MakeExplicit(Plan& plan, const Box& box, std::optional<std::uint64_t> newSize = {});

}  // namespace zephmetadata::media
