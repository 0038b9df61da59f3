#include "frame/toolkit/media/packet_file.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "frame/toolkit/media/file_replacement.h"
#include "frame/toolkit/packet_text.h"
#include "frame/toolkit/xmp_tree.h"

namespace zephmetadata::toolkit {

namespace {

/// The tree of a packet; null when it is none.
XMPMetaPtr TreeOf(std::string_view packet) {
    XMPMetaPtr tree = NewTree();
    return ParsePacket(tree.get(), packet) ? tree : nullptr;
}

bool IsFileOf(const std::string& nativePath, std::string_view bytes) {
    std::ifstream in(nativePath, std::ios::binary);
    return std::equal(bytes.begin(), bytes.end(), std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

PacketFile::PacketFile(const UTF16String& path) : mPath(path) {
    const MediaPath resolved = ResolveMediaPath(path);
    mStatus = resolved.mStatus;
    mDetail = resolved.mDetail;
    mStamp = resolved.mStamp;
    if (mStatus != FileStatus::kFileStatus_Success) {
        return;
    }
    if (mStamp.mSize > kMaxPacketBytes) {
        mStatus = FileStatus::kFileStatus_DamagedXMP;
        mDetail = "too large";
        return;
    }
    std::ifstream in(resolved.mNative, std::ios::binary);
    mBytes.assign(std::istreambuf_iterator<char>(in), {});
    FindPackets();
    if (mPackets.empty()) {
        mStatus = FileStatus::kFileStatus_DamagedXMP;
    }
}

std::string_view PacketFile::At(const Range& range) const {
    return std::string_view(mBytes).substr(range.mBegin, range.mEnd - range.mBegin);
}

std::string_view PacketFile::Packet() const {
    return mPackets.empty() ? std::string_view() : At(mPackets.front());
}

void PacketFile::FindPackets() {
    if (TreeOf(mBytes)) {
        mPackets.push_back({0, mBytes.size()});
        return;
    }
    XMPMetaPtr first;
    std::size_t begin = mBytes.find("<?xpacket begin");
    while (begin != std::string::npos) {
        const std::size_t trailer = mBytes.find("<?xpacket end", begin);
        const std::size_t close = trailer == std::string::npos ? trailer : mBytes.find("?>", trailer);
        if (close == std::string::npos) {
            return;
        }
        const Range range{begin, close + 2};
        const XMPMetaPtr tree = TreeOf(At(range));
        if (!first && !tree) {
            return;
        }
        mPacketsDiffer = mPacketsDiffer || (first && !(tree && TreesEqual(first.get(), tree.get())));
        first = first ? first : tree;
        mPackets.push_back(range);
        begin = mBytes.find("<?xpacket begin", range.mEnd);
    }
}

std::string PacketFile::Replaced(std::string_view packet, std::vector<Range>& replaced) const {
    std::string bytes;
    std::size_t done = 0;
    for (const Range& range : mPackets) {
        bytes.append(mBytes, done, range.mBegin - done);
        replaced.push_back({bytes.size(), bytes.size() + packet.size()});
        bytes.append(packet);
        done = range.mEnd;
    }
    return bytes.append(mBytes, done);
}

WriteOutcome PacketFile::Write(std::string_view packet) {
    if (mPacketsDiffer) {
        return {FileStatus::kFileStatus_DamagedXMP, "it holds several packets that differ", {}};
    }
    const MediaPath target = ResolveUnchanged(mPath, mStamp);
    if (target.mStatus != FileStatus::kFileStatus_Success) {
        return {target.mStatus, target.mDetail, {}};
    }
    std::vector<Range> replaced;
    std::string bytes = Replaced(packet, replaced);
    FileReplacement replacement(target);
    if (!replacement.Fill(bytes)) {
        return {replacement.Status(), replacement.Detail(), {}};
    }
    if (!IsFileOf(replacement.WorkingCopy(), bytes)) {
        return {FileStatus::kFileStatus_NotWritten, "what was written does not read back", {}};
    }
    if (!replacement.Commit()) {
        return {replacement.Status(), replacement.Detail(), {}};
    }
    mBytes = std::move(bytes);
    mPackets = std::move(replaced);
    mStamp = StampOf(target.mNative);
    return {FileStatus::kFileStatus_Success, {}, mStamp};
}

}  // namespace zephmetadata::toolkit
