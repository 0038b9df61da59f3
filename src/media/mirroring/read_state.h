#pragma once

#include <memory>
#include <set>
#include <vector>

#include "media/containers/container.h"
#include "xmp/tree/tree_journal.h"

namespace zephmetadata::media {

/// What has to be known of a reading, beside the tree that it made, to tell later what the file holds: so that a write of
/// that tree need not read the same packet into a tree again.
struct ReadState {
    std::shared_ptr<const toolkit::TreeJournal> mJournal;  ///< of that tree
    std::size_t mDigest = 0;                               ///< of the blocks
    std::set<toolkit::Place> mNativePlaces;                ///< where the tree has what native metadata says
    /// What the packet holds at some of them, which the tree does not.
    std::vector<std::shared_ptr<const toolkit::WrittenProperty>> mDisplaced;
};

/// Whether a state can be kept of a tree that was read from the blocks: the packet is one, and the toolkit takes none of its
/// properties for another.
bool CanKeepState(const FileBlocks& blocks, XMPMetaHandle tree);

/// A number that tells the packet and the datasets from others, within one process. Of all other bytes the file's stamp
/// tells.
std::size_t DigestOf(const FileBlocks& blocks);

}  // namespace zephmetadata::media
