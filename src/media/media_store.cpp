#include "media/media_store.h"

#include <tuple>
#include <utility>

#include "media/containers/jpeg/jpeg_extended_xmp.h"
#include "media/files/plan_check.h"
#include "media/mirroring/changes.h"
#include "zephcore/files.h"

namespace zephmetadata::media {

namespace {

MediaReading ReadFailure(FileStatus status, UTF8String detail = {}) {
    MediaReading failure;
    failure.mStatus = status;
    failure.mDetail = std::move(detail);
    return failure;
}

/// How the file that holds these blocks refuses to be written; kFileStatus_Success when it does not.
std::pair<FileStatus, UTF8String> WriteRefusal(const FormatRow& format, const FileBlocks& blocks) {
    if (blocks.mStatus != FileStatus::kFileStatus_Success) {
        return {blocks.mStatus, blocks.mDetail};
    }
    if ((format.mWrites & kMetadata_XMP) == 0 || !blocks.mWhyReadOnly.empty()) {
        return {FileStatus::kFileStatus_CannotCarryXMP, blocks.mWhyReadOnly};
    }
    if (!blocks.mIsWhole) {
        return {FileStatus::kFileStatus_DamagedXMP, "a part of its extended XMP is missing"};
    }
    return {FileStatus::kFileStatus_Success, {}};
}

/// What of a file is not to change, as it was before.
class Untouched {
public:
    Untouched(const FileBlocks& before, const BlockChanges& changes)
        : mExif(changes.mExif.empty() ? &before.mExif : nullptr), mIIM(changes.mIIM ? nullptr : &before.mIIM) {}

    /// The name of the block that is not what it was; empty when all are.
    UTF8String Changed(const FileBlocks& after) const {
        if (mExif != nullptr && !SameExif(*mExif, after.mExif)) {
            return "the Exif block";
        }
        return mIIM != nullptr && *mIIM != after.mIIM ? "the IPTC records" : UTF8String();
    }

private:
    /// Streams that share the file's own bytes hold what changes too; of those the plan's check knows.
    static bool SameExif(const std::vector<ExifStream>& before, const std::vector<ExifStream>& after) {
        if (before.size() != after.size()) {
            return false;
        }
        for (std::size_t i = 0; i < before.size(); ++i) {
            const auto* const old = dynamic_cast<const MemorySource*>(before[i].mSource.get());
            const auto* const now = dynamic_cast<const MemorySource*>(after[i].mSource.get());
            if (old != nullptr && now != nullptr && old->Bytes() != now->Bytes()) {
                return false;
            }
        }
        return true;
    }

    const std::vector<ExifStream>* mExif;
    const std::optional<std::string>* mIIM;
};

/// One write: what was read, what is to become of it, and whether it did.
class MediaEdit {
public:
    explicit MediaEdit(XMPMetaHandle wanted, const ReadState* state = nullptr) : mWanted(wanted), mState(state) {}

    PlannedEdit PlanFor(const std::shared_ptr<const ByteSource>& file) {
        const FormatRow* const format = FormatOf(*file);
        if (format == nullptr) {
            return RefusedEdit(FileStatus::kFileStatus_UnknownFormat, {});
        }
        mFormat = format;
        mBlocks = format->mContainer().Read(file);
        TreeContent wanted(mWanted);
        std::optional<MediaContent> asRead = ContentAsRead(mBlocks, mState, mWanted, wanted);
        mBefore = asRead ? *std::move(asRead) : ContentOf(mBlocks);
        if (mBefore.mStatus == FileStatus::kFileStatus_DamagedXMP) {
            return RefusedEdit(mBefore.mStatus, mBefore.mDetail);
        }
        auto [refusal, detail] = WriteRefusal(*format, mBlocks);
        if (refusal != FileStatus::kFileStatus_Success) {
            return RefusedEdit(refusal, std::move(detail));
        }
        mChanges = ChangesFor(mBlocks, mBefore, mWanted, std::move(wanted), WritableOf(*format));
        if (!mChanges.mRefused.empty()) {
            return RefusedEdit(FileStatus::kFileStatus_NotWritten,
                               mChanges.mRefused + " cannot be stored in the file's native metadata like this");
        }
        return mChanges.mProperties.empty() ? PlannedEdit() : PlanBlocks(file);
    }

    UTF8String Check(const CarriedEdit& edit) {
        const Container& container = mFormat->mContainer();
        UTF8String moved =
            ReferenceDifference(edit.mPlan, container.References(*edit.mBefore), container.References(*edit.mAfter));
        if (!moved.empty()) {
            return moved;
        }
        const FileBlocks blocks = container.Read(edit.mAfter);
        if (blocks.mStatus != FileStatus::kFileStatus_Success || !blocks.mIsWhole) {
            return "the written file does not read back";
        }
        if (UTF8String changed = Untouched(mBlocks, mBlockChanges).Changed(blocks); !changed.empty()) {
            return changed + " would not stay as it is";
        }
        mAfter = ContentOf(blocks);
        if (!mAfter.mPacket) {
            return "the written metadata does not read back";
        }
        return WhyNotAsWanted(mChanges, mBefore, mAfter, mWanted);
    }

    void Follow() {
        if (mAfter.mPacket) {
            toolkit::EndJournal(mWanted);  // it tells of what the file held before
            FollowChanges(mChanges, mAfter, mWanted);
        }
    }

private:
    static WritableBlocks WritableOf(const FormatRow& format) {
        return {(format.mWrites & kMetadata_Exif) != 0, (format.mWrites & kMetadata_IIM) != 0};
    }

    PlannedEdit PlanBlocks(const std::shared_ptr<const ByteSource>& file) {
        const Container& container = mFormat->mContainer();
        toolkit::SplitPacket packet =
            toolkit::SerializeSplit(mChanges.mPacket.get(), container.MaxPacketBytes(), &ExtendedXMPGuid,
                                    mChanges.mPacketContent.IsChangedByWriting());
        mBlockChanges.mXMP = std::move(packet.mMain);
        mBlockChanges.mExtendedXMP = std::move(packet.mExtended);
        mBlockChanges.mExif = mChanges.mExif;
        mBlockChanges.mIIM = mChanges.mIIM;
        mBlockChanges.mRenewsIIMDigest = !IsIIMChanged(mBlocks);
        return container.PlanEdit(file, mBlockChanges);
    }

    XMPMetaHandle mWanted;
    const ReadState* mState;
    const FormatRow* mFormat = nullptr;
    FileBlocks mBlocks;
    MediaChanges mChanges;
    BlockChanges mBlockChanges;
    MediaContent mBefore;
    MediaContent mAfter;
};

}  // namespace

MediaReading ReadMedia(const std::shared_ptr<const ByteSource>& source) {
    MediaReading reading;
    reading.mFormat = FormatOf(*source);
    if (reading.mFormat == nullptr) {
        return ReadFailure(FileStatus::kFileStatus_UnknownFormat);
    }
    const FileBlocks blocks = reading.mFormat->mContainer().Read(source);
    MediaTree trees = JoinBlocks(blocks);
    std::tie(reading.mWriteStatus, reading.mWriteDetail) = WriteRefusal(*reading.mFormat, blocks);
    reading.mStatus = trees.mStatus;
    reading.mDetail = trees.mStatus == FileStatus::kFileStatus_NoXMP ? reading.mWriteDetail : std::move(trees.mDetail);
    if (trees.mStatus == FileStatus::kFileStatus_Success) {
        reading.mTree = std::move(trees.mJoined);
        reading.mState = std::move(trees.mState);
        reading.mDetail = blocks.mStatus == FileStatus::kFileStatus_Success ? UTF8String() : blocks.mDetail;
    } else if (trees.mStatus == FileStatus::kFileStatus_DamagedXMP) {
        std::tie(reading.mWriteStatus, reading.mWriteDetail) = std::pair(reading.mStatus, reading.mDetail);
    } else if (blocks.mStatus != FileStatus::kFileStatus_Success) {
        reading.mStatus = blocks.mStatus;  // nothing could be read of what is damaged
        reading.mDetail = blocks.mDetail;
    }
    return reading;
}

MediaReading ReadMedia(const UTF16String& path) {
    const OpenedMedia file = OpenMediaFile(zephcore::PathToNative(path));
    if (file.mStatus != FileStatus::kFileStatus_Success) {
        return ReadFailure(file.mStatus, file.mDetail);
    }
    MediaReading reading = ReadMedia(file.mSource);
    reading.mStamp = file.mStamp;
    return reading;
}

WriteOutcome WriteMedia(const UTF16String& path, XMPMetaHandle tree, const FileStamp& stamp, const ReadState* state) {
    try {
        MediaEdit edit(tree, state);
        WriteOutcome outcome = ReplaceMedia(
            zephcore::PathToNative(path), stamp, [&](const auto& file) { return edit.PlanFor(file); },
            [&](const CarriedEdit& carried) { return edit.Check(carried); });
        if (outcome.mStatus == FileStatus::kFileStatus_Success) {
            edit.Follow();
        }
        return outcome;
    } catch (const XMPError& error) {
        return {FileStatus::kFileStatus_NotWritten, error.what(), {}};
    }
}

SentMedia SendMedia(const std::shared_ptr<const ByteSource>& source, XMPMetaHandle tree, ByteTarget& target) {
    try {
        MediaEdit edit(tree);
        SentMedia sent = SendEdited(
            source, target, [&](const auto& file) { return edit.PlanFor(file); },
            [&](const CarriedEdit& carried) { return edit.Check(carried); });
        if (sent.mStatus == FileStatus::kFileStatus_Success) {
            edit.Follow();
        }
        return sent;
    } catch (const XMPError& error) {
        return {FileStatus::kFileStatus_NotWritten, error.what(), nullptr};
    }
}

}  // namespace zephmetadata::media
