#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "media/containers/boxes/heif_items.h"

namespace zephmetadata::media {

/// An item that is to be listed.
struct NewItem {
    std::uint32_t mItem = 0;
    bool mIsXMP = false;  ///< otherwise Exif
};

/// What is to change in a meta box.
struct ItemTableEdit {
    ItemLocations mLocations;  ///< of all items, as they are to be
    std::vector<NewItem> mAdded;
    std::vector<std::uint32_t> mRemoved;
};

/// Adds the changes to the plan and returns the new size of the meta box; absent when something does not fit. The size of
/// a meta box that goes on to the end of the file is left to the caller.
std::optional<std::uint64_t> PlanItemTable(const ByteSource& file, const ItemTable& table, const ItemTableEdit& edit,
                                           Plan& plan);

/// A number that nothing in the table has and that fits every version of the boxes; absent when all are taken.
std::optional<std::uint32_t> UnusedItemNumber(const ItemTable& table, const std::vector<std::uint32_t>& alsoUsed);

/// Gives all locations but those of which @p isLeft says otherwise the places that they have after the plan, in which
/// all sizes have to be final. False when something is torn apart or does not fit its fields.
bool FollowPlan(const ByteSource& file, const ItemTable& table, const Plan& plan, ItemLocations& locations,
                const std::function<bool(std::uint32_t)>& isLeft);
/// Where a byte, or what a replacement that begins there puts there, lies after the plan; absent within what is replaced.
std::optional<std::uint64_t> PlaceOf(const Plan& plan, std::uint64_t offset);

/// Moves a location that lies in the file to new places of its extents. False when they do not fit their fields.
bool MoveLocation(const ItemLocations& fields, const std::vector<std::uint64_t>& places, ItemLocation& location);
/// Makes a location one piece of the file, in fields that are wide enough or made so. False when they cannot be.
bool SetLocation(std::uint32_t item, const Range& place, ItemLocations& locations);

}  // namespace zephmetadata::media
