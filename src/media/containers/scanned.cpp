#include "media/containers/scanned.h"

#include "media/bytes.h"
#include "media/containers/packet_scan.h"

namespace zephmetadata::media {

namespace {

constexpr std::string_view kSidecar = "packets of this format are read only; a sidecar can hold the changes";

void SetPacket(const ByteSource& file, const std::optional<Range>& packet, FileBlocks& blocks) {
    if (packet) {
        blocks.mXMP = ReadRange(file, *packet);
    }
}

/// Found, and never written.
class ReadOnlyContainer : public Container {
public:
    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& /*file*/,
                         const BlockChanges& /*changes*/) const override {
        return RefusedEdit(FileStatus::kFileStatus_CannotCarryXMP, std::string(kSidecar));
    }
};

constexpr std::string_view kPostScript = "%!PS";
constexpr std::string_view kDosEPS = "\xC5\xD0\xD3\xC6";  // Encapsulated PostScript File Format 3.0, 5.2
constexpr std::size_t kCommentBytes = std::size_t{64} << 10U;

class PostScript : public ReadOnlyContainer {
public:
    /// Placed pictures bring packets of their own. The header comment tells whether that of the document comes first or
    /// last; without it writers put it first, into the prolog.
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        FileBlocks blocks;
        const std::string head = ReadUpTo(*file, 0, kCommentBytes);
        Range part{0, file->Size()};
        constexpr std::size_t kFrameBytes = 12;
        if (head.starts_with(kDosEPS) && head.size() >= kFrameBytes) {
            part = {Get32(head, 4, ByteOrder::kLittle), Get32(head, 8, ByteOrder::kLittle)};
            if (!IsWithin(part, file->Size())) {
                blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
                blocks.mDetail = "the PostScript part lies outside of the file";
            }
        }
        const std::size_t comment = head.find("%ADO_ContainsXMP:");
        const std::string_view says =
            comment == std::string::npos
                ? ""
                : std::string_view(head).substr(comment, head.find_first_of("\r\n", comment) - comment);
        if (says.find("NoMain") == std::string_view::npos) {
            const bool isLast = says.find("MainLast") != std::string_view::npos;
            SetPacket(*file, isLast ? FindLastPacket(*file, part) : FindPacket(*file, part), blocks);
        }
        return blocks;
    }
};

// XMP specification part 3, 2.1: two master pages, of which the one with the higher sequence number counts, pages, and
// behind them objects: a header, the length of the packet, the packet, a trailer.
constexpr std::string_view kInDesign = "\x06\x06\xED\xF5\xD8\x1D\x46\xE5\xBD\x31\xEF\xE7\xFE\x74\xB7\x1D";
constexpr std::string_view kObject = "\xDE\x39\x39\x79\x51\x88\x4B\x6C\x8E\x63\xEE\xF8\xAE\xE0\xDD\x38";
constexpr std::uint64_t kPageBytes = 4096;
constexpr std::size_t kSequenceAt = 264;
constexpr std::size_t kPagesAt = 280;
constexpr std::size_t kObjectHeaderBytes = 32;
constexpr std::size_t kChecksumAt = 28;
constexpr std::uint32_t kNoChecksum = 0xFFFFFFFF;

class InDesign : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        FileBlocks blocks;
        const std::optional<std::uint64_t> objects = ObjectsPlace(*file);
        if (!objects) {
            blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
            blocks.mDetail = "the pages end outside of the file";
            return blocks;
        }
        SetPacket(*file, FindPacket(*file, {*objects, file->Size() - *objects}), blocks);
        return blocks;
    }
    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        PlannedEdit edit;
        if (!changes.mXMP) {
            return edit;
        }
        const auto refused = [](const char* detail) {
            return RefusedEdit(FileStatus::kFileStatus_CannotCarryXMP, std::string(detail) + "; a sidecar can hold it");
        };
        const std::optional<std::uint64_t> objects = ObjectsPlace(*file);
        const auto packet = objects ? FindPacket(*file, {*objects, file->Size() - *objects}) : std::nullopt;
        const auto old = packet ? ReadRange(*file, *packet) : std::nullopt;
        if (!old) {
            return refused("there is no packet to write over");
        }
        if (!old->ends_with("end=\"w\"?>") && !old->ends_with("end='w'?>")) {
            return refused("the packet says that it may not be written over");
        }
        if (HasChecksum(*file, *packet)) {
            return refused("the packet is under a checksum");
        }
        std::string next = WrappedPacket(*changes.mXMP, old->size());
        if (next.size() != old->size()) {
            return refused("the packet has too little room");
        }
        edit.mPlan.Replace(*packet, std::move(next), Touch::kBlock);
        return edit;
    }

private:
    static std::optional<std::uint64_t> ObjectsPlace(const ByteSource& file) {
        const std::string masters = ReadUpTo(file, 0, 2 * kPageBytes);
        if (masters.size() != 2 * kPageBytes) {
            return std::nullopt;
        }
        const auto sequence = [&](std::size_t page) {
            return Get64(masters, page * kPageBytes + kSequenceAt, ByteOrder::kLittle);
        };
        const std::size_t page = sequence(1) > sequence(0) ? 1 : 0;
        const std::uint64_t pages = Get32(masters, page * kPageBytes + kPagesAt, ByteOrder::kLittle);
        return pages * kPageBytes <= file.Size() ? std::optional(pages * kPageBytes) : std::nullopt;
    }
    /// Or does not lie in an object as is known here.
    static bool HasChecksum(const ByteSource& file, const Range& packet) {
        constexpr std::size_t kFrame = kObjectHeaderBytes + 4;
        const auto frame = packet.mOffset < kFrame ? std::nullopt : ReadRange(file, {packet.mOffset - kFrame, kFrame});
        return !frame || !frame->starts_with(kObject) || Get32(*frame, kChecksumAt) != kNoChecksum;
    }
};

class Scanned : public ReadOnlyContainer {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        FileBlocks blocks;
        SetPacket(*file, FindPacket(*file, {0, kMaxScannedBytes}), blocks);
        blocks.mStatus = blocks.mXMP ? FileStatus::kFileStatus_Success : FileStatus::kFileStatus_UnknownFormat;
        return blocks;
    }
};

}  // namespace

bool IsPostScript(std::string_view head) {
    return head.starts_with(kPostScript) || head.starts_with(kDosEPS);
}

const Container& PostScriptContainer() {
    static const PostScript container;
    return container;
}

bool IsInDesign(std::string_view head) {
    return head.starts_with(kInDesign);
}

const Container& InDesignContainer() {
    static const InDesign container;
    return container;
}

const Container& ScannedContainer() {
    static const Scanned container;
    return container;
}

}  // namespace zephmetadata::media
