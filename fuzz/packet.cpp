// XMP packets: what was read is written so that it reads back the same.
#include "library_session.h"
#include "support.h"
#include "xmp/tree/xmp_tree.h"

namespace toolkit = zephmetadata::toolkit;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::StartLibrary();
    const auto tree = toolkit::NewTree();
    if (!toolkit::ParsePacket(tree.get(), fuzz::Text(data, size))) {
        fuzz::Require(toolkit::Nodes(tree.get(), {}, {}, toolkit::Walk::kSubtree).empty(),
                      "a tree without a packet is empty");
        return 0;
    }
    fuzz::Require(toolkit::TreesEqual(toolkit::CloneTree(tree.get()).get(), tree.get()), "a clone is equal");
    std::string packet;
    try {
        packet = toolkit::SerializePacket(tree.get());
    } catch (const zephmetadata::XMPError&) {
        return 0;  // a namespace URI that no packet can carry: refused as a whole
    }
    const auto again = toolkit::NewTree();
    fuzz::Require(toolkit::ParsePacket(again.get(), packet), "a written packet can be read");
    fuzz::Require(toolkit::TreesEqual(again.get(), tree.get()), "it holds the same nodes");
    return 0;
}
