#include "media/native/iim/md5.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

#include "media/bytes.h"

namespace zephmetadata::media {

namespace {

constexpr std::size_t kBlockBytes = 64;
constexpr std::size_t kSteps = 64;
using State = std::array<std::uint32_t, 4>;

// RFC 1321, 3.4: the integer part of 2^32 times the sine of each step's number, which doubles give exactly.
const std::array<std::uint32_t, kSteps>& SineTable() {
    static const std::array<std::uint32_t, kSteps> table = [] {
        std::array<std::uint32_t, kSteps> values{};
        for (std::size_t step = 0; step < kSteps; ++step) {
            values[step] =
                static_cast<std::uint32_t>(std::fabs(std::sin(static_cast<double>(step + 1))) * 4294967296.0);
        }
        return values;
    }();
    return table;
}

constexpr std::array<std::array<int, 4>, 4> kRotations = {
    {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};

using Words = std::array<std::uint32_t, 16>;

/// The 16 steps of a round, which mixes three words of the state by @p mix and takes the words of the block in its own
/// order.
template <std::size_t Round, typename Mix>
void AddRound(State& state, const Words& words, std::size_t factor, std::size_t first, const Mix& mix) {
    const std::uint32_t* const sines = SineTable().data() + Round * 16;
    auto [a, b, c, d] = state;
    for (std::size_t step = 0; step < 16; ++step) {
        const std::uint32_t sum = a + mix(b, c, d) + sines[step] + words[(factor * step + first) % 16];
        a = d;
        d = c;
        c = b;
        b += std::rotl(sum, kRotations[Round][step % 4]);
    }
    state = {a, b, c, d};
}

void AddBlock(State& state, std::string_view block) {
    using Word = std::uint32_t;
    Words words{};
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = Get32(block, 4 * i, ByteOrder::kLittle);
    }
    State next = state;
    AddRound<0>(next, words, 1, 0, [](Word x, Word y, Word z) { return (x & y) | (~x & z); });
    AddRound<1>(next, words, 5, 1, [](Word x, Word y, Word z) { return (x & z) | (y & ~z); });
    AddRound<2>(next, words, 3, 5, [](Word x, Word y, Word z) { return x ^ y ^ z; });
    AddRound<3>(next, words, 7, 0, [](Word x, Word y, Word z) { return y ^ (x | ~z); });
    for (std::size_t i = 0; i < state.size(); ++i) {
        state[i] += next[i];
    }
}

}  // namespace

std::string MD5(std::string_view bytes) {
    State state = {0x67452301U, 0xEFCDAB89U, 0x98BADCFEU, 0x10325476U};
    const std::size_t whole = bytes.size() - bytes.size() % kBlockBytes;
    for (std::size_t at = 0; at < whole; at += kBlockBytes) {
        AddBlock(state, bytes.substr(at, kBlockBytes));
    }
    // 3.1 and 3.2: one bit, zeros up to eight bytes before a whole block, then the size in bits.
    std::string last = std::string(bytes.substr(whole)) + '\x80';
    last.resize(last.size() + (2 * kBlockBytes - 8 - last.size()) % kBlockBytes, '\0');
    last += NumberBytes(std::uint64_t{bytes.size()} * 8, 8, ByteOrder::kLittle);
    for (std::size_t at = 0; at < last.size(); at += kBlockBytes) {
        AddBlock(state, std::string_view(last).substr(at, kBlockBytes));
    }
    std::string digest;
    for (const std::uint32_t word : state) {
        digest += NumberBytes(word, 4, ByteOrder::kLittle);
    }
    return digest;
}

}  // namespace zephmetadata::media
