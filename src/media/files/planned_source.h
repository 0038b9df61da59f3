#pragma once

#include <memory>
#include <vector>

#include "media/plan.h"

namespace zephmetadata::media {

/// What a plan makes of a source, without making it: every byte is read from the source or from the plan.
class PlannedSource : public ByteSource {
public:
    /// The plan is sound for the source (Plan::IsSound) and outlives this.
    PlannedSource(const Plan& plan, std::shared_ptr<const ByteSource> source);

    std::uint64_t Size() const override { return mSize; }
    bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const override;

private:
    /// A stretch of either.
    struct Piece {
        std::uint64_t mBegin = 0;             ///< here
        Range mOld;                           ///< of the source; meaningless with new bytes
        const std::string* mBytes = nullptr;  ///< new ones; null for what stays
    };

    void Add(const Piece& piece, std::uint64_t size);

    std::shared_ptr<const ByteSource> mSource;
    std::vector<Piece> mPieces;  // by place, without empty ones
    std::uint64_t mSize = 0;
};

}  // namespace zephmetadata::media
