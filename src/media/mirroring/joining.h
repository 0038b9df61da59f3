#pragma once

#include "media/containers/container.h"
#include "media/mirroring/tree_values.h"

/// What a file says, of its packet and its native metadata together. docs/decisions/native-metadata.md says what wins where
/// they disagree.
namespace zephmetadata::media {

/// The trees of a file.
struct MediaTrees {
    /// kFileStatus_Success, kFileStatus_NoXMP when nothing says anything, kFileStatus_DamagedXMP when the packet or a part
    /// of it cannot be read; the trees are there for the first two.
    FileStatus mStatus = FileStatus::kFileStatus_NoXMP;
    UTF8String mDetail;
    XMPMetaPtr
        mJoined;  ///< the packet with what native metadata says; its values know which they are (toolkit::IsNative)
    XMPMetaPtr mPacket;          ///< what the packet holds and nothing else, where asked for
    TreeContent mJoinedContent;  ///< where asked for, as the next
    TreeContent mPacketContent;
};

/// What is wanted beside the joined tree.
enum class Keep {
    kNothing,
    kContents,  ///< those of the joined tree and of the packet
    kPacket,    ///< the packet's tree, which costs a copy, and the content of the joined one
};

/// Throws nothing.
MediaTrees JoinBlocks(const FileBlocks& blocks, Keep keep = Keep::kNothing);

/// Whether the IIM datasets were changed since a writer brought them into step with the XMP, by the digest that it left.
bool IsIIMChanged(const FileBlocks& blocks);

}  // namespace zephmetadata::media
