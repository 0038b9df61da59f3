#include "media/mirroring/joining.h"

#include <algorithm>
#include <set>
#include <utility>

#include "media/mirroring/tree_values.h"
#include "media/native/exif/exif_values.h"
#include "media/native/iim/iim_values.h"
#include "media/native/iim/image_resources.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/tree/xmp_marks.h"

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
    /// Takes values into the packet's own tree. That of a file without a packet is empty: what is there later was taken
    /// from native metadata.
    Joiner(XMPMetaHandle packet, bool hasPacket) : mPacket(packet), mHasPacket(hasPacket) {}
    /// Leaves the tree as it is: what is taken goes into @p joined, which begins with what the packet holds.
    Joiner(XMPMetaHandle packet, bool hasPacket, TreeContent& joined)
        : mPacket(packet), mHasPacket(hasPacket), mJoined(&joined), mBeside(toolkit::NewTree()) {}

    /// Native metadata wins unless the packet says the same, by @p agrees, which may say it in more detail.
    template <typename Agrees>
    void Prefer(const std::vector<NativeValue>& values, const Agrees& agrees) {
        for (const NativeValue& value : values) {
            if (!mTaken.emplace(value.mNamespace, value.mProperty).second) {
                continue;  // an earlier kind says it already
            }
            const Target target(value);
            const auto held =
                MayHold(target) ? ValueIn(Holder(target), target.mSchema, target.mProperty) : std::nullopt;
            if (!held || !agrees(*held)) {
                Take(value, target, held.has_value());
            }
        }
    }

    /// Native metadata fills in what the tree lacks.
    void FillIn(const std::vector<NativeValue>& values) {
        for (const NativeValue& value : values) {
            if (!mTaken.emplace(value.mNamespace, value.mProperty).second) {
                continue;
            }
            const Target target(value);
            if (!MayHold(target) || !toolkit::PropertyExists(Holder(target), target.mSchema, target.mProperty)) {
                Take(value, target, false);
            }
        }
    }

    /// The properties that were taken, to be marked last: a change of a property takes its mark away.
    std::set<toolkit::Place> TakePlaces() { return std::move(mPlaces); }
    /// What the packet held at some of them, where it is the packet's tree that they were put into.
    std::vector<std::shared_ptr<const toolkit::WrittenProperty>> TakeDisplaced() { return std::move(mDisplaced); }

private:
    struct Target {
        explicit Target(const NativeValue& value)
            : mSchema(value.mNamespace),
              mProperty(value.mProperty),
              mPlace(toolkit::TopLevelPlace(mSchema, mProperty)) {}

        UTF8String mSchema;
        UTF8String mProperty;
        const toolkit::Place& mPlace;
    };

    bool MayHold(const Target& target) const {
        return mHasPacket && (mJoined == nullptr || mJoined->Holds(target.mPlace));
    }
    /// The tree that has what is there by now.
    XMPMetaHandle Holder(const Target& target) {
        if (mJoined == nullptr || !mPlaces.contains(target.mPlace)) {
            return mPacket;
        }
        const TreeContent::Property taken = mJoined->At(target.mPlace);
        if (taken && !toolkit::PropertyExists(mBeside.get(), target.mPlace.mSchema, target.mPlace.mPath)) {
            toolkit::AddProperty(mBeside.get(), *taken);
        }
        return mBeside.get();
    }

    void Take(const NativeValue& value, const Target& target, bool isHeld) {
        mJoined == nullptr ? TakeInto(value, target, isHeld) : TakeBeside(value, target, isHeld);
        mPlaces.insert(target.mPlace);
    }

    void TakeInto(const NativeValue& value, const Target& target, bool isHeld) {
        const bool isPackets = isHeld && !mPlaces.contains(target.mPlace);
        if (const auto displaced = isPackets ? PropertyAt(mPacket, target.mPlace) : nullptr) {
            mDisplaced.push_back(displaced);
        }
        isHeld ? PutValue(mPacket, value) : AddValue(mPacket, value);
    }

    void TakeBeside(const NativeValue& value, const Target& target, bool isHeld) {
        std::optional<toolkit::WrittenProperty> plain = PlainProperty(value, target.mPlace);
        if (plain && !mPlaces.contains(target.mPlace)) {
            mJoined->Put(target.mPlace, std::make_shared<const toolkit::WrittenProperty>(*std::move(plain)));
            return;
        }
        if (isHeld && Holder(target) == mPacket && value.mForm == ValueForm::kLangAlt) {
            toolkit::DuplicateSubtree(mPacket, mBeside.get(), target.mSchema, target.mProperty);  // the other languages
        }
        isHeld ? PutValue(mBeside.get(), value) : AddValue(mBeside.get(), value);
        mJoined->Put(target.mPlace, PropertyAt(mBeside.get(), target.mPlace));
    }

    XMPMetaHandle mPacket;
    bool mHasPacket;
    TreeContent* mJoined = nullptr;
    XMPMetaPtr mBeside;  // what was taken, where it does not go into the packet's tree
    std::set<PropertyName> mTaken;
    std::set<toolkit::Place> mPlaces;
    std::vector<TreeContent::Property> mDisplaced;
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

/// Takes all that native metadata says.
void JoinNative(Joiner& joiner, const FileBlocks& blocks) {
    JoinExif(joiner, blocks);
    JoinIIM(joiner, blocks);
    joiner.FillIn(blocks.mValues);
}

bool HasPacket(const FileBlocks& blocks) {
    return blocks.mXMP && !IsBlank(*blocks.mXMP);
}

FileStatus StatusOf(bool isEmpty) {
    return isEmpty ? FileStatus::kFileStatus_NoXMP : FileStatus::kFileStatus_Success;
}

template <typename Media>
Media Damaged(UTF8String detail) {
    Media media;
    media.mStatus = FileStatus::kFileStatus_DamagedXMP;
    media.mDetail = std::move(detail);
    return media;
}

MediaTree Joined(const FileBlocks& blocks) {
    MediaTree media;
    media.mJoined = toolkit::NewTree();
    XMPMetaHandle const tree = media.mJoined.get();
    const bool hasPacket = HasPacket(blocks);
    if (hasPacket && !ParsePackets(tree, blocks)) {
        return Damaged<MediaTree>({});
    }
    Joiner joiner(tree, hasPacket);
    JoinNative(joiner, blocks);
    const std::set<toolkit::Place> places = joiner.TakePlaces();
    toolkit::SetNative(tree, places);
    if (CanKeepState(blocks, tree)) {
        media.mState = std::make_shared<const ReadState>(
            ReadState{toolkit::BeginJournal(tree), DigestOf(blocks), places, joiner.TakeDisplaced()});
    }
    media.mStatus = StatusOf(!hasPacket && toolkit::Nodes(tree, {}, {}, toolkit::Walk::kJustChildren).empty());
    return media;
}

MediaContent Content(const FileBlocks& blocks) {
    MediaContent media;
    media.mPacket = toolkit::NewTree();
    const bool hasPacket = HasPacket(blocks);
    if (hasPacket && !ParsePackets(media.mPacket.get(), blocks)) {
        return Damaged<MediaContent>({});
    }
    media.mPacketContent = TreeContent(media.mPacket.get());
    media.mJoinedContent = media.mPacketContent;
    Joiner joiner(media.mPacket.get(), hasPacket, media.mJoinedContent);
    JoinNative(joiner, blocks);
    media.mNativePlaces = joiner.TakePlaces();
    media.mStatus = StatusOf(!hasPacket && media.mJoinedContent.IsEmpty());
    return media;
}

}  // namespace

MediaTree JoinBlocks(const FileBlocks& blocks) {
    try {
        return Joined(blocks);
    } catch (const XMPError& error) {
        return Damaged<MediaTree>(error.what());
    }
}

MediaContent ContentOf(const FileBlocks& blocks) {
    try {
        return Content(blocks);
    } catch (const XMPError& error) {
        return Damaged<MediaContent>(error.what());
    }
}

std::optional<MediaContent> ContentAsRead(const FileBlocks& blocks, const ReadState* state, XMPMetaHandle tree,
                                          const TreeContent& now) {
    if (state == nullptr || toolkit::JournalOf(tree) != state->mJournal.get() || DigestOf(blocks) != state->mDigest) {
        return std::nullopt;
    }
    MediaContent media;
    media.mNativePlaces = state->mNativePlaces;
    media.mJoinedContent = now;
    for (const auto& [place, before] : state->mJournal->mBefore) {
        media.mJoinedContent.Put(place, before);
    }
    media.mPacketContent = media.mJoinedContent;
    for (const toolkit::Place& place : state->mNativePlaces) {
        media.mPacketContent.Put(place, nullptr);
    }
    for (const auto& displaced : state->mDisplaced) {
        media.mPacketContent.Put(displaced->Place(), displaced);
    }
    media.mStatus = FileStatus::kFileStatus_Success;
    return media;
}

bool IsIIMChanged(const FileBlocks& blocks) {
    return blocks.mIIM && blocks.mIIMDigest && *blocks.mIIMDigest != IIMDigest(*blocks.mIIM);
}

}  // namespace zephmetadata::media
