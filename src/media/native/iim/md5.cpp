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

/// What a round mixes of three words, and which word of the block its step takes.
struct Mixed {
    std::uint32_t mBits;
    std::size_t mWord;
};
Mixed Mix(std::size_t step, std::uint32_t x, std::uint32_t y, std::uint32_t z) {
    switch (step / 16) {
        case 0:
            return {(x & y) | (~x & z), step};
        case 1:
            return {(x & z) | (y & ~z), (5 * step + 1) % 16};
        case 2:
            return {x ^ y ^ z, (3 * step + 5) % 16};
        default:
            return {y ^ (x | ~z), 7 * step % 16};
    }
}

void AddBlock(State& state, std::string_view block) {
    const std::array<std::uint32_t, kSteps>& sines = SineTable();
    auto [a, b, c, d] = state;
    for (std::size_t step = 0; step < kSteps; ++step) {
        const Mixed mixed = Mix(step, b, c, d);
        const std::uint32_t sum = a + mixed.mBits + sines[step] + Get32(block, 4 * mixed.mWord, ByteOrder::kLittle);
        a = d;
        d = c;
        c = b;
        b += std::rotl(sum, kRotations[step / 16][step % 4]);
    }
    state = {state[0] + a, state[1] + b, state[2] + c, state[3] + d};
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
