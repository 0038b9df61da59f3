#include "media/mirroring/joining.h"

#include <algorithm>
#include <set>
#include <utility>

#include "media/mirroring/tree_values.h"
#include "media/native/exif/exif_values.h"
#include "media/native/iim/iim_values.h"
#include "media/native/iim/image_resources.h"

namespace zephmetadata::media {

namespace {

using PropertyName = std::pair<std::string_view, std::string_view>;

/// Blocks of white space and NULs stand for packets that were wiped.
bool IsBlank(std::string_view packet) {
    constexpr std::string_view kBlank(" \t\r\n\0", 5);
    return packet.find_first_not_of(kBlank) == std::string_view::npos;
}

/// Takes values of one kind of native metadata into a tree.
class Joiner {
public:
    /// The tree of a file without a packet is empty: what is there later was taken from native metadata.
    Joiner(XMPMetaHandle tree, bool hasPacket) : mTree(tree), mHasPacket(hasPacket) {}

    /// Native metadata wins unless the packet says the same, by @p agrees, which may say it in more detail.
    template <typename Agrees>
    void Prefer(const std::vector<NativeValue>& values, const Agrees& agrees) {
        for (const NativeValue& value : values) {
            if (mTaken.contains({value.mNamespace, value.mProperty})) {
                continue;  // an earlier kind says it already
            }
            const UTF8String schema(value.mNamespace);
            const UTF8String property(value.mProperty);
            const auto held = mHasPacket ? ValueIn(mTree, schema, property) : std::nullopt;
            if (!held || !agrees(*held)) {
                Take(value, schema, property, held.has_value());
            }
            mTaken.emplace(value.mNamespace, value.mProperty);
        }
    }

    /// Native metadata fills in what the tree lacks.
    void FillIn(const std::vector<NativeValue>& values) {
        for (const NativeValue& value : values) {
            const UTF8String schema(value.mNamespace);
            const UTF8String property(value.mProperty);
            const bool isTaken = !mTaken.emplace(value.mNamespace, value.mProperty).second;
            if (!isTaken && !(mHasPacket && toolkit::PropertyExists(mTree, schema, property))) {
                Take(value, schema, property, false);
            }
        }
    }

    /// Makes the values know that they are native: last, because a change of a property takes its mark away.
    void MarkTaken() const {
        for (const auto& [schema, property] : mNative) {
            toolkit::MarkNative(mTree, schema, property);
        }
    }

private:
    void Take(const NativeValue& value, const UTF8String& schema, const UTF8String& property, bool isHeld) {
        isHeld ? PutValue(mTree, value) : AddValue(mTree, value);
        mNative.emplace_back(schema, property);
    }

    XMPMetaHandle mTree;
    bool mHasPacket;
    std::set<PropertyName> mTaken;
    std::vector<std::pair<UTF8String, UTF8String>> mNative;
};

void JoinExif(Joiner& joiner, const FileBlocks& blocks) {
    for (const ExifStream& stream : blocks.mExif) {
        const PagedSource paged(*stream.mSource);
        const TiffFields fields = ReadTiff(paged, stream.mFirst);
        joiner.Prefer(ExifValues(fields), [&](const NativeValue& held) { return ExifAgrees(fields, held); });
    }
}

void JoinIIM(Joiner& joiner, const FileBlocks& blocks) {
    if (!blocks.mIIM) {
        return;
    }
    const IIMRecords records = ReadIIM(*blocks.mIIM);
    if (IsIIMChanged(blocks)) {
        joiner.Prefer(IIMValues(records), [&](const NativeValue& held) { return IIMAgrees(records, held); });
    } else {
        joiner.FillIn(IIMValues(records));
    }
}

bool ParsePackets(XMPMetaHandle tree, const FileBlocks& blocks) {
    return toolkit::ParsePacket(tree, *blocks.mXMP) && toolkit::MergeExtended(tree, blocks.mExtendedXMP);
}

MediaTrees DamagedTrees(UTF8String detail) {
    MediaTrees trees;
    trees.mStatus = FileStatus::kFileStatus_DamagedXMP;
    trees.mDetail = std::move(detail);
    return trees;
}

MediaTrees Joined(const FileBlocks& blocks, Keep keep) {
    MediaTrees trees;
    trees.mJoined = toolkit::NewTree();
    const bool hasPacket = blocks.mXMP && !IsBlank(*blocks.mXMP);
    if (hasPacket && !ParsePackets(trees.mJoined.get(), blocks)) {
        return DamagedTrees({});
    }
    if (keep == Keep::kPacket) {
        trees.mPacket = toolkit::CloneTree(trees.mJoined.get());
    }
    if (keep == Keep::kContents) {
        trees.mPacketContent = TreeContent(trees.mJoined.get());
    }
    Joiner joiner(trees.mJoined.get(), hasPacket);
    JoinExif(joiner, blocks);
    JoinIIM(joiner, blocks);
    joiner.FillIn(blocks.mValues);
    joiner.MarkTaken();
    if (keep != Keep::kNothing) {
        trees.mJoinedContent = TreeContent(trees.mJoined.get());
    }
    const bool isEmpty =
        !hasPacket && toolkit::Nodes(trees.mJoined.get(), {}, {}, toolkit::Walk::kJustChildren).empty();
    trees.mStatus = isEmpty ? FileStatus::kFileStatus_NoXMP : FileStatus::kFileStatus_Success;
    return trees;
}

}  // namespace

MediaTrees JoinBlocks(const FileBlocks& blocks, Keep keep) {
    try {
        return Joined(blocks, keep);
    } catch (const XMPError& error) {
        return DamagedTrees(error.what());
    }
}

bool IsIIMChanged(const FileBlocks& blocks) {
    return blocks.mIIM && blocks.mIIMDigest && *blocks.mIIMDigest != IIMDigest(*blocks.mIIM);
}

}  // namespace zephmetadata::media
