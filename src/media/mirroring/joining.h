#pragma once

#include "media/containers/container.h"
#include "media/mirroring/read_state.h"
#include "media/mirroring/tree_values.h"

/// What a file says, of its packet and its native metadata together. docs/decisions/native-metadata.md says what wins where
/// they disagree.
namespace zephmetadata::media {

/// A file as it is read.
struct MediaTree {
    /// kFileStatus_Success, kFileStatus_NoXMP when nothing says anything, kFileStatus_DamagedXMP when the packet or a part
    /// of it cannot be read; the tree is there for the first two.
    FileStatus mStatus = FileStatus::kFileStatus_NoXMP;
    UTF8String mDetail;
    XMPMetaPtr
        mJoined;  ///< the packet with what native metadata says; its values know which they are (toolkit::IsNative)
    std::shared_ptr<const ReadState> mState;  ///< where one can be kept
};

/// Throws nothing.
MediaTree JoinBlocks(const FileBlocks& blocks);

/// A file that is to be written: its packet, and what native metadata says in place of properties of it or beside them.
struct MediaContent {
    FileStatus mStatus = FileStatus::kFileStatus_NoXMP;  ///< as that of a MediaTree
    UTF8String mDetail;
    XMPMetaPtr mPacket;  ///< what the packet holds and nothing else; null where its content is told alone
    std::set<toolkit::Place>
        mNativePlaces;  ///< where native metadata goes before the packet, or fills in what it lacks
    TreeContent mPacketContent;
    TreeContent mJoinedContent;  ///< what the joined tree would hold

    bool IsNative(const toolkit::Place& place) const { return mNativePlaces.contains(place); }
};

/// Throws nothing.
MediaContent ContentOf(const FileBlocks& blocks);
/// The same for blocks that say what they said when they were read as @p tree with @p state, without its trees: what the
/// tree, which holds @p now, was before it was changed. Absent for other blocks, and when the tree cannot tell.
std::optional<MediaContent> ContentAsRead(const FileBlocks& blocks, const ReadState* state, XMPMetaHandle tree,
                                          const TreeContent& now);

/// Whether the IIM datasets were changed since a writer brought them into step with the XMP, by the digest that it left.
bool IsIIMChanged(const FileBlocks& blocks);

}  // namespace zephmetadata::media
