#pragma once

#include <cstddef>
#include <string_view>

#include "xmp/core/toolkit.h"

/// Keeps the texts of two-item language alternatives.
///
/// The toolkit holds an alternative of exactly two items, one of them x-default, for a damaged form of one text: on
/// parsing and on serialising it overwrites item 2 with item 1, also in the tree that is being serialised. Three items
/// are left alone. So packets and trees are widened on their way into the toolkit's parser and serialiser: such a pair
/// whose texts differ gets a third item with the language "und" (undetermined) and the text of x-default, which says
/// nothing untrue; and parsed trees are narrowed again. Callers see two items, files carry three.
namespace zephmetadata::toolkit {

/// The largest packet that is read.
inline constexpr std::size_t kMaxPacketBytes = std::size_t{1} << 30U;
/// The most that the toolkit may take to parse a packet and we to walk its tree, in bytes, as EstimatedNodeBytes has it.
inline constexpr std::size_t kMaxPacketMemory = 600'000'000;
/// The toolkit looks for each name among its siblings one by one. So many steps in all, about a second, are those of
/// 10,000 properties of one packet or fields of one structure; items of arrays are not looked for.
inline constexpr std::size_t kMaxSiblingSteps = 50'000'000;

/// What an element or attribute costs, measured: nodes of two trees, and its path wherever the tree is walked.
constexpr std::size_t EstimatedNodeBytes(std::size_t pathBytes) {
    return 550 + pathBytes;
}
/// A text between tags; the toolkit keeps one for each line and each reference.
constexpr std::size_t EstimatedTextBytes(std::size_t bytes) {
    return 200 + (2 * bytes);
}

/// The language of the items that WidenPacket adds. It is taken out again by ParsePacket and never gets into a file.
inline constexpr std::string_view kTwinLanguage = "x-zephmetadata";

/// @p packet for the toolkit's parser alone, in UTF-8: each alternative of two items, one of them x-default, has a
/// third item, what it is about is taken out into @p about, and an rdf:RDF is within x:xmpmeta. Throws XMPError for a
/// packet that is not well-formed XML, has a DOCTYPE (and so could declare entities), exceeds kMaxPacketDepth or one of
/// the bounds above, is about several things, and for an empty one.
UTF8String WidenPacket(std::string_view packet, UTF8String* about = nullptr);
/// The same checks for a packet in clean UTF-8, without the result.
void CheckPacket(std::string_view packet);

/// In place; for a tree on its way into a file, which need not be narrowed again.
void WidenTree(XMPMetaHandle tree);
/// Takes the items out of a tree that writing or WidenPacket put into the packet of which it was parsed.
void MendAlternatives(XMPMetaHandle tree, std::string_view packet);

}  // namespace zephmetadata::toolkit
