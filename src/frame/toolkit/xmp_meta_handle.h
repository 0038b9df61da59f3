#pragma once

#include <atomic>
#include <compare>
#include <set>
#include <tuple>
#include <utility>

#include "frame/toolkit/exempi_handles.h"
#include "zephmetadata/types.h"

namespace zephmetadata {

/// One mixed path; the path is in the toolkit's normal form, as in "dc:title[1]".
struct MixedMark {
    UTF8String mSchema;
    UTF8String mPath;

    friend bool operator<(const MixedMark& left, const MixedMark& right) {
        return std::tie(left.mSchema, left.mPath) < std::tie(right.mSchema, right.mPath);
    }
};

struct XMPMeta {
    explicit XMPMeta(toolkit::TreeHandle tree) noexcept : mTree(std::move(tree)) {}

    // A host may hold trees beyond the toolkit's end. The toolkit (2.6.3) can release them then, and they are whole
    // again after its next start, but it crashes on any other use, hence the test in toolkit::Native.
    toolkit::TreeHandle mTree;
    std::set<MixedMark> mMixed;
    std::atomic<long> mReferences{0};
};

namespace toolkit {

/// The tree for the toolkit's functions; throws XMPError when the toolkit is not running.
XmpPtr Native(XMPMetaHandle tree);

}  // namespace toolkit
}  // namespace zephmetadata
