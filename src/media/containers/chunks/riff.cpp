#include "media/containers/chunks/riff.h"

#include <algorithm>

#include "media/containers/chunks/riff_form.h"
#include "media/containers/chunks/riff_values.h"

namespace zephmetadata::media {

namespace {

constexpr std::string_view kPacketType = "_PMX";
constexpr std::string_view kFreeType = "JUNK";
constexpr const char* kDamaged = "The RIFF file is cut off or damaged.";
constexpr const char* kOpen = "The size of the RIFF file was never filled in.";
/// Of a gigabyte each.
constexpr std::size_t kMaxForms = 10'000;

/// The forms of the file: an AVI file over a gigabyte has further ones (OpenDML AVI File Format Extensions 1.02).
std::vector<Form> ReadForms(const ByteSource& file) {
    std::vector<Form> forms = {ReadForm(file, 0, kRiffLayout)};
    while (forms.front().mName == "AVI " && forms.back().mIsWhole && forms.size() < kMaxForms) {
        const std::uint64_t at = forms.back().mWhole.End() + forms.back().mWhole.mSize % 2;
        const std::string header = ReadUpTo(file, at, kFormHeaderBytes);
        if (!header.starts_with("RIFF") || header.substr(kChunkHeaderBytes) != "AVIX") {
            break;
        }
        forms.push_back(ReadForm(file, at, kRiffLayout));
    }
    return forms;
}

/// Film and sound: other chunks, and indexes of other programs, hold offsets into them.
std::vector<Range> StreamsOf(const ByteSource& file, const std::vector<Form>& forms) {
    std::vector<Range> streams;
    for (const Form& form : forms) {
        for (const Chunk& chunk : form.mChunks.mChunks) {
            if (chunk.Type() == "data" ||
                (chunk.Type() == "LIST" && ReadUpTo(file, chunk.mData.mOffset, 4) == "movi")) {
                streams.push_back(chunk.mData);
            }
        }
    }
    return streams;
}

struct PacketPlace {
    const Form* mForm = nullptr;
    const Chunk* mChunk = nullptr;  // null for none
};
PacketPlace FindPacket(const std::vector<Form>& forms) {
    for (const Form& form : forms) {
        if (const Chunk* const chunk = form.mChunks.Find(kPacketType)) {
            return {&form, chunk};
        }
    }
    return {};
}

/// In its place where it fits or nothing that must stay follows; else at the end, and the old place becomes free.
bool PlanPacket(Plan& plan, const std::vector<Form>& forms, const std::vector<Range>& streams,
                std::string_view element) {
    const PacketPlace old = FindPacket(forms);
    const std::uint64_t room = old.mChunk != nullptr ? old.mChunk->mData.mSize : 0;
    const std::string packet = WrappedPacket(element, room);
    if (old.mChunk != nullptr && packet.size() == room) {
        plan.Replace(old.mChunk->mData, packet, Touch::kBlock);
        return true;
    }
    const bool mayMove =
        old.mChunk != nullptr && (streams.empty() || streams.back().mOffset < old.mChunk->mData.mOffset);
    if (mayMove) {
        plan.Replace(old.mChunk->mWhole, ChunkBytes(kRiffLayout, kPacketType, packet), Touch::kBlock);
        return PlanFormSize(plan, *old.mForm);
    }
    if (old.mChunk != nullptr) {
        // Zeros, lest anything takes the old packet for one.
        std::string freed = ChunkBytes(kRiffLayout, kFreeType, std::string(room, '\0'));
        freed.resize(old.mChunk->mWhole.mSize);
        plan.Replace(old.mChunk->mWhole, std::move(freed), Touch::kSpace);
    }
    PlanAppend(plan, forms.back(), kPacketType, packet);
    return PlanFormSize(plan, forms.back());
}

class Riff : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        const std::vector<Form> forms = ReadForms(*file);
        FileBlocks blocks;
        bool isWhole = std::all_of(forms.begin(), forms.end(), [](const Form& form) { return form.mIsWhole; });
        const PacketPlace packet = FindPacket(forms);
        if (packet.mChunk != nullptr && packet.mChunk->mData.mSize > 0) {
            blocks.mXMP = ReadChunk(*file, *packet.mChunk);
            isWhole = isWhole && blocks.mXMP;
        }
        blocks.mValues = RiffValues(*file, forms.front());
        if (forms.front().mIsOpen) {
            blocks.mWhyReadOnly = kOpen;
        } else if (!isWhole) {
            blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
            blocks.mDetail = kDamaged;
        }
        return blocks;
    }

    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        const std::vector<Form> forms = ReadForms(*file);
        if (forms.front().mIsOpen) {
            return RefusedEdit(FileStatus::kFileStatus_CannotCarryXMP, kOpen);
        }
        if (!std::all_of(forms.begin(), forms.end(), [](const Form& form) { return form.mIsWhole; })) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, kDamaged);
        }
        PlannedEdit edit;
        if (changes.mXMP && !PlanPacket(edit.mPlan, forms, StreamsOf(*file, forms), *changes.mXMP)) {
            return RefusedEdit(FileStatus::kFileStatus_CannotCarryXMP, "The RIFF file would be too large.");
        }
        return edit;
    }

    std::vector<Range> References(const ByteSource& file) const override { return StreamsOf(file, ReadForms(file)); }
};

}  // namespace

bool IsRiff(std::string_view head) {
    constexpr std::string_view kWave = "WAVE";
    if (head.size() < kFormHeaderBytes) {
        return false;
    }
    const std::string_view type = head.substr(0, 4);
    const std::string_view name = head.substr(kChunkHeaderBytes, 4);
    return (type == "RIFF" && (name == kWave || name == "AVI ")) ||
           ((type == "RF64" || type == "BW64") && name == kWave);
}

const Container& RiffContainer() {
    static const Riff container;
    return container;
}

}  // namespace zephmetadata::media
