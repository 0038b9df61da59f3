#include "media/mirroring/changes.h"

#include <algorithm>
#include <span>

#include "media/mirroring/tree_values.h"
#include "media/native/exif/exif_values.h"
#include "media/native/iim/iim_edit.h"
#include "media/native/iim/iim_values.h"
#include "media/native/namespaces.h"
#include "xmp/core/xmp_paths.h"

namespace zephmetadata::media {

namespace {

using toolkit::Place;

UTF8String LocalName(const Place& place) {
    return place.mPath.substr(place.mPath.find(':') + 1);
}

/// The changed properties as native metadata sees them; the names live as long as the object.
class Mirrored {
public:
    Mirrored(const std::vector<Place>& properties, XMPMetaHandle wanted) {
        mNames.reserve(properties.size());
        for (const Place& place : properties) {
            const UTF8String& name = mNames.emplace_back(LocalName(place));
            mChanges.push_back({place.mSchema, name, ValueIn(wanted, place.mSchema, name)});
        }
    }

    template <typename Wanted>
    std::vector<MirrorChange> Those(const Wanted& wanted) const {
        std::vector<MirrorChange> those;
        std::copy_if(mChanges.begin(), mChanges.end(), std::back_inserter(those), wanted);
        return those;
    }

private:
    std::vector<UTF8String> mNames;
    std::vector<MirrorChange> mChanges;
};

bool MakesExif(const MirrorChange& change) {
    return change.mValue && MakesNewExif(change.mNamespace, change.mProperty);
}

UTF8String Expression(const RefusedProperty& refused) {
    const auto prefix = toolkit::PrefixOf(UTF8String(refused.mNamespace));
    return prefix.value_or(UTF8String()).append(":").append(refused.mProperty);
}

TiffFields WithEdits(TiffFields fields, std::span<const TiffEdit> edits) {
    for (const TiffEdit& edit : edits) {
        std::erase_if(fields.mFields, [&](const TiffField& field) {
            return field.mDirectory == edit.mDirectory && field.mTag == edit.mTag;
        });
        if (!edit.mBytes.empty()) {
            const std::uint64_t count = edit.mBytes.size() / TiffTypeBytes(edit.mType);
            fields.mFields.push_back({edit.mDirectory, edit.mTag, edit.mType, count, edit.mBytes, {}});
        }
    }
    return fields;
}

/// Properties of the packet that say the same as a changed field under another name say it afterwards, too: who reads
/// the packet alone is not to find the old value there.
void UpdateTwins(const TiffFields& fields, MediaChanges& changes) {
    const std::vector<NativeValue> before = ExifValues(fields);
    for (const NativeValue& value : ExifValues(WithEdits(fields, changes.mExif))) {
        const UTF8String schema(value.mNamespace);
        const UTF8String property(value.mProperty);
        const bool isChanged = std::find(before.begin(), before.end(), value) == before.end();
        const bool isAsked =
            std::any_of(changes.mProperties.begin(), changes.mProperties.end(),
                        [&](const Place& place) { return place.mSchema == schema && LocalName(place) == property; });
        if (isChanged && !isAsked && toolkit::PropertyExists(changes.mPacket.get(), schema, property)) {
            PutValue(changes.mPacket.get(), value);
            const Place& place = toolkit::TopLevelPlace(schema, property);
            changes.mPacketContent.Put(place, PropertyAt(changes.mPacket.get(), place));
        }
    }
}

void MirrorInExif(const FileBlocks& blocks, const Mirrored& mirrored, MediaChanges& changes) {
    const bool hasExif = !blocks.mExif.empty();
    const std::vector<MirrorChange> those = mirrored.Those([&](const MirrorChange& change) {
        return MirrorsExif(change.mNamespace, change.mProperty) && (hasExif || MakesExif(change));
    });
    if (those.empty()) {
        return;
    }
    TiffFields fields;
    if (hasExif) {
        fields = ReadTiff(PagedSource(*blocks.mExif.front().mSource), blocks.mExif.front().mFirst);
    }
    std::vector<RefusedProperty> refused;
    changes.mExif = ExifEdits(fields, those, &refused);
    UpdateTwins(fields, changes);
    if (!refused.empty()) {
        changes.mRefused = Expression(refused.front());
    }
}

void MirrorInIIM(const FileBlocks& blocks, const Mirrored& mirrored, MediaChanges& changes) {
    const std::vector<MirrorChange> those =
        mirrored.Those([](const MirrorChange& change) { return MirrorsIIM(change.mNamespace, change.mProperty); });
    if (!those.empty()) {
        std::optional<std::string> edited = EditedIIM(*blocks.mIIM, those);
        if (!edited) {
            changes.mRefused = Expression({those.front().mNamespace, those.front().mProperty});
        } else if (*edited != *blocks.mIIM) {
            changes.mIIM = std::move(edited);
        }
    }
}

/// Why a property that was to change reads otherwise.
UTF8String WhyNotRead(const Place& property, const MediaContent& after, XMPMetaHandle wanted) {
    if (!toolkit::PropertyExists(wanted, property.mSchema, property.mPath)) {
        return "stands in fields of the file that are not written";
    }
    if (!after.IsNative(property)) {
        return "does not read back as it was written";
    }
    return IsStructural(property.mSchema, LocalName(property))
               ? "describes the stored picture and follows it alone"
               : "cannot be stored in the file's native metadata like this";
}

bool IsAmong(const std::vector<Place>& places, const Place& place) {
    return std::any_of(places.begin(), places.end(), [&](const Place& candidate) {
        return candidate.mPath == place.mPath && candidate.mSchema == place.mSchema;
    });
}

/// Makes a property what the file now says, or takes it away.
void PutProperty(XMPMetaHandle tree, const Place& place, const toolkit::WrittenProperty* now, bool isNative) {
    toolkit::DeleteProperty(tree, place.mSchema, place.mPath);
    toolkit::ClearMixed(tree, place.mSchema, place.mPath);
    if (now != nullptr) {
        toolkit::AddProperty(tree, *now);
    }
    if (now != nullptr && isNative) {
        toolkit::MarkNative(tree, place.mSchema, place.mPath);
    }
}

}  // namespace

MediaChanges ChangesFor(const FileBlocks& blocks, MediaContent& before, XMPMetaHandle wanted, TreeContent wantedContent,
                        const WritableBlocks& writable) {
    MediaChanges changes;
    changes.mProperties = ChangedProperties(before.mJoinedContent, wantedContent);
    changes.mWanted = std::move(wantedContent);
    changes.mPacketContent = before.mPacketContent.With(changes.mWanted, changes.mProperties);
    changes.mPacket = std::move(before.mPacket);
    if (changes.mPacket) {
        for (const Place& property : changes.mProperties) {
            CopyProperty(wanted, changes.mPacket.get(), property);
        }
    } else {
        changes.mPacket = changes.mPacketContent.Tree();
        toolkit::CopyAbout(wanted, changes.mPacket.get());
    }
    const Mirrored mirrored(changes.mProperties, wanted);
    if (writable.mExif) {
        MirrorInExif(blocks, mirrored, changes);
    }
    if (writable.mIIM && blocks.mIIM) {
        MirrorInIIM(blocks, mirrored, changes);
    }
    return changes;
}

UTF8String WhyNotAsWanted(const MediaChanges& changes, const MediaContent& before, const MediaContent& after,
                          XMPMetaHandle wanted) {
    const std::vector<Place> inPacket = ChangedProperties(changes.mPacketContent, after.mPacketContent);
    if (!inPacket.empty()) {
        return inPacket.front().mPath + " would not stay as it is";
    }
    for (const Place& property : ChangedProperties(after.mJoinedContent, changes.mWanted)) {
        if (IsAmong(changes.mProperties, property)) {
            return property.mPath + " " + WhyNotRead(property, after, wanted);
        }
    }
    // The technical names of a field stand for it: with them it goes under all its names.
    const bool isOfField = std::any_of(changes.mProperties.begin(), changes.mProperties.end(), [](const Place& place) {
        return place.mSchema == kEXIF || place.mSchema == kEXIFEX || place.mSchema == kTIFF || place.mSchema == kAUX;
    });
    for (const Place& property : ChangedProperties(before.mJoinedContent, after.mJoinedContent)) {
        const bool isLost = !IsAmong(changes.mProperties, property) && !after.mJoinedContent.Holds(property);
        if (isLost && !(isOfField && before.IsNative(property))) {
            return property.mPath + " stands in the same native field and would be lost";
        }
    }
    return {};
}

void FollowChanges(const MediaChanges& changes, const MediaContent& after, XMPMetaHandle tree) {
    for (const Place& property : ChangedProperties(after.mJoinedContent, changes.mWanted)) {
        PutProperty(tree, property, after.mJoinedContent.At(property).get(), after.IsNative(property));
    }
}

}  // namespace zephmetadata::media
