#include "media/containers/block_compression.h"

#include <brotli/decode.h>
#include <brotli/encode.h>
#include <zlib.h>

#include <algorithm>
#include <limits>
#include <memory>

namespace zephmetadata::media {

namespace {

constexpr std::size_t kPart = std::size_t{64} << 10U;

/// Parameter windowBits of zlib.
int WindowBits(Compression how) {
    constexpr int kGzipToo = 16;
    return how == Compression::kDeflate ? -MAX_WBITS : how == Compression::kGzip ? MAX_WBITS + kGzipToo : MAX_WBITS;
}

Bytef* ZlibInput(std::string_view bytes) {
    // zlib's interface is older than const; it does not write there.
    return const_cast<Bytef*>(reinterpret_cast<const Bytef*>(bytes.data()));
}

/// Runs @p step over parts of output until it ends. True at the end of the stream.
template <typename Step>
bool RunZlib(z_stream& stream, std::string& output, std::size_t most, Step step) {
    int result = Z_OK;
    while (result == Z_OK && output.size() <= most) {
        const std::size_t done = output.size();
        output.resize(done + kPart);
        stream.next_out = reinterpret_cast<Bytef*>(output.data() + done);
        stream.avail_out = static_cast<uInt>(kPart);
        result = step(stream);
        output.resize(output.size() - stream.avail_out);
    }
    return result == Z_STREAM_END && output.size() <= most;
}

std::optional<std::string> Inflated(std::string_view bytes, Compression how, std::size_t most) {
    z_stream stream = {};
    if (bytes.size() > std::numeric_limits<uInt>::max() || inflateInit2(&stream, WindowBits(how)) != Z_OK) {
        return std::nullopt;
    }
    stream.next_in = ZlibInput(bytes);
    stream.avail_in = static_cast<uInt>(bytes.size());
    std::string output;
    const bool isDone = RunZlib(stream, output, most, [](z_stream& at) { return inflate(&at, Z_NO_FLUSH); });
    inflateEnd(&stream);
    return isDone ? std::optional(std::move(output)) : std::nullopt;
}

std::optional<std::string> Deflated(std::string_view bytes, Compression how) {
    constexpr int kMemoryLevel = 8;
    z_stream stream = {};
    if (bytes.size() > std::numeric_limits<uInt>::max() ||
        deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, WindowBits(how), kMemoryLevel, Z_DEFAULT_STRATEGY) !=
            Z_OK) {
        return std::nullopt;
    }
    stream.next_in = ZlibInput(bytes);
    stream.avail_in = static_cast<uInt>(bytes.size());
    std::string output;
    const bool isDone = RunZlib(stream, output, std::numeric_limits<std::size_t>::max(),
                                [](z_stream& at) { return deflate(&at, Z_FINISH); });
    deflateEnd(&stream);
    return isDone ? std::optional(std::move(output)) : std::nullopt;
}

std::optional<std::string> BrotliDecoded(std::string_view bytes, std::size_t most) {
    const std::unique_ptr<BrotliDecoderState, decltype(&BrotliDecoderDestroyInstance)> state(
        BrotliDecoderCreateInstance(nullptr, nullptr, nullptr), &BrotliDecoderDestroyInstance);
    std::size_t left = bytes.size();
    const auto* next = reinterpret_cast<const std::uint8_t*>(bytes.data());
    std::string output;
    BrotliDecoderResult result = BROTLI_DECODER_RESULT_NEEDS_MORE_OUTPUT;
    while (state && result == BROTLI_DECODER_RESULT_NEEDS_MORE_OUTPUT && output.size() <= most) {
        std::size_t room = 0;
        result = BrotliDecoderDecompressStream(state.get(), &left, &next, &room, nullptr, nullptr);
        std::size_t size = 0;  // as much as there is
        const std::uint8_t* const part = BrotliDecoderTakeOutput(state.get(), &size);
        output.append(reinterpret_cast<const char*>(part), size);
    }
    const bool isDone = result == BROTLI_DECODER_RESULT_SUCCESS && output.size() <= most;
    return isDone ? std::optional(std::move(output)) : std::nullopt;
}

std::optional<std::string> BrotliEncoded(std::string_view bytes) {
    std::size_t size = std::max<std::size_t>(BrotliEncoderMaxCompressedSize(bytes.size()), 16);
    std::string output(size, '\0');
    const bool isDone = BrotliEncoderCompress(BROTLI_DEFAULT_QUALITY, BROTLI_DEFAULT_WINDOW, BROTLI_MODE_TEXT,
                                              bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()), &size,
                                              reinterpret_cast<std::uint8_t*>(output.data())) == BROTLI_TRUE;
    output.resize(isDone ? size : 0);
    return isDone ? std::optional(std::move(output)) : std::nullopt;
}

}  // namespace

std::optional<std::string> Decompressed(std::string_view bytes, Compression how, std::size_t most) {
    switch (how) {
        case Compression::kNone:
            return bytes.size() <= most ? std::optional(std::string(bytes)) : std::nullopt;
        case Compression::kBrotli:
            return BrotliDecoded(bytes, most);
        default:
            return Inflated(bytes, how, most);
    }
}

std::optional<std::string> Compressed(std::string_view bytes, Compression how) {
    switch (how) {
        case Compression::kNone:
            return std::string(bytes);
        case Compression::kBrotli:
            return BrotliEncoded(bytes);
        default:
            return Deflated(bytes, how);
    }
}

}  // namespace zephmetadata::media
