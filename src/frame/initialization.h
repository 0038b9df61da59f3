#pragma once

#include <cstdint>

namespace zephmetadata {

/// How many calls of Initialize are not yet undone; the registries are open while it is above zero.
std::uint32_t& InitializationCount();

inline bool IsInitialized() {
    return InitializationCount() > 0;
}

}  // namespace zephmetadata
