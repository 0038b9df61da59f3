#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/files/file_stamp.h"
#include "xmp/packet/packet_about.h"
#include "xmp/packet/utf8.h"

namespace zephmetadata::toolkit {

/// A file that is an XMP packet, a sidecar.
///
/// Some programs write more into it than that: elements, comments or text around the packet, or the packet twice. The
/// first packet is the one that is read. Writing replaces the rdf:RDF element of it, and of all copies of it, and keeps
/// every other byte; comments within the element are moved to just before it. A file whose packets differ is read only,
/// since nobody can say which of them other programs go by. UTF-16 stays UTF-16; any other encoding becomes UTF-8.
class PacketFile {
public:
    explicit PacketFile(const UTF16String& path);

    FileStatus Status() const { return mStatus; }
    const UTF8String& Detail() const { return mDetail; }
    /// The packet as UTF-8; empty when it could not be read.
    std::string_view Packet() const;

    /// Puts what @p packet says in place of what was read, or leaves the file exactly as it was.
    media::WriteOutcome Write(std::string_view packet);

private:
    /// A document and where the packets of it are.
    struct Content {
        UTF8String mText;
        TextEncoding mEncoding = TextEncoding::kUTF8;
        std::vector<TextRange> mPackets;
        XMPMetaPtr mTree;  ///< of the first packet
        bool mPacketsDiffer = false;
        bool mIsExact = true;  ///< the text in its encoding is what the file holds
    };

    static Content ContentOf(std::string_view bytes);
    static void FindPackets(Content& content);
    static void FindWrappedPackets(Content& content);
    static std::string_view At(const Content& content, const TextRange& range);
    /// The text with every packet saying what @p packet does; absent when one of them has no place for it.
    std::optional<UTF8String> Replaced(std::string_view packet) const;

    std::string mPath;
    FileStatus mStatus = FileStatus::kFileStatus_Unreadable;
    UTF8String mDetail;
    media::FileStamp mStamp;
    Content mContent;
};

}  // namespace zephmetadata::toolkit
