#include "xmp/tree/node_copy.h"

#include "xmp/core/xmp_paths.h"
#include "xmp/tree/xmp_meta_handle.h"

namespace zephmetadata::toolkit {

void CopyNode(XMPMetaHandle destination, const Node& node, const UTF8String& path) {
    const XmpPtr native = NativeToChange(destination, node.mSchema, path);
    const std::uint32_t options = node.mOptions & (kPropCompositeMask | XMP_PROP_VALUE_IS_URI);
    const char* const schema = node.mSchema.c_str();
    const QuietToolkit quiet;
    bool done = false;
    if (path.ends_with(']')) {
        const UTF8String array = path.substr(0, path.rfind('['));
        const bool composite = (options & kPropCompositeMask) != 0;
        const char* const value = composite ? nullptr : node.mValue.c_str();
        done = xmp_append_array_item(native, schema, array.c_str(), 0, value, options);
    } else {
        done = xmp_set_property(native, schema, path.c_str(), node.mValue.c_str(), options);
    }
    if (!done) {
        ThrowToolkitError("\"" + path + "\"");
    }
}

}  // namespace zephmetadata::toolkit
