#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/native/exif/exif_codecs.h"

/// Items of structures, and the cells of the fields behind them.
namespace zephmetadata::media {

/// "exif:Values[1]" for the first.
std::string Numbered(std::string_view name, std::size_t at);
/// Null when there is none.
const NativeItem* ItemOf(const NativeItems& items, std::string_view name);
/// The texts of an array in the structure, in the order of its numbers.
std::vector<std::string_view> ArrayOf(const NativeItems& items, std::string_view name);
std::optional<std::uint16_t> ShortOf(const NativeItems& items, std::string_view name);

/// Numbers as numbers, True as true, other texts as they are.
bool IsSameText(std::string_view left, std::string_view right);
/// Whether the packet has all items of the fields.
bool StructuresAgree(const TiffFields& fields, const ExifRow& row, const NativeItems& native,
                     const NativeItems& packet);

TiffEdits OneEdit(const ExifRow& row, std::string bytes);
/// Eight bytes, of which the caller has seen that they are there.
std::string RationalText(std::string_view bytes, std::size_t at, ByteOrder order, bool isSigned);
/// Absent for what is no number or does not fit.
std::optional<std::string> RationalCell(std::string_view text, ByteOrder order, bool isSigned);

}  // namespace zephmetadata::media
