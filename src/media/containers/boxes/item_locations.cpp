#include <algorithm>
#include <limits>

#include "media/bytes.h"
#include "media/containers/boxes/heif_items.h"

namespace zephmetadata::media {

namespace {

/// A file with more pieces is none: the count of an item alone would allow billions in few bytes.
constexpr std::size_t kMaxExtents = std::size_t{1} << 20U;

/// Numbers one after the other; reading beyond the end gives zeros and shows in IsWhole.
class NumberReader {
public:
    explicit NumberReader(std::string_view bytes) : mBytes(bytes) {}

    std::uint64_t Next(std::size_t size) {
        if (size > mBytes.size() - mAt) {
            mIsWhole = false;
            mAt = mBytes.size();
            return 0;
        }
        const std::uint64_t value = GetNumber(mBytes, mAt, size, ByteOrder::kBig);
        mAt += size;
        return value;
    }
    bool IsWhole() const { return mIsWhole; }
    std::string_view Rest() const { return mBytes.substr(mAt); }

private:
    std::string_view mBytes;
    std::size_t mAt = 0;
    bool mIsWhole = true;
};

/// Bytes of an item's number and of the count of items.
std::size_t NumberBytesOf(std::uint8_t version) {
    return version < 2 ? 2 : 4;
}

std::optional<ItemLocation> ReadItemLocation(NumberReader& reader, const ItemLocations& box, std::size_t& extentsLeft) {
    ItemLocation location;
    location.mItem = static_cast<std::uint32_t>(reader.Next(NumberBytesOf(box.mVersion)));
    location.mMethod = box.mVersion > 0 ? static_cast<std::uint16_t>(reader.Next(2)) : std::uint16_t{0};
    location.mDataReference = static_cast<std::uint16_t>(reader.Next(2));
    location.mBase = reader.Next(box.mBaseBytes);
    const auto count = static_cast<std::size_t>(reader.Next(2));
    if (count > extentsLeft) {
        return std::nullopt;
    }
    extentsLeft -= count;
    for (std::size_t i = 0; i < count && reader.IsWhole(); ++i) {
        ItemExtent extent;
        extent.mIndex = box.mVersion > 0 ? reader.Next(box.mIndexBytes) : 0;
        extent.mOffset = reader.Next(box.mOffsetBytes);
        extent.mLength = reader.Next(box.mLengthBytes);
        location.mExtents.push_back(extent);
    }
    return reader.IsWhole() ? std::optional(std::move(location)) : std::nullopt;
}

}  // namespace

const ItemLocation* ItemLocations::Find(std::uint32_t item) const {
    const auto found = std::find_if(mItems.begin(), mItems.end(),
                                    [item](const ItemLocation& location) { return location.mItem == item; });
    return found == mItems.end() ? nullptr : &*found;
}

std::optional<ItemLocations> ReadItemLocations(std::string_view contents) {
    NumberReader reader(contents);
    ItemLocations box;
    box.mVersion = static_cast<std::uint8_t>(reader.Next(1));
    box.mFlags = static_cast<std::uint32_t>(reader.Next(3));
    const std::uint64_t sizes = reader.Next(2);
    box.mOffsetBytes = static_cast<std::uint8_t>(sizes >> 12U);
    box.mLengthBytes = static_cast<std::uint8_t>(sizes >> 8U & 0xFU);
    box.mBaseBytes = static_cast<std::uint8_t>(sizes >> 4U & 0xFU);
    box.mIndexBytes = static_cast<std::uint8_t>(sizes & 0xFU);
    const std::uint8_t widest = std::max({box.mOffsetBytes, box.mLengthBytes, box.mBaseBytes, box.mIndexBytes});
    const std::uint64_t count = reader.Next(NumberBytesOf(box.mVersion));
    if (!reader.IsWhole() || box.mVersion > 2 || widest > 8) {
        return std::nullopt;
    }
    std::size_t extentsLeft = kMaxExtents;
    for (std::uint64_t i = 0; i < count; ++i) {
        std::optional<ItemLocation> location = ReadItemLocation(reader, box, extentsLeft);
        if (!location) {
            return std::nullopt;
        }
        box.mItems.push_back(*std::move(location));
    }
    box.mRest = reader.Rest();
    return box;
}

std::string ItemLocationsBox(const ItemLocations& box) {
    std::string bytes;
    const auto add = [&bytes](std::uint64_t value, std::size_t size) { bytes += NumberBytes(value, size); };
    add(std::uint64_t{box.mOffsetBytes} << 4U | box.mLengthBytes, 1);
    add(std::uint64_t{box.mBaseBytes} << 4U | box.mIndexBytes, 1);
    add(box.mItems.size(), NumberBytesOf(box.mVersion));
    for (const ItemLocation& location : box.mItems) {
        add(location.mItem, NumberBytesOf(box.mVersion));
        add(location.mMethod, box.mVersion > 0 ? 2 : 0);
        add(location.mDataReference, 2);
        add(location.mBase, box.mBaseBytes);
        add(location.mExtents.size(), 2);
        for (const ItemExtent& extent : location.mExtents) {
            add(extent.mIndex, box.mVersion > 0 ? box.mIndexBytes : 0);
            add(extent.mOffset, box.mOffsetBytes);
            add(extent.mLength, box.mLengthBytes);
        }
    }
    return FullBoxBytes("iloc", {box.mVersion, box.mFlags}, bytes + box.mRest);
}

std::optional<Range> ExtentRange(const ItemLocation& location, const ItemExtent& extent) {
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    if (extent.mOffset > most - location.mBase || extent.mLength > most - location.mBase - extent.mOffset) {
        return std::nullopt;
    }
    return Range{location.mBase + extent.mOffset, extent.mLength};
}

}  // namespace zephmetadata::media
