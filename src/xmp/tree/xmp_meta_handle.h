#pragma once

#include <atomic>
#include <set>
#include <utility>

#include "xmp/core/exempi_handles.h"
#include "xmp/packet/packet_aliases.h"
#include "xmp/tree/place.h"
#include "zephmetadata/types.h"

namespace zephmetadata {

namespace toolkit {
struct TreeJournal;
}

struct XMPMeta {
    explicit XMPMeta(toolkit::TreeHandle tree) noexcept : mTree(std::move(tree)) {}

    // A host may hold trees beyond the toolkit's end. The toolkit (2.6.3) can release them then, and they are whole
    // again after its next start, but it crashes on any other use, hence the test in toolkit::Native.
    toolkit::TreeHandle mTree;
    sp<const toolkit::KeptAliases> mAliases;  ///< of the packet; null for none
    UTF8String mAbout;                        ///< rdf:about of the packet; the toolkit's own tree has none
    std::set<toolkit::Place> mMixed;
    std::set<toolkit::Place> mNative;   ///< top-level properties
    sp<toolkit::TreeJournal> mJournal;  ///< null for none
    std::atomic<long> mReferences{0};
};

namespace toolkit {

/// The tree for the toolkit's functions; throws XMPError when the toolkit is not running.
XmpPtr Native(XMPMetaHandle tree);
/// The same to call a function that changes what is at or below @p path: nothing may change a tree through the other one,
/// but for what makes or replaces it as a whole.
XmpPtr NativeToChange(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);

}  // namespace toolkit
}  // namespace zephmetadata
