#include "xmp/tree/xmp_marks.h"

#include <algorithm>
#include <iterator>

#include "xmp/core/xmp_paths.h"
#include "xmp/tree/xmp_meta_handle.h"

namespace zephmetadata::toolkit {
namespace {

// The marks at and below @p path; they stand together, but for those of siblings whose names begin with the same text.
void EraseMarks(std::set<Place>& marks, const UTF8String& schema, const UTF8String& path) {
    for (auto mark = marks.lower_bound({schema, path});
         mark != marks.end() && mark->mSchema == schema && mark->mPath.starts_with(path);) {
        mark = IsAtOrBelow(mark->mPath, path) ? marks.erase(mark) : std::next(mark);
    }
}

Place TopLevelOf(Place place) {
    place.mPath.resize(std::min(place.mPath.find_first_of("/["), place.mPath.size()));
    return place;
}

}  // namespace

bool IsTopLevel(std::string_view path) {
    return path.find_first_of("/[") == std::string_view::npos;
}

bool IsNativeProperty(XMPMetaHandle tree, const Node& property) {
    return tree->mNative.contains({property.mSchema, property.mPath});
}

void CopyMarks(XMPMetaHandle source, XMPMetaHandle destination, const UTF8String& schema, const UTF8String& path) {
    const Place place = NormalPlace(source, schema, path);
    if (IsTopLevel(place.mPath) && source->mNative.contains(place)) {
        destination->mNative.insert(place);
    }
    if (IsMixed(source, schema, path)) {
        MarkMixed(destination, schema, path);
    }
    for (auto mark = source->mMixed.lower_bound(place);
         mark != source->mMixed.end() && mark->mSchema == place.mSchema && mark->mPath.starts_with(place.mPath);
         ++mark) {
        if (IsAtOrBelow(mark->mPath, place.mPath)) {
            destination->mMixed.insert(*mark);
        }
    }
}

void MarkMixed(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    tree->mMixed.insert(NormalPlace(tree, schema, path));
}

bool IsMixed(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    if (tree->mMixed.empty() || path.empty() || !PrefixOf(schema)) {
        return false;
    }
    Place place = NormalPlace(tree, schema, path);
    while (!tree->mMixed.contains(place)) {
        const std::size_t step = place.mPath.find_last_of("/[");
        if (step == UTF8String::npos || step == 0) {
            return false;
        }
        place.mPath.resize(step);
    }
    return true;
}

void ClearMixed(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    if (!tree->mMixed.empty() && !path.empty() && PrefixOf(schema)) {
        const Place place = NormalPlace(tree, schema, path);
        EraseMarks(tree->mMixed, place.mSchema, place.mPath);
    }
}

void MarkNative(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    tree->mNative.insert(TopLevelOf(NormalPlace(tree, schema, path)));
}

void SetNative(XMPMetaHandle tree, std::set<Place> places) {
    tree->mNative = std::move(places);
}

bool IsNative(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    return !tree->mNative.empty() && !path.empty() && PrefixOf(schema) &&
           tree->mNative.contains(TopLevelOf(NormalPlace(tree, schema, path)));
}

void ClearNative(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    if (!tree->mNative.empty() && !path.empty() && PrefixOf(schema)) {
        tree->mNative.erase(TopLevelOf(NormalPlace(tree, schema, path)));
    }
}

}  // namespace zephmetadata::toolkit
