#include "media/containers/packet_scan.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>

namespace zephmetadata::media {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 20U;
constexpr std::string_view kOpening = "<?xpacket begin=";
constexpr std::string_view kClosing = "<?xpacket end=";
constexpr std::size_t kWidths = 3;

/// ASCII in UTF-8, UTF-16BE and UTF-16LE.
std::array<std::string, kWidths> InEachUTF(std::string_view text) {
    std::array<std::string, kWidths> forms{std::string(text), {}, {}};
    for (const char c : text) {
        forms[1].append(1, '\0').append(1, c);
        forms[2].append(1, c).append(1, '\0');
    }
    return forms;
}

struct Found {
    std::uint64_t mOffset = 0;
    std::size_t mForm = 0;
};

/// The first of some texts in the window. Blocks overlap by what a text may reach into the next.
std::optional<Found> FindFirst(const ByteSource& file, Range window, std::span<const std::string> texts) {
    std::size_t longest = 1;
    for (const std::string& text : texts) {
        longest = std::max(longest, text.size());
    }
    for (std::uint64_t at = window.mOffset; at < window.End(); at += kBlockBytes) {
        const auto size =
            static_cast<std::size_t>(std::min<std::uint64_t>(kBlockBytes + longest - 1, window.End() - at));
        const std::string block = ReadUpTo(file, at, size);
        std::optional<Found> first;
        for (std::size_t form = 0; form < texts.size(); ++form) {
            const std::size_t place = block.find(texts[form]);
            if (place != std::string::npos && (!first || at + place < first->mOffset)) {
                first = Found{at + place, form};
            }
        }
        if (first) {
            return first;
        }
    }
    return std::nullopt;
}

std::optional<Range> PacketAt(const ByteSource& file, const Found& opening, std::uint64_t end) {
    static const auto kClosings = InEachUTF(kClosing);
    static const auto kEnds = InEachUTF("?>");
    static const auto kRoots = InEachUTF(":RDF");
    const Range window{opening.mOffset, std::min(end - opening.mOffset, kMaxPacketScan)};
    const auto closing = FindFirst(file, window, std::span(kClosings).subspan(opening.mForm, 1));
    if (!closing) {
        return std::nullopt;
    }
    constexpr std::uint64_t kClosingBytes = 64;  // of the instruction at most: 'end="w"?>' follows
    const Range rest{closing->mOffset, std::min(window.End() - closing->mOffset, kClosingBytes)};
    const auto last = FindFirst(file, rest, std::span(kEnds).subspan(opening.mForm, 1));
    if (!last) {
        return std::nullopt;
    }
    const Range packet{opening.mOffset, last->mOffset + kEnds.at(opening.mForm).size() - opening.mOffset};
    const bool hasRDF = FindFirst(file, packet, std::span(kRoots).subspan(opening.mForm, 1)).has_value();
    return hasRDF ? std::optional(packet) : std::nullopt;
}

/// Openings that belong to no packet are passed over, but each may cost a search through kMaxPacketScan bytes.
constexpr std::size_t kMaxFailures = 10;

std::optional<Range> Find(const ByteSource& file, Range window, bool isLast) {
    static const auto kOpenings = InEachUTF(kOpening);
    window.mSize = window.mOffset < file.Size() ? std::min(window.mSize, file.Size() - window.mOffset) : 0;
    const std::uint64_t end = window.End();
    std::optional<Range> found;
    std::size_t failures = 0;
    while (failures < kMaxFailures) {
        const auto opening = FindFirst(file, window, kOpenings);
        if (!opening) {
            break;
        }
        const std::optional<Range> packet = PacketAt(file, *opening, end);
        found = packet ? packet : found;
        if (packet && !isLast) {
            break;
        }
        failures += packet ? 0 : 1;
        const std::uint64_t next = packet ? packet->End() : opening->mOffset + 1;
        window = {next, end - next};
    }
    return found;
}

}  // namespace

std::optional<Range> FindPacket(const ByteSource& file, Range window) {
    return Find(file, window, false);
}

std::optional<Range> FindLastPacket(const ByteSource& file, Range window) {
    return Find(file, window, true);
}

}  // namespace zephmetadata::media
