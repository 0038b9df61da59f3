#pragma once

#include <string_view>

#include "media/containers/container.h"

/// Files whose packet is found by looking for it: that is what the wrapper of a packet is for (ISO 16684-1, 7.3).
namespace zephmetadata::media {

/// PostScript and EPS, also within the binary frame of DOS EPS files. Read only: the program in them may tell its own size.
bool IsPostScript(std::string_view head);
const Container& PostScriptContainer();

/// InDesign documents. A packet is written over in place where its room is enough; nothing else is changed.
bool IsInDesign(std::string_view head);
const Container& InDesignContainer();

/// Any other file: of unknown format unless a packet shows up in its first kMaxScannedBytes. Read only.
const Container& ScannedContainer();
inline constexpr std::uint64_t kMaxScannedBytes = std::uint64_t{64} << 20U;

}  // namespace zephmetadata::media
