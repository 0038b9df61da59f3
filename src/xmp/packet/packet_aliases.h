#pragma once

#include <map>
#include <set>
#include <string_view>

#include "xmp/tree/place.h"
#include "zephmetadata/types.h"

/// Properties that the toolkit takes for others.
///
/// It knows tiff:Software, exif:DateTimeDigitized, pdf:Title and some thirty more as other names of xmp:CreatorTool and
/// the like, moves their values there while it parses, and never writes the names again. Programs look for the names, and
/// where both were there the two may differ: so what a packet has of them is kept beside the tree and written again.
namespace zephmetadata::toolkit {

struct KeptAliases {
    /// What stood at the property that the toolkit takes one for.
    struct Meant {
        UTF8String mContent;
        bool mIsTheSame = false;   ///< as what stands under the other name
        bool mIsInPacket = false;  ///< as a property of its own, not only as what the toolkit makes of this one
    };

    XMPMetaPtr mTree;  ///< the properties by their own names, in namespaces of which the toolkit knows nothing
    std::map<Place, Meant> mMeant;
};

/// What @p packet, which is in UTF-8 and was parsed into @p tree, has of such properties; null for none. Where the toolkit
/// put one into the tree that is an array into an item of another, it is that array afterwards, and a text where Dublin Core
/// has an array is that array.
sp<const KeptAliases> AliasesOf(XMPMetaHandle tree, std::string_view packet);

bool HasAliases(XMPMetaHandle tree);

/// Adds those of @p part, of which @p tree took over the top-level properties @p taken. A name that both have is the tree's.
void MergeAliases(XMPMetaHandle tree, XMPMetaHandle part, const std::set<Place>& taken);

/// Reads a packet that the toolkit cannot or that it reads into an array what is none, since a property has several old
/// names in it: the property's own value or that of the first name counts. False, with anything in the tree, when that is
/// not why.
bool ParseByNames(XMPMetaHandle tree, std::string_view packet);

/// Puts them into a tree that is to be written: as they were; where what they are taken for was changed, those that said
/// the same change with it in their own form; where it was removed they go, since they would stand for it again. What only
/// they said goes out of the tree while it is as it was: the toolkit makes it of them again.
void PutAliases(const KeptAliases& aliases, XMPMetaHandle tree);
/// Gives them their names in the packet that was written of that tree.
void NameAliases(UTF8String& packet);

}  // namespace zephmetadata::toolkit
