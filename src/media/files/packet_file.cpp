#include "media/files/packet_file.h"

#include "media/files/media_write.h"
#include "platform/file_descriptor.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/packet/packet_text.h"
#include "xmp/packet/rdf_element.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {

namespace {

/// The tree of a packet; null when it is none.
XMPMetaPtr TreeOf(std::string_view packet) {
    XMPMetaPtr tree = NewTree();
    return ParsePacket(tree.get(), packet) ? tree : nullptr;
}

/// Whether the XML declaration, when there is one, leaves a document in UTF-8.
bool SaysUTF8(std::string_view document) {
    constexpr std::string_view kDeclaration = "<?xml ";
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    document.remove_prefix(document.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
    if (!document.starts_with(kDeclaration)) {
        return true;
    }
    const std::string_view declaration = document.substr(0, document.find("?>"));
    const std::size_t name = declaration.find("encoding");
    const std::size_t value = name == std::string_view::npos ? name : declaration.find_first_of("'\"", name);
    return value == std::string_view::npos || SameLanguage(declaration.substr(value + 1, 5), "utf-8");
}

}  // namespace

PacketFile::PacketFile(const UTF16String& path) : mPath(zephcore::SystemPath(path)) {
    const media::OpenedMedia file = media::OpenMediaFile(mPath);
    mStatus = file.mStatus;
    mDetail = file.mDetail;
    mStamp = file.mStamp;
    if (mStatus != FileStatus::kFileStatus_Success) {
        return;
    }
    if (mStamp.mSize > kMaxPacketBytes) {
        mStatus = FileStatus::kFileStatus_DamagedXMP;
        mDetail = "too large";
        return;
    }
    const auto bytes = media::ReadRange(*file.mSource, {0, mStamp.mSize});
    if (!bytes) {
        mStatus = FileStatus::kFileStatus_Unreadable;
        return;
    }
    mContent = ContentOf(*bytes);
    if (mContent.mPackets.empty()) {
        mStatus = FileStatus::kFileStatus_DamagedXMP;
    }
}

std::string_view PacketFile::At(const Content& content, const TextRange& range) {
    return std::string_view(content.mText).substr(range.mBegin, range.mEnd - range.mBegin);
}

std::string_view PacketFile::Packet() const {
    return mContent.mPackets.empty() ? std::string_view() : At(mContent, mContent.mPackets.front());
}

PacketFile::Content PacketFile::ContentOf(std::string_view bytes) {
    Content content;
    content.mEncoding = EncodingOf(bytes);
    content.mText = DecodedDocument(bytes, content.mEncoding);
    const bool isUTF16 = content.mEncoding != TextEncoding::kUTF8;
    content.mIsExact = !isUTF16 || EncodedDocument(content.mText, content.mEncoding) == bytes;
    if (!isUTF16 && (!IsXMLText(bytes) || !SaysUTF8(bytes))) {
        content.mText = CleanPacket(bytes);
    }
    FindPackets(content);
    return content;
}

void PacketFile::FindPackets(Content& content) {
    content.mTree = TreeOf(content.mText);
    if (content.mTree) {
        content.mPackets.push_back({0, content.mText.size()});
    } else {
        FindWrappedPackets(content);
    }
}

void PacketFile::FindWrappedPackets(Content& content) {
    const UTF8String& text = content.mText;
    std::size_t begin = text.find("<?xpacket begin");
    while (begin != UTF8String::npos) {
        const std::size_t trailer = text.find("<?xpacket end", begin);
        const std::size_t close = trailer == UTF8String::npos ? trailer : text.find("?>", trailer);
        if (close == UTF8String::npos) {
            return;
        }
        const TextRange range{begin, close + 2};
        const XMPMetaPtr tree = TreeOf(At(content, range));
        if (!content.mTree && !tree) {
            return;
        }
        const bool differs = content.mTree && !(tree && TreesEqual(content.mTree.get(), tree.get()));
        content.mPacketsDiffer = content.mPacketsDiffer || differs;
        content.mTree = content.mTree ? content.mTree : tree;
        content.mPackets.push_back(range);
        begin = text.find("<?xpacket begin", range.mEnd);
    }
}

std::optional<UTF8String> PacketFile::Replaced(std::string_view packet) const {
    const std::optional<RDFElement> wanted = FindRDF(packet);
    const UTF8String& text = mContent.mText;
    UTF8String replaced;
    std::size_t done = 0;
    for (const TextRange& range : mContent.mPackets) {
        const std::optional<RDFElement> present = FindRDF(At(mContent, range));
        if (!wanted || !present) {
            return std::nullopt;
        }
        const TextRange element{range.mBegin + present->mRange.mBegin, range.mBegin + present->mRange.mEnd};
        replaced.append(text, done, element.mBegin - done).append(present->mAsides);
        replaced.append(packet.substr(wanted->mRange.mBegin, wanted->mRange.mEnd - wanted->mRange.mBegin));
        done = element.mEnd;
    }
    return replaced.append(text, done);
}

media::WriteOutcome PacketFile::Write(std::string_view packet) {
    if (mContent.mPacketsDiffer) {
        return {FileStatus::kFileStatus_DamagedXMP, "it holds several packets that differ", {}};
    }
    if (!mContent.mIsExact) {
        return {FileStatus::kFileStatus_DamagedXMP, "it holds what is no UTF-16", {}};
    }
    const std::optional<UTF8String> text = Replaced(packet);
    const std::string bytes = text ? EncodedDocument(*text, mContent.mEncoding) : std::string();
    Content written = ContentOf(bytes);
    const XMPMetaPtr wanted = TreeOf(packet);
    if (!wanted || written.mPacketsDiffer || written.mPackets.size() != mContent.mPackets.size() ||
        !TreesEqual(written.mTree.get(), wanted.get())) {
        return {FileStatus::kFileStatus_NotWritten, "the document around the packet does not take it", {}};
    }
    media::PlannedEdit edit;
    edit.mPlan.Replace({0, mStamp.mSize}, bytes, media::Touch::kBlock);
    media::WriteOutcome outcome = media::ReplaceMedia(mPath, mStamp, [&edit](const auto&) { return edit; }, {});
    if (outcome.IsSuccess()) {
        mContent = std::move(written);
        mStamp = outcome.mStamp;
    }
    return outcome;
}

}  // namespace zephmetadata::toolkit
