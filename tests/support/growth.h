#pragma once

#include <ctime>

namespace support {

/// How many times as long @p work(4 * size) takes as @p work(size), in processor time: about 4 where the work is linear in
/// what it handles, and 16 where it is quadratic. Under a sanitizer and on a busy machine as well.
template <typename Work>
double GrowthByFour(int size, const Work& work) {
    const auto time = [&](int many) {
        const std::clock_t begin = std::clock();
        work(many);
        return static_cast<double>(std::clock() - begin);
    };
    const double few = time(size);
    return time(4 * size) / few;
}

inline constexpr double kLinearGrowth = 9;

}  // namespace support
