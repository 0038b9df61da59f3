#pragma once

#include <cstddef>
#include <functional>

namespace zephmetadata::toolkit {

/// The toolkit reads packets recursively: on the usual stack of 8 MB some 100,000 nested elements end the process. With
/// the stack that StackFor asks for, no file of up to kCoveredFileBytes can do that, whatever it holds: a level takes up
/// to 97 bytes of the stack (measured with 2.6.3) and at least 3 bytes of the file.
inline constexpr std::size_t kCoveredFileBytes = std::size_t{16} << 20U;

/// A file of this size takes up to 2 MB of the stack, which is there.
inline constexpr std::size_t kHarmlessFileBytes = std::size_t{64} << 10U;

constexpr std::size_t StackFor(std::size_t fileBytes) {
    constexpr std::size_t kUsual = std::size_t{8} << 20U;
    return kUsual + 64 * (fileBytes < kCoveredFileBytes ? fileBytes : kCoveredFileBytes);
}

/// Runs @p work on a thread of its own with a stack of @p stackBytes and waits for it; what it throws is thrown here.
/// Memory is only used as deep as the stack gets. False, with the work not done, when there is no room for it.
bool RunWithStack(std::size_t stackBytes, const std::function<void()>& work);

}  // namespace zephmetadata::toolkit
