#pragma once

#include <ostream>

#include "zephmetadata/paths.h"

namespace zephmetadata {

inline void PrintTo(const Path& path, std::ostream* out) {
    *out << '{' << (path.mInternal ? "internal " : "") << path.mNamespace << " | " << path.mPathDescription << " | "
         << path.mEntryName << " | " << path.mParentId << '}';
}

/// Equality of paths looks at two members; tests look at all five.
inline bool SamePath(const Path& left, const Path& right) {
    return left == right && left.mInternal == right.mInternal && left.mEntryName == right.mEntryName &&
           left.mParentId == right.mParentId;
}

}  // namespace zephmetadata
