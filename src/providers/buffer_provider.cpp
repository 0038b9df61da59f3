#include <limits>

#include "frame/errors.h"
#include "providers/tree_supply.h"
#include "xmp/tree/xmp_tree.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

namespace {

XMPMetaPtr TreeOf(const unsigned char* data, std::size_t size) {
    // The toolkit counts packets in 32 bits.
    if (data == nullptr || size == 0 || size > std::numeric_limits<std::uint32_t>::max()) {
        return nullptr;
    }
    if (!CanHaveTrees()) {
        return nullptr;
    }
    XMPMetaPtr tree = toolkit::NewTree();
    const std::string_view packet(reinterpret_cast<const char*>(data), size);
    return toolkit::ParsePacket(tree.get(), packet) ? tree : nullptr;
}

}  // namespace

BufferProviderImpl::BufferProviderImpl(const unsigned char* data, std::size_t size) : TypicalProviderImpl(nullptr) {
    ResetBuffer(data, size);
}

void BufferProviderImpl::ResetBuffer(const unsigned char* data, std::size_t size) {
    ResetMetaData(TreeOf(data, size).get(), true);
}

void BufferProviderImpl::WriteChanges(const std::vector<Path>& changes) {
    const XMPMetaPtr tree = MetaDataAccess();
    if (!tree) {
        return;
    }
    UTF8String packet;
    try {
        packet = toolkit::SerializePacket(tree.get());
    } catch (const XMPError& error) {
        constexpr std::u16string_view kNotWritable =
            u"$$$/zephmetadata/ErrorInXMPData/NotWritable=the metadata cannot be stored (@0).";
        SendError(ErrorKind::ErrorWritingXMP, zephcore::ZString(kNotWritable, {zephcore::UTF8to16(error.what())}), {});
        ReportWriting({}, {FileStatus::kFileStatus_NotWritten, error.what()});
        return;
    }
    WriteBuffer(changes, packet.data(), packet.size());
}

}  // namespace zephmetadata
