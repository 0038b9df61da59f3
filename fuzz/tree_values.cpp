// Packets with a host above them: every value is read, shown, judged and set anew, and the tree stays one that makes a
// packet.
#include <algorithm>

#include "library_session.h"
#include "support.h"
#include "zephmetadata/zephmetadata.h"

using namespace zephmetadata;

namespace {

/// Of one packet: setting costs a walk each, and more nodes of one kind show nothing new.
constexpr std::size_t kMaxNodes = 60;

void ReadAll(XMPMetaHandle tree, const Path& path) {
    UTF8String text;
    Date date;
    double number = 0;
    bool flag = false;
    GetValue(tree, path, text);
    GetConstructedValue(tree, path, text);
    GetValue(tree, path, date);
    GetValue(tree, path, number);
    GetValue(tree, path, flag);
    GetItems(tree, path);
    GetLanguages(tree, path);
    OriginOf(tree, path);
}

void RequireWritable(XMPMetaHandle tree, const char* what) {
    fuzz::Require(ParseXMPMeta(SerializeXMPMeta(tree)) != nullptr, what);
}

void SetAnew(XMPMetaHandle tree, const XMPNode& node, const Path& path) {
    UTF8String before;
    const bool isText = node.mKind == NodeKind::kNodeKind_Simple && GetRawStringValue(tree, path, before);
    if (!isText || !SetValue(tree, path, before)) {
        return;
    }
    UTF8String after;
    GetRawStringValue(tree, path, after);
    // The empty text deletes.
    fuzz::Require(after == before || before.empty(), "a value that is set to itself stays what it is: " + node.mPath);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::StartLibrary();
    const XMPMetaPtr tree = ParseXMPMeta(UTF8String(fuzz::Text(data, size)));
    if (!tree || SerializeXMPMeta(tree.get()).empty()) {
        return 0;
    }
    ValidateXMP(tree.get());
    std::vector<XMPNode> nodes = XMPNodes(tree.get());
    nodes.resize(std::min(nodes.size(), kMaxNodes));
    for (const XMPNode& node : nodes) {
        const Path path = PathForExpression(node.mPath);
        ReadAll(tree.get(), path);
        SetAnew(tree.get(), node, path);
    }
    RequireWritable(tree.get(), "values that were set to themselves can be written");
    for (const XMPNode& node : nodes) {
        const Path path = PathForExpression(node.mPath);
        SetValue(tree.get(), path, "2; \"a\"");
        AddArrayItem(tree.get(), path, 1);
        DeleteValue(tree.get(), path);
    }
    RequireWritable(tree.get(), "changed values can be written");
    return 0;
}
