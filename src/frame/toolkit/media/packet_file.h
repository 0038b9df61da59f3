#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "frame/toolkit/media/xmp_files.h"

namespace zephmetadata::toolkit {

/// A file that is an XMP packet, a sidecar.
///
/// Some programs write more into it than that: text around the packet, or the packet twice. The first packet is the
/// one that is read. Writing replaces it, and all copies of it, and keeps every other byte; a file whose packets differ
/// is read only, since nobody can say which of them other programs go by.
class PacketFile {
public:
    explicit PacketFile(const UTF16String& path);

    FileStatus Status() const { return mStatus; }
    const UTF8String& Detail() const { return mDetail; }
    /// The packet; empty when it could not be read.
    std::string_view Packet() const;

    /// Puts @p packet in place of the one that was read, or leaves the file exactly as it was.
    WriteOutcome Write(std::string_view packet);

private:
    struct Range {
        std::size_t mBegin;
        std::size_t mEnd;
    };

    void FindPackets();
    std::string_view At(const Range& range) const;
    /// The bytes with every packet replaced; @p replaced is where the new ones lie.
    std::string Replaced(std::string_view packet, std::vector<Range>& replaced) const;

    UTF16String mPath;
    FileStatus mStatus = FileStatus::kFileStatus_Unreadable;
    UTF8String mDetail;
    FileStamp mStamp;
    std::string mBytes;
    std::vector<Range> mPackets;
    bool mPacketsDiffer = false;
};

}  // namespace zephmetadata::toolkit
