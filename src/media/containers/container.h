#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "media/native/native_value.h"
#include "media/native/tiff/tiff_stream.h"
#include "media/plan.h"
#include "zephmetadata/file_status.h"
#include "zephmetadata/types.h"

/// Media formats: where the metadata blocks of a file lie, and how to make a file with some of them changed. Containers
/// know nothing of what the blocks say, and nothing above them knows a format.
namespace zephmetadata::media {

/// The bytes of a TIFF stream with Exif, and what its first directory is.
struct ExifStream {
    std::shared_ptr<const ByteSource> mSource;
    TiffDirectory mFirst = TiffDirectory::kMain;
};

/// The metadata blocks of a file.
struct FileBlocks {
    /// kFileStatus_Success, or kFileStatus_DamagedFile when the structure is damaged or cut off: the blocks are those
    /// that could be read, and the file is not written.
    FileStatus mStatus = FileStatus::kFileStatus_Success;
    UTF8String mDetail;  ///< in English: what is damaged
    /// Why the file as it is cannot be written though it is sound (encrypted, signed); empty when it can.
    UTF8String mWhyReadOnly;

    /// The text of the packet as it stands in the file, with its wrapper, in whatever UTF it is; absent for none.
    std::optional<std::string> mXMP;
    /// Further parts of it (extended XMP of JPEG), each a packet; mIsWhole is false when the file refers to one that is not
    /// there as a whole.
    std::vector<std::string> mExtendedXMP;
    bool mIsWhole = true;

    std::vector<ExifStream> mExif;    ///< of several the first that says something of a property goes
    std::optional<std::string> mIIM;  ///< IPTC-IIM datasets (IIM 4.2, chapter 1.6)
    /// MD5 that a writer left of the IIM datasets it had brought into step with the XMP (Photoshop image resource 1061).
    std::optional<std::string> mIIMDigest;
    std::vector<NativeValue> mValues;  ///< what the format's own fields say (ID3, RIFF INFO, PDF document information)
};

/// What is to change in the blocks of a file. Everything else stays byte for byte.
struct BlockChanges {
    /// The new packet: an x:xmpmeta element in UTF-8, for which the container makes the wrapper and leaves room.
    std::optional<std::string> mXMP;
    /// For a packet over the container's MaxPacketBytes: its further part.
    std::string mExtendedXMP;
    std::vector<TiffEdit> mExif;      ///< in an Exif block, which is made when there is none; see ExifOrder
    std::optional<std::string> mIIM;  ///< the new datasets
    /// Whether a digest of the datasets that is there is made to match. One that did not match before says that the
    /// datasets know something newer than the XMP, and has to go on saying so.
    bool mRenewsIIMDigest = true;
};

/// A way to change a file, or why there is none.
struct PlannedEdit {
    FileStatus mStatus = FileStatus::kFileStatus_Success;
    UTF8String mDetail;
    Plan mPlan;  ///< when the status is kFileStatus_Success
};

inline PlannedEdit RefusedEdit(FileStatus status, UTF8String detail) {
    return {status, std::move(detail), {}};
}

/// One format, or several of the same structure. Stateless; objects live as long as the process.
class Container {
public:
    Container() = default;
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;
    virtual ~Container() = default;

    /// Reads no more of the file than it has to. The source has to outlive the streams in the result only where the result
    /// says so by sharing it.
    virtual FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const = 0;
    /// Asked only for a file that Read found sound and whole. The base refuses.
    virtual PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const;
    /// The stretches that the file refers to by where they lie (image data, items, chunks of film), in the file's order of
    /// referring: after an edit each has to lie where the plan moved it. The base knows none.
    virtual std::vector<Range> References(const ByteSource& file) const;
    /// The largest packet that fits without a further part, in bytes.
    virtual std::size_t MaxPacketBytes() const { return static_cast<std::size_t>(-1); }
};

// What containers share.

/// Room that is left behind a packet that is written anew, so that small edits move nothing.
inline constexpr std::size_t kPacketPadding = 2048;
/// Blocks larger than this are not read: no packet or Exif block of a real file comes near it.
inline constexpr std::uint64_t kMaxBlockBytes = std::uint64_t{256} << 20U;

/// @p element between the processing instructions of an XMP packet (ISO 16684-1, 7.3.2), with white space before the
/// closing one that makes it exactly @p wanted bytes. When it does not fit, with kPacketPadding bytes of white space.
std::string WrappedPacket(std::string_view element, std::size_t wanted = 0);
/// The same without room, for formats in which a change of size moves nothing: the wrapper alone.
std::string ShortPacket(std::string_view element);

/// The Exif block (a TIFF stream without any signature before it) with the edits carried out, a new one when @p block is
/// absent; absent when it is damaged.
std::optional<std::string> EditedExif(const std::optional<std::string>& block, std::span<const TiffEdit> edits);

}  // namespace zephmetadata::media
