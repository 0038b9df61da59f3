#pragma once

#include "media/containers/container.h"

/// The metadata blocks that a TIFF stream keeps in its first directory: TIFF files and raw formats laid out like them.
namespace zephmetadata::media {

inline constexpr std::uint16_t kTiffTagXMP = 700;               // ISO 16684-3
inline constexpr std::uint16_t kTiffTagIIM = 33723;             // ISO 12234-2 (TIFF/EP)
inline constexpr std::uint16_t kTiffTagImageResources = 34377;  // Photoshop

/// The bytes of a field of the first directory as they stand in the file; absent for none, or one that is too large.
std::optional<std::string> TiffFieldInFile(const ByteSource& file, const TiffFields& fields, std::uint16_t tag);

/// IIM datasets in a field, which some writers declare as long numbers, and some of those then turn about.
struct TiffIIM {
    std::string mDatasets;        ///< without the zero bytes behind them
    std::string mPadded;          ///< with them
    bool mIsTurnedAbout = false;  ///< the file has the bytes of each long number the other way round
};
std::optional<TiffIIM> TiffIIMInFile(const ByteSource& file, const TiffFields& fields);

/// Adds packet, datasets and digest of the first directory.
void AddTiffBlocks(const ByteSource& file, const TiffFields& fields, FileBlocks& blocks);

}  // namespace zephmetadata::media
