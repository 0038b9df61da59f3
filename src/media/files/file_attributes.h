#pragma once

namespace zephmetadata::media {

/// Gives the open file @p to what belongs to @p from rather than to its content: owner, mode, extended attributes and
/// the access control lists among them. False where that is not allowed or not possible here.
bool TakeOverAttributes(int from, int to);

}  // namespace zephmetadata::media
