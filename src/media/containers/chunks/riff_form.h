#pragma once

#include "media/containers/chunks/chunks.h"
#include "media/plan.h"

/// The frame of RIFF files (Multimedia Programming Interface and Data Specifications 1.0) and their like: one chunk that
/// holds all others behind the name of what the file is.
namespace zephmetadata::media {

inline constexpr ChunkLayout kRiffLayout = {ByteOrder::kLittle, false, true, false};
inline constexpr ChunkLayout kAiffLayout = {ByteOrder::kBig, false, true, false};
/// Type and size of the outer chunk, and the name.
inline constexpr std::uint64_t kFormHeaderBytes = 12;

struct Form {
    ChunkLayout mLayout;
    std::string mName;      ///< "WEBP", "WAVE"
    Range mWhole;           ///< without what may follow in the file
    Chunks mChunks;         ///< within it
    bool mIsWhole = false;  ///< the outer chunk and those within it are all there
    bool mIsOpen = false;   ///< the size was never filled in, as by writers to a pipe
    /// Where the size stands in eight bytes (RF64 and BW64: EBU Tech 3306, ITU-R BS.2088); absent when it is in the header.
    std::optional<Range> mLongSize;
};

/// The outer chunk at @p at; one that claims more than there is, is read to the end of the file.
Form ReadForm(const ByteSource& file, std::uint64_t at, const ChunkLayout& layout);

/// A new chunk at the end of the form, behind what is planned there so far.
void PlanAppend(Plan& plan, const Form& form, std::string_view type, std::string_view data);
/// Brings the size in the form's header into step with what is planned within that form; false when it is too large then.
bool PlanFormSize(Plan& plan, const Form& form);

}  // namespace zephmetadata::media
