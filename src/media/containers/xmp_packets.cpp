#include "media/containers/xmp_packets.h"

#include "media/containers/container.h"

namespace zephmetadata::media {

std::string FittingPacket(std::string_view element, std::uint64_t room, bool canShrink) {
    constexpr std::uint64_t kMostRoom = 2 * kPacketPadding;
    if (canShrink && room > ShortPacket(element).size() + kMostRoom) {
        return WrappedPacket(element);
    }
    return WrappedPacket(element, static_cast<std::size_t>(room));
}

void PlanPacketBox(Plan& plan, const Box& box, std::string_view element, bool isLast) {
    constexpr std::uint64_t kMostFree = 0xFFFFFFFFU;
    if (element.empty()) {
        const bool canStay = !isLast && box.mWhole.mSize <= kMostFree;
        plan.Replace(box.mWhole, canStay ? FreeBox(box.mWhole.mSize) : "", canStay ? Touch::kSpace : Touch::kBlock);
        return;
    }
    const Range room = box.Contents();
    const std::string packet = FittingPacket(element, room.mSize, isLast);
    // One that goes on to the end of the file gets its size when it is written.
    if (packet.size() == room.mSize && box.mSize != BoxSize::kToEnd) {
        plan.Replace(room, packet, Touch::kBlock);
        return;
    }
    plan.Replace(box.mWhole, UuidBoxBytes(kXMPUuid, packet), Touch::kBlock);
}

}  // namespace zephmetadata::media
