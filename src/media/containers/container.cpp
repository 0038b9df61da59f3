#include "media/containers/container.h"

namespace zephmetadata::media {

namespace {

// ISO 16684-1, 7.3.2: the identifier is fixed, and begin holds a byte order mark.
constexpr std::string_view kOpening = "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n";
constexpr std::string_view kClosing = "<?xpacket end=\"w\"?>";

/// White space with a line end every hundred bytes, as packets are padded.
std::string WhiteSpace(std::size_t size) {
    constexpr std::size_t kLine = 100;
    std::string space(size, ' ');
    for (std::size_t at = 0; at < size; at += kLine) {
        space[at] = '\n';
    }
    return space;
}

std::string Wrapped(std::string_view element, std::size_t space) {
    return std::string(kOpening).append(element).append(WhiteSpace(space)).append(kClosing);
}

}  // namespace

PlannedEdit Container::PlanEdit(const std::shared_ptr<const ByteSource>& /*file*/,
                                const BlockChanges& /*changes*/) const {
    return RefusedEdit(FileStatus::kFileStatus_CannotCarryXMP, {});
}

std::vector<Range> Container::References(const ByteSource& /*file*/) const {
    return {};
}

std::string WrappedPacket(std::string_view element, std::size_t wanted) {
    const std::size_t bare = kOpening.size() + element.size() + kClosing.size();
    return Wrapped(element, wanted >= bare ? wanted - bare : kPacketPadding);
}

std::string ShortPacket(std::string_view element) {
    return Wrapped(element, 1);
}

std::optional<std::string> EditedExif(const std::optional<std::string>& block, std::span<const TiffEdit> edits) {
    if (!block) {
        return NewTiff(edits);
    }
    const MemorySource stream(*block);
    const std::optional<Plan> plan = PlanTiffEdits(stream, edits);
    return plan ? Carried(*plan, stream) : std::nullopt;
}

}  // namespace zephmetadata::media
