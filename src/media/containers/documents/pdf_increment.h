#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The text of an incremental update that carries metadata (ISO 32000-2, 7.5.6).
namespace zephmetadata::media {

struct PDFObjectId {
    int mNumber = 0;
    int mGeneration = 0;
};

struct PDFCatalogUpdate {
    PDFObjectId mId;
    std::string mDictionary;
};

/// One update: the metadata stream, the catalog where it has to refer to it, and a cross-reference section.
struct PDFIncrement {
    std::uint64_t mAt = 0;  ///< where the text begins, counted from the header of the document
    PDFObjectId mMetadata;
    std::string mMetadataDictionary;  ///< without its length
    std::optional<PDFCatalogUpdate> mCatalog;
    std::string mTrailer;  ///< the dictionary, without what belongs to one section alone
    std::uint64_t mPrevious = 0;
    std::uint64_t mSize = 0;               ///< one more than the highest object number afterwards
    bool mIsCrossReferenceStream = false;  ///< which is the object with the highest number, or else a table
};

/// What comes before the packet.
std::string PDFPacketHead(const PDFIncrement& increment, std::size_t packetBytes);
/// All of it; absent when the document is too large for a cross-reference table.
std::optional<std::string> PDFIncrementText(const PDFIncrement& increment, std::string_view packet);

}  // namespace zephmetadata::media
