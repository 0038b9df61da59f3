#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/mirroring/changes.h"
#include "media/native/iim/image_resources.h"
#include "media/native/tiff/tiff_stream.h"
#include "xmp/packet/packet_aliases.h"

/// Files that are their blocks alone, and edits of them.
namespace zephmetadata::media {

class MirroringTest : public testing::Test {
protected:
    MirroringTest() { toolkit::Start(); }
    ~MirroringTest() override { toolkit::Stop(); }
};

inline std::string Packet(const std::string& body) {
    std::string namespaces;
    for (const char* prefix : {"dc", "exif", "pdf", "photoshop", "tiff", "xmp"}) {
        namespaces += std::string(" xmlns:") + prefix + "='" + *toolkit::NamespaceOf(prefix) + "'";
    }
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
           "<rdf:Description rdf:about=''" +
           namespaces + ">" + body + "</rdf:Description></rdf:RDF></x:xmpmeta>";
}
/// A property with a simple value.
inline std::string Simple(const std::string& name, const std::string& text) {
    return "<" + name + ">" + text + "</" + name + ">";
}
inline std::string Array(const std::string& name, const std::string& kind, const std::vector<std::string>& items) {
    std::string list;
    for (const std::string& item : items) {
        list += "<rdf:li>" + item + "</rdf:li>";
    }
    return Simple(name, Simple("rdf:" + kind, list));
}
/// Pairs of language and text.
inline std::string Languages(const std::string& name,
                             const std::vector<std::pair<std::string, std::string>>& languages) {
    std::string list;
    for (const auto& [language, text] : languages) {
        list += "<rdf:li xml:lang='" + language + "'>" + text + "</rdf:li>";
    }
    return Simple(name, Simple("rdf:Alt", list));
}

inline UTF8String SchemaOf(const std::string& name) {
    return toolkit::NamespaceOf(name.substr(0, name.find(':'))).value_or("");
}
inline std::string ValueOf(XMPMetaHandle tree, const std::string& name) {
    const auto found = toolkit::GetProperty(tree, SchemaOf(name), name);
    return found ? found->mValue : "<none>";
}
inline void Set(XMPMetaHandle tree, const std::string& name, const std::string& value) {
    toolkit::SetProperty(tree, SchemaOf(name), name, value);
}
inline void Delete(XMPMetaHandle tree, const std::string& name) {
    EXPECT_TRUE(toolkit::DeleteProperty(tree, SchemaOf(name), name)) << name;
}

inline FileBlocks Blocks(const std::string& body, const std::vector<TiffEdit>& exif = {}) {
    FileBlocks blocks;
    if (!body.empty()) {
        blocks.mXMP = Packet(body);
    }
    if (!exif.empty()) {
        blocks.mExif.push_back({std::make_shared<MemorySource>(NewTiff(exif)), TiffDirectory::kMain});
    }
    return blocks;
}

/// What a file says, read in one way and in the other, which have to come to the same.
struct FileSide {
    explicit FileSide(const FileBlocks& blocks) : mContent(ContentOf(blocks)), mPacket(mContent.mPacket) {
        MediaTree tree = JoinBlocks(blocks);
        EXPECT_EQ(mContent.mStatus, tree.mStatus);
        EXPECT_EQ(ChangedProperties(TreeContent(tree.mJoined.get()), mContent.mJoinedContent).size(), 0U);
        mJoined = std::move(tree.mJoined);
    }

    MediaContent mContent;
    XMPMetaPtr mPacket;
    XMPMetaPtr mJoined;
};

/// A file that was edited.
struct EditedFile {
    FileSide mBefore;
    MediaChanges mChanges;
    FileSide mAfter;
    UTF8String mWhyNot;
};

/// A tree that is changed tells what the file held as well as the file does, but for the old names of properties and for
/// another file.
template <typename Edit>
void ExpectToldByTree(const FileBlocks& blocks, const Edit& edit) {
    const MediaTree read = JoinBlocks(blocks);
    ASSERT_EQ(read.mState != nullptr, blocks.mExtendedXMP.empty() && !toolkit::HasAliases(read.mJoined.get()));
    edit(read.mJoined.get());
    const TreeContent now(read.mJoined.get());
    const auto told = ContentAsRead(blocks, read.mState.get(), read.mJoined.get(), now);
    ASSERT_EQ(told.has_value(), read.mState != nullptr);
    if (told) {
        const MediaContent content = ContentOf(blocks);
        EXPECT_EQ(ChangedProperties(told->mJoinedContent, content.mJoinedContent).size(), 0U);
        EXPECT_EQ(ChangedProperties(told->mPacketContent, content.mPacketContent).size(), 0U);
        EXPECT_EQ(ChangedProperties(TreeContent(told->mPacketContent.Tree().get()), content.mPacketContent).size(), 0U);
        EXPECT_TRUE(std::equal(told->mNativePlaces.begin(), told->mNativePlaces.end(), content.mNativePlaces.begin(),
                               content.mNativePlaces.end(),
                               [](const auto& left, const auto& right) { return !(left < right) && !(right < left); }));
        FileBlocks other = blocks;
        other.mXMP = blocks.mXMP.value_or("") + " ";
        EXPECT_FALSE(ContentAsRead(other, read.mState.get(), read.mJoined.get(), now));
    }
    EXPECT_FALSE(ContentAsRead(blocks, read.mState.get(), toolkit::CloneTree(read.mJoined.get()).get(), now));
}

template <typename Edit>
EditedFile EditBlocks(const FileBlocks& blocks, const Edit& edit) {
    ExpectToldByTree(blocks, edit);
    const FileSide before(blocks);
    const XMPMetaPtr wanted = toolkit::CloneTree(before.mJoined.get());
    edit(wanted.get());
    MediaContent content = ContentOf(blocks);  // whose packet becomes the changed one
    MediaChanges changes = ChangesFor(blocks, content, wanted.get(), TreeContent(wanted.get()), {true, true});
    FileBlocks written = blocks;
    written.mXMP = toolkit::SerializePacket(changes.mPacket.get(), toolkit::PacketForm::kBareRDF);
    if (!changes.mExif.empty()) {
        const ByteSource& stream = *blocks.mExif.at(0).mSource;
        const auto edited = EditedExif(ReadRange(stream, {0, stream.Size()}), changes.mExif);
        written.mExif.at(0).mSource = std::make_shared<MemorySource>(edited.value_or("damaged"));
    }
    if (changes.mIIM) {
        written.mIIM = changes.mIIM;
        written.mIIMDigest = blocks.mIIMDigest ? std::optional(IIMDigest(*written.mIIM)) : std::nullopt;
    }
    const FileSide after(written);
    UTF8String whyNot = WhyNotAsWanted(changes, before.mContent, after.mContent, wanted.get());
    return {before, std::move(changes), after, std::move(whyNot)};
}

/// An edit of what nothing else depends on.
inline void EditLabel(XMPMetaHandle tree) {
    Set(tree, "xmp:Label", "unrelated");
}

}  // namespace zephmetadata::media
