#pragma once

namespace zephmetadata {

/// The list of those who want to hear of the XMP-writing switch exists between these two.
void CreateXMPWritingCallbacks();
void DestroyXMPWritingCallbacks();
/// Drops the callbacks whose function object is empty.
void PruneXMPWritingCallbacks();

}  // namespace zephmetadata
