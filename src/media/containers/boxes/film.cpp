#include "media/containers/boxes/film.h"

#include <algorithm>
#include <array>

#include "media/bytes.h"
#include "media/containers/boxes/boxes.h"
#include "media/containers/boxes/film_fields.h"
#include "media/containers/xmp_packets.h"

namespace zephmetadata::media {

namespace {

constexpr std::string_view kCanonUuid("\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48", 16);

constexpr const char* kCutOff = "it ends within a box or before its movie";

constexpr auto kOuterTypes = std::to_array<std::string_view>({"moov", "mdat", "free", "skip", "wide", "pnot"});

/// What a film is read through: its top-level boxes and those of its movie box.
struct FilmBoxes {
    BoxList mOuter;
    BoxList mMovie;                ///< the movie box and what is in it; empty without one
    std::optional<Range> mPacket;  ///< the bytes of the packet
    const Box* mHolder = nullptr;  ///< the box around it
};

bool HoldsBoxes(const Box& box, const BoxList& parents) {
    constexpr auto kEntered = std::to_array<std::string_view>({"moov", "trak", "mdia", "minf", "stbl", "udta"});
    if (box.IsUuid(kCanonUuid)) {
        return box.mParent != kNoBox && parents.mBoxes[box.mParent].mType == "moov";
    }
    return std::find(kEntered.begin(), kEntered.end(), box.mType) != kEntered.end();
}

std::optional<std::uint64_t> FilmChildrenAt(const ByteSource& /*file*/, const Box& box, const BoxList& parents) {
    return HoldsBoxes(box, parents) ? std::optional<std::uint64_t>(0) : std::nullopt;
}

/// A packet stands in a box of its own beside the movie box or, in QuickTime files, in the user data.
FilmBoxes ReadFilm(const ByteSource& file) {
    FilmBoxes film;
    film.mOuter = ReadBoxes(file, {0, file.Size()});
    if (const Box* const movie = film.mOuter.Find("moov")) {
        film.mMovie = ReadBoxTree(file, movie->mWhole, &FilmChildrenAt);
    }
    film.mHolder = film.mOuter.FindUuid(kXMPUuid);
    if (film.mHolder == nullptr) {
        film.mHolder = film.mMovie.FindPath({"moov", "udta", "XMP_"});
    }
    if (film.mHolder != nullptr) {
        film.mPacket = film.mHolder->Contents();
    }
    return film;
}

/// Whether the file ends in the middle of a box or before its movie (or a fragment of one) begins. Zeros at the end are
/// padding, but fewer than four are the beginning of a size.
bool IsCutOff(const ByteSource& file, const FilmBoxes& film) {
    const Range rest = film.mOuter.mRest;
    const bool endsWell = rest.mSize == 0 || (rest.mSize >= 4 && IsZeroRest(file, rest));
    const bool hasMovie = film.mOuter.Find("moov") != nullptr || film.mOuter.Find("moof") != nullptr;
    return !hasMovie || !endsWell || !film.mMovie.mIsWhole;
}

void ReadPacket(const ByteSource& file, const FilmBoxes& film, FileBlocks& blocks) {
    if (film.mPacket && film.mPacket->mSize <= kMaxBlockBytes) {
        blocks.mXMP = ReadRange(file, *film.mPacket);
    }
    if (IsCutOff(file, film)) {
        blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
        blocks.mDetail = kCutOff;
    }
}

/// Where a new packet goes: behind all boxes, so that nothing that is referred to moves; before an index of fragments,
/// which readers look for at the very end. Zeros behind the last box would hide what follows them.
std::uint64_t AppendingPlace(const FilmBoxes& film) {
    const Box& last = film.mOuter.mBoxes.back();
    return last.mType == "mfra" ? last.mWhole.mOffset : last.mWhole.End();
}

PlannedEdit AppendPacket(const FilmBoxes& film, std::string_view element, Plan plan) {
    const Box& last = film.mOuter.mBoxes.back();
    if (last.mSize == BoxSize::kToEnd && last.mWhole.mSize > 0xFFFFFFFFU) {
        return RefusedEdit(FileStatus::kFileStatus_NotWritten, "its last box goes on to the end of the file");
    }
    MakeExplicit(plan, last);
    plan.Insert(AppendingPlace(film), UuidBoxBytes(kXMPUuid, WrappedPacket(element)), Touch::kBlock);
    return {FileStatus::kFileStatus_Success, {}, std::move(plan)};
}

/// Whether nothing that is referred to follows the box.
bool CanMoveWhatFollows(const FilmBoxes& film, const Box& box) {
    return box.mWhole.End() == AppendingPlace(film);
}

class Film : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        const PagedSource paged(*file);
        const FilmBoxes film = ReadFilm(paged);
        FileBlocks blocks;
        ReadPacket(paged, film, blocks);
        blocks.mValues = FilmFields(paged, film.mMovie);
        return blocks;
    }

    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        const PagedSource paged(*file);
        const FilmBoxes film = ReadFilm(paged);
        if (IsCutOff(paged, film)) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, kCutOff);
        }
        const std::string element = changes.mXMP.value_or(std::string());
        if (film.mHolder == nullptr) {
            return element.empty() ? PlannedEdit() : AppendPacket(film, element, {});
        }
        if (element.empty()) {
            return {FileStatus::kFileStatus_Success, {}, WithoutPacket(film)};
        }
        const bool canResize = CanResize(film);
        std::string packet = FittingPacket(element, film.mPacket->mSize, canResize);
        if (packet.size() != film.mPacket->mSize && !canResize) {
            return AppendPacket(film, element, WithoutPacket(film));
        }
        Plan plan;
        if (packet.size() != film.mPacket->mSize && !Resize(film, packet.size(), plan)) {
            return RefusedEdit(FileStatus::kFileStatus_NotWritten, "a box would become too large");
        }
        plan.Replace(*film.mPacket, std::move(packet), Touch::kBlock);
        return {FileStatus::kFileStatus_Success, {}, std::move(plan)};
    }

    std::vector<Range> References(const ByteSource& file) const override {
        const PagedSource paged(file);
        return ChunkReferences(paged, ReadFilm(paged).mMovie);
    }

private:
    static bool CanResize(const FilmBoxes& film) {
        const bool isInMovie = film.mHolder->mType == "XMP_";
        return CanMoveWhatFollows(film, isInMovie ? *film.mOuter.Find("moov") : *film.mHolder);
    }

    /// Gives the packet's box and those around it their new sizes.
    static bool Resize(const FilmBoxes& film, std::size_t packetSize, Plan& plan) {
        const std::uint64_t more = packetSize - film.mPacket->mSize;  // modulo 2^64 when it shrinks
        bool fits = ResizeBox(plan, *film.mHolder, film.mHolder->mWhole.mSize + more);
        if (film.mHolder->mType == "XMP_") {
            for (std::size_t at = film.mHolder->mParent; at != kNoBox; at = film.mMovie.mBoxes[at].mParent) {
                const Box& around = film.mMovie.mBoxes[at];
                fits = fits && ResizeBox(plan, around, around.mWhole.mSize + more);
            }
        }
        return fits;
    }

    /// The packet's box becomes free space, which readers pass over, or goes when nothing is referred to behind it.
    static Plan WithoutPacket(const FilmBoxes& film) {
        Plan plan;
        const Range whole = film.mHolder->mWhole;
        if (film.mHolder->mType != "XMP_" && CanMoveWhatFollows(film, *film.mHolder)) {
            plan.Remove(whole, Touch::kBlock);
            return plan;
        }
        plan.Replace({whole.mOffset + 4, 4}, "free", Touch::kStructure);
        plan.Replace(*film.mPacket, std::string(static_cast<std::size_t>(film.mPacket->mSize), '\0'), Touch::kBlock);
        return plan;
    }
};

/// The directories of a CR3 picture stand in streams of their own, in a box of the movie box.
class CR3 : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        constexpr auto kStreams = std::to_array<std::pair<std::string_view, TiffDirectory>>(
            {{"CMT1", TiffDirectory::kMain}, {"CMT2", TiffDirectory::kExif}, {"CMT4", TiffDirectory::kGPS}});
        const PagedSource paged(*file);
        const FilmBoxes film = ReadFilm(paged);
        FileBlocks blocks;
        ReadPacket(paged, film, blocks);
        for (const auto& [type, directory] : kStreams) {
            if (const Box* const stream = film.mMovie.Find(type)) {
                blocks.mExif.push_back({std::make_shared<WindowSource>(file, stream->Contents()), directory});
            }
        }
        return blocks;
    }
};

}  // namespace

bool IsFilm(std::string_view head) {
    constexpr std::size_t kType = 4;
    if (head.size() < 2 * kType) {
        return false;
    }
    const std::string_view type = head.substr(kType, kType);
    return type == "ftyp" || std::find(kOuterTypes.begin(), kOuterTypes.end(), type) != kOuterTypes.end();
}

bool IsCR3(std::string_view head) {
    return head.substr(0, 12).ends_with("ftypcrx ");
}

const Container& FilmContainer() {
    static const Film container;
    return container;
}

const Container& CR3Container() {
    static const CR3 container;
    return container;
}

}  // namespace zephmetadata::media
