#include "media/containers/chunks/aiff.h"

#include <algorithm>
#include <array>

#include "media/containers/chunks/riff_form.h"
#include "media/native/exif/exif_texts.h"
#include "media/native/namespaces.h"

namespace zephmetadata::media {

namespace {

constexpr std::string_view kPacketType = "APPL";
constexpr std::string_view kSignature = "XMP ";
constexpr const char* kDamaged = "The AIFF file is cut off or damaged.";
constexpr std::uint64_t kMaxTextBytes = std::uint64_t{1} << 20U;

struct Row {
    std::string_view mType;
    std::string_view mNamespace;
    std::string_view mProperty;
    ValueForm mForm;
};
constexpr std::array kRows = {
    Row{"NAME", kDC, "title", ValueForm::kLangAlt},
    Row{"AUTH", kDC, "creator", ValueForm::kSeq},
    Row{"(c) ", kDC, "rights", ValueForm::kLangAlt},
    Row{"ANNO", kXMPDM, "logComment", ValueForm::kSimple},
};

std::vector<NativeValue> ValuesOf(const ByteSource& file, const std::vector<Chunk>& chunks) {
    std::vector<NativeValue> values;
    for (const Row& row : kRows) {
        // The last of repeated ones goes.
        const auto found = std::find_if(chunks.rbegin(), chunks.rend(), [&](const Chunk& chunk) {
            return chunk.Type() == row.mType && chunk.mData.mSize <= kMaxTextBytes;
        });
        const auto bytes = found != chunks.rend() ? ReadRange(file, found->mData) : std::nullopt;
        const std::string text =
            bytes ? CleanText(std::string_view(*bytes).substr(0, bytes->find('\0'))) : std::string();
        if (!text.empty()) {
            const char* const name = row.mForm == ValueForm::kLangAlt ? "x-default" : "";
            values.push_back({row.mNamespace, row.mProperty, row.mForm, {{name, text}}});
        }
    }
    return values;
}

const Chunk* FindPacket(const ByteSource& file, const Form& form) {
    const std::vector<Chunk>& chunks = form.mChunks.mChunks;
    const auto found = std::find_if(chunks.begin(), chunks.end(), [&](const Chunk& chunk) {
        return chunk.Type() == kPacketType && chunk.mData.mSize >= kSignature.size() &&
               ReadUpTo(file, chunk.mData.mOffset, kSignature.size()) == kSignature;
    });
    return found != chunks.end() ? &*found : nullptr;
}

class Aiff : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        const Form form = ReadForm(*file, 0, kAiffLayout);
        FileBlocks blocks;
        bool isWhole = form.mIsWhole;
        const Chunk* const packet = FindPacket(*file, form);
        if (packet != nullptr && packet->mData.mSize > kSignature.size()) {
            blocks.mXMP = ReadChunk(*file, *packet);
            isWhole = isWhole && blocks.mXMP;
            if (blocks.mXMP) {
                blocks.mXMP->erase(0, kSignature.size());
            }
        }
        blocks.mValues = ValuesOf(*file, form.mChunks.mChunks);
        if (!isWhole) {
            blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
            blocks.mDetail = kDamaged;
        }
        return blocks;
    }

    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        const Form form = ReadForm(*file, 0, kAiffLayout);
        if (!form.mIsWhole) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, kDamaged);
        }
        PlannedEdit edit;
        if (!changes.mXMP) {
            return edit;
        }
        const Chunk* const old = FindPacket(*file, form);
        const std::uint64_t room = old != nullptr ? old->mData.mSize - kSignature.size() : 0;
        const std::string data = std::string(kSignature) + FittingPacket(*changes.mXMP, room);
        if (old != nullptr) {
            edit.mPlan.Replace(old->mWhole, ChunkBytes(kAiffLayout, kPacketType, data), Touch::kBlock);
        } else {
            PlanAppend(edit.mPlan, form, kPacketType, data);
        }
        if (!PlanFormSize(edit.mPlan, form)) {
            return RefusedEdit(FileStatus::kFileStatus_CannotCarryXMP, "The AIFF file would be too large.");
        }
        return edit;
    }
};

}  // namespace

bool IsAiff(std::string_view head) {
    const std::string_view name = head.substr(0, kFormHeaderBytes).size() == kFormHeaderBytes
                                      ? head.substr(kChunkHeaderBytes, 4)
                                      : std::string_view();
    return head.starts_with("FORM") && (name == "AIFF" || name == "AIFC");
}

const Container& AiffContainer() {
    static const Aiff container;
    return container;
}

}  // namespace zephmetadata::media
