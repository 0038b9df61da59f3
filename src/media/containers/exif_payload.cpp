#include "media/containers/exif_payload.h"

#include <algorithm>

#include "media/bytes.h"

namespace zephmetadata::media {

namespace {

constexpr std::size_t kSearchedBytes = 64;

bool IsTiffHead(std::string_view bytes) {
    using namespace std::string_view_literals;
    const std::string_view head = bytes.substr(0, 4);
    return head == "II*\0"sv || head == "MM\0*"sv;
}

}  // namespace

std::optional<std::size_t> TiffStart(std::string_view head) {
    if (head.size() >= 4) {
        const std::uint64_t told = std::uint64_t{4} + Get32(head, 0);
        if (told < head.size() && IsTiffHead(head.substr(static_cast<std::size_t>(told)))) {
            return static_cast<std::size_t>(told);
        }
    }
    for (std::size_t at = 0; at + 4 <= head.size() && at < kSearchedBytes; ++at) {
        if (IsTiffHead(head.substr(at))) {
            return at;
        }
    }
    return std::nullopt;
}

std::optional<ExifStream> ExifInPayload(const std::shared_ptr<const ByteSource>& block) {
    const std::optional<std::size_t> start = TiffStart(ReadUpTo(*block, 0, kSearchedBytes));
    if (!start) {
        return std::nullopt;
    }
    return ExifStream{std::make_shared<WindowSource>(block, Range{*start, block->Size() - *start})};
}

std::optional<std::string> EditedExifPayload(const std::string& block, std::span<const TiffEdit> edits,
                                             std::string_view newPrefix) {
    if (block.empty()) {
        const std::optional<std::string> stream = EditedExif(std::nullopt, edits);
        return stream ? std::optional(std::string(newPrefix) + *stream) : std::nullopt;
    }
    const std::optional<std::size_t> start = TiffStart(std::string_view(block).substr(0, kSearchedBytes));
    const std::optional<std::string> stream = start ? EditedExif(block.substr(*start), edits) : std::nullopt;
    return stream ? std::optional(block.substr(0, *start) + *stream) : std::nullopt;
}

bool OnlyRemove(std::span<const TiffEdit> edits) {
    return std::all_of(edits.begin(), edits.end(), [](const TiffEdit& edit) { return edit.mBytes.empty(); });
}

}  // namespace zephmetadata::media
