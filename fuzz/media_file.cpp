// Media files of strangers: reading whatever their XMP, and the values in it.
#include <fstream>

#include "support.h"
#include "zephmetadata/zephmetadata.h"

using namespace zephmetadata;

namespace {

void ReadValues(XMPMetaHandle tree) {
    for (const XMPNode& node : XMPNodes(tree)) {
        const Path path = PathForExpression(node.mPath);
        std::string text;
        GetValue(tree, path, text);
        GetRawStringValue(tree, path, text);
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::StartLibrary();
    // No extension: the content alone decides on the format.
    const std::string name = fuzz::Folder() + "/input";
    std::ofstream(name, std::ios::binary) << fuzz::Text(data, size);
    const auto provider = std::make_shared<FileProvider>(zephcore::PathFromNative(name));
    const MetaDataReadAccess access(provider);
    fuzz::Require((*access != nullptr) == (provider->LastRead().mStatus == FileStatus::kFileStatus_Success),
                  "there is a tree exactly when reading succeeded");
    if (*access != nullptr) {
        ReadValues(*access);
    }
    return 0;
}
