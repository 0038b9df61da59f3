#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "media/files/byte_sources.h"

namespace zephmetadata::media {

/// What a replaced stretch of a file is.
enum class Touch {
    kBlock,      ///< a metadata block that was asked to change, with its frame (segment header, chunk, box)
    kStructure,  ///< what follows from that: sizes, offsets, counts, flags, checksums
    kSpace,      ///< padding and what no structure refers to any more
};

/// New bytes in place of some of a file. An insertion replaces none, a removal has none.
struct Replacement {
    Range mRange;  ///< of the file as it is
    std::string mBytes;
    Touch mTouch = Touch::kBlock;
};

/// A change of a file as data: some stretches are replaced, every other byte stays as it is and in its order.
class Plan {
public:
    Plan() = default;

    /// Ranges may come in any order but may not overlap; of several insertions at one place the first comes first, and an
    /// insertion comes before what replaces the bytes at its place.
    void Replace(Range range, std::string bytes, Touch touch);
    void Insert(std::uint64_t offset, std::string bytes, Touch touch) { Replace({offset, 0}, std::move(bytes), touch); }
    void Remove(Range range, Touch touch) { Replace(range, {}, touch); }

    /// In the order of the file.
    const std::vector<Replacement>& Replacements() const { return mReplacements; }
    bool IsEmpty() const { return mReplacements.empty(); }
    /// Other bytes of the same size for the replacement that begins at @p offset and replaces some.
    void Fill(std::uint64_t offset, std::string bytes);

    /// Whether all ranges lie within a file of @p size bytes and none overlap.
    bool IsSound(std::uint64_t size) const;
    /// The size of the file that a file of @p size bytes becomes.
    std::uint64_t NewSize(std::uint64_t size) const;

private:
    std::vector<Replacement> mReplacements;  // by offset
};

/// Where bytes lie after a plan was carried out. The plan outlives it and keeps the sizes of its replacements.
class OffsetMap {
public:
    explicit OffsetMap(const Plan& plan);
    /// Where the byte at @p offset lies afterwards, given that it stays; a place at which something is inserted moves
    /// behind it. Absent for a byte that is replaced. Depends on the sizes of the replacements alone, so that a planner
    /// can ask for offsets and then put them into replacements of the same size (Plan::Fill). Cost: logarithmic.
    std::optional<std::uint64_t> NewOffset(std::uint64_t offset) const;

private:
    const Plan& mPlan;
    std::vector<std::int64_t> mShifts;  // of what follows each replacement
};

/// The bytes that @p plan makes of @p source, in memory; absent when the source cannot be read or the plan is not sound.
std::optional<std::string> Carried(const Plan& plan, const ByteSource& source);

}  // namespace zephmetadata::media
