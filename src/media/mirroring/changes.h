#pragma once

#include "media/mirroring/joining.h"
#include "xmp/tree/place.h"

namespace zephmetadata::media {

/// Which blocks of a format can be written.
struct WritableBlocks {
    bool mExif = false;
    bool mIIM = false;
};

/// What an edit of a file comes to.
struct MediaChanges {
    std::vector<toolkit::Place>
        mProperties;      ///< the top-level properties that differ; nothing is to be done when empty
    TreeContent mWanted;  ///< what the file is to read as
    XMPMetaPtr mPacket;   ///< what the packet becomes
    TreeContent mPacketContent;
    std::vector<TiffEdit> mExif;
    std::optional<std::string> mIIM;
    UTF8String mRefused;  ///< a property that native metadata holds and cannot be made to say; empty when there is none
};

/// What has to change in a file that reads as @p before so that it reads as @p wanted: the properties that differ in the
/// packet, and the native fields that mirror them. Takes the tree of the packet out of @p before, or makes it anew. May throw
/// XMPError.
MediaChanges ChangesFor(const FileBlocks& blocks, MediaContent& before, XMPMetaHandle wanted, TreeContent wantedContent,
                        const WritableBlocks& writable);

/// Why a file that now reads as @p after is not what the changes were to make of it; empty when it is: the packet holds
/// what it was to hold, what was to change reads as @p wanted has it, and nothing else of @p before is gone, as where one
/// native field stands behind several properties.
UTF8String WhyNotAsWanted(const MediaChanges& changes, const MediaContent& before, const MediaContent& after,
                          XMPMetaHandle wanted);

/// Brings the tree of which a file was written up to what the file now says: a property that native metadata derives from
/// a changed field changed with it.
void FollowChanges(const MediaChanges& changes, const MediaContent& after, XMPMetaHandle tree);

}  // namespace zephmetadata::media
