#pragma once

#include "media/containers/container.h"
#include "xmp/tree/xmp_tree.h"

/// What a file says, of its packet and its native metadata together. docs/decisions/native-metadata.md says what wins where
/// they disagree.
namespace zephmetadata::media {

/// The trees of a file.
struct MediaTrees {
    /// kFileStatus_Success, kFileStatus_NoXMP when nothing says anything, kFileStatus_DamagedXMP when the packet or a part
    /// of it cannot be read; the trees are there for the first two.
    FileStatus mStatus = FileStatus::kFileStatus_NoXMP;
    UTF8String mDetail;
    XMPMetaPtr mPacket;  ///< what the packet holds and nothing else, when it is to be kept; empty without a packet
    XMPMetaPtr mJoined;  ///< with what native metadata says; its values know which they are (toolkit::IsNative)
};

/// Whether the tree of the packet alone is wanted beside the joined one: it costs a copy.
enum class KeepPacket { kNo, kYes };

/// Throws nothing.
MediaTrees JoinBlocks(const FileBlocks& blocks, KeepPacket keep = KeepPacket::kNo);

/// Whether the IIM datasets were changed since a writer brought them into step with the XMP, by the digest that it left.
bool IsIIMChanged(const FileBlocks& blocks);

}  // namespace zephmetadata::media
