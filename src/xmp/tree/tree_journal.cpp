#include "xmp/tree/tree_journal.h"

#include <algorithm>

#include "xmp/core/xmp_paths.h"
#include "xmp/tree/xmp_meta_handle.h"

namespace zephmetadata::toolkit {
namespace {

void NoteBefore(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    const UTF8String property = path.substr(0, path.find_first_of("/["));
    Place place = NormalPlace(tree, schema, property);
    place.mPath.resize(std::min(place.mPath.find_first_of("/["), place.mPath.size()));
    auto& before = tree->mJournal->mBefore;
    if (before.contains(place)) {
        return;
    }
    std::optional<WrittenProperty> held = WrittenPropertyAt(tree, place);
    before.emplace(std::move(place), held ? std::make_shared<const WrittenProperty>(*std::move(held)) : nullptr);
}

}  // namespace

std::shared_ptr<const TreeJournal> BeginJournal(XMPMetaHandle tree) {
    tree->mJournal = std::make_shared<TreeJournal>();
    return tree->mJournal;
}

const TreeJournal* JournalOf(XMPMetaHandle tree) {
    return tree->mJournal.get();
}

void EndJournal(XMPMetaHandle tree) {
    tree->mJournal = nullptr;
}

XmpPtr NativeToChange(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    const XmpPtr native = Native(tree);
    if (tree->mJournal) {
        try {
            NoteBefore(tree, schema, path);
        } catch (const XMPError&) {
            EndJournal(tree);  // rather none than one that does not tell everything
        }
    }
    return native;
}

}  // namespace zephmetadata::toolkit
