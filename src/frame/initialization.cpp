#include "frame/initialization.h"

namespace zephmetadata {

std::uint32_t& InitializationCount() {
    static std::uint32_t count = 0;
    return count;
}

}  // namespace zephmetadata
