#include "xmp/tree/xmp_meta_handle.h"

#include <array>
#include <memory>

#include "xmp/core/toolkit.h"

namespace zephmetadata {

void intrusive_ptr_add_ref(XMPMetaHandle tree) noexcept {
    if (tree != nullptr) {
        tree->mReferences.fetch_add(1, std::memory_order_relaxed);
    }
}

void intrusive_ptr_release(XMPMetaHandle tree) noexcept {
    if (tree != nullptr && tree->mReferences.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        const std::unique_ptr<XMPMeta> last(tree);
    }
}

XMPError::XMPError(int id, const UTF8String& message) : std::runtime_error(message), mId(id) {}
XMPError::~XMPError() = default;

namespace toolkit {
namespace {

struct ErrorRow {
    int mId;
    std::string_view mText;
};

constexpr auto kErrors = std::to_array<ErrorRow>({
    {XMPErr_BadObject, "the toolkit is not running"},
    {XMPErr_BadParam, "an argument is not valid"},
    {XMPErr_BadValue, "the value is not valid"},
    {XMPErr_NoMemory, "out of memory"},
    {XMPErr_BadSchema, "the namespace is not registered or does not fit the prefix"},
    {XMPErr_BadXPath, "the path is ill-formed or does not fit the tree"},
    {XMPErr_BadOptions, "the options do not fit each other or the property"},
    {XMPErr_BadIndex, "there is no such item"},
    {XMPErr_BadParse, "the packet cannot be parsed"},
    {XMPErr_BadSerialize, "the tree cannot be written as a packet"},
    {XMPErr_BadXML, "the packet is not well-formed XML"},
    {XMPErr_BadRDF, "the packet is not valid RDF"},
    {XMPErr_BadXMP, "the packet is not valid XMP"},
    {XMPErr_BadUnicode, "the text holds what XML cannot carry"},
});

std::string_view ErrorText(int id) {
    for (const ErrorRow& row : kErrors) {
        if (row.mId == id) {
            return row.mText;
        }
    }
    return "the XMP toolkit failed";
}

}  // namespace

void ThrowError(int id, std::string_view what) {
    throw XMPError(id, UTF8String(what).append(": ").append(ErrorText(id)));
}

void ThrowToolkitError(std::string_view what) {
    const int id = xmp_get_error();
    ThrowError(id < 0 ? id : XMPErr_InternalFailure, what);
}

XmpPtr Native(XMPMetaHandle tree) {
    if (tree == nullptr) {
        ThrowError(XMPErr_BadParam, "no tree");
    }
    if (!IsRunning()) {
        ThrowError(XMPErr_BadObject, "use of a tree");
    }
    return tree->mTree.get();
}

}  // namespace toolkit
}  // namespace zephmetadata
