#include "media/containers/chunks/png.h"

#include <algorithm>
#include <array>

#include "media/containers/block_compression.h"
#include "media/containers/chunks/chunks.h"
#include "media/containers/chunks/png_text.h"
#include "media/native/iim/image_resources.h"

namespace zephmetadata::media {

namespace {

constexpr std::string_view kSignature = "\x89PNG\r\n\x1A\n";
constexpr ChunkLayout kLayout = {ByteOrder::kBig, true, false, true};
constexpr std::string_view kPacketKeyword = "XML:com.adobe.xmp";
/// Sizes of chunks are below 2^31.
constexpr std::size_t kMaxChunkBytes = 0x7FFFFFFF;

constexpr std::string_view kExifSignature{"Exif\0\0", 6};
constexpr std::string_view kPacketSignature{"http://ns.adobe.com/xap/1.0/\0", 29};
constexpr std::string_view kResourceSignature = "8BIM";

enum class Kind { kPacket, kExif, kDatasets };

/// A metadata block of the file.
struct Block {
    Kind mKind = Kind::kPacket;
    Chunk mChunk;
    bool mIsRawProfile = false;
    std::string mBytes;      // without mSignature
    std::string mSignature;  // before the bytes in an eXIf chunk of some writers
    std::optional<std::string> mDigest;
};

struct Structure {
    Chunks mChunks;
    std::vector<Block> mBlocks;  // those in chunks of their own before those in raw profiles, else in order of the file
    std::string mDamage;         // the first, empty for none
};

/// Takes a signature off the front of some bytes.
bool TakeFront(std::string& bytes, std::string_view signature) {
    const bool has = bytes.starts_with(signature);
    if (has) {
        bytes.erase(0, signature.size());
    }
    return has;
}

void SetExif(Block& block, std::string bytes) {
    block.mKind = Kind::kExif;
    block.mSignature = TakeFront(bytes, kExifSignature) ? kExifSignature : std::string_view();
    block.mBytes = std::move(bytes);
}

void SetPacket(Block& block, std::string bytes) {
    block.mKind = Kind::kPacket;
    TakeFront(bytes, kPacketSignature);
    block.mBytes = std::move(bytes);
}

/// An APP1 segment of a JPEG file holds either, as its signature says.
void SetSegment(Block& block, std::string bytes) {
    bytes.starts_with(kPacketSignature) ? SetPacket(block, std::move(bytes)) : SetExif(block, std::move(bytes));
}

/// Bare datasets, or the image resources that they are one of.
void SetDatasets(Block& block, std::string bytes) {
    block.mKind = Kind::kDatasets;
    if (!bytes.starts_with(kResourceSignature)) {
        block.mBytes = std::move(bytes);
        return;
    }
    const ImageResources resources = ReadImageResources(bytes);
    const auto dataOf = [&](std::uint16_t number) {
        const ImageResource* const resource = resources.Find(number);
        return resource != nullptr ? std::optional(bytes.substr(resource->mData.mOffset, resource->mData.mSize))
                                   : std::nullopt;
    };
    block.mDigest = dataOf(kResourceIIMDigest);
    block.mBytes = dataOf(kResourceIIM).value_or(std::string());
}

struct RawProfile {
    std::string_view mKeyword;
    void (*mSet)(Block&, std::string);
};
constexpr std::array kRawProfiles = {
    RawProfile{"Raw profile type exif", &SetExif},     RawProfile{"Raw profile type APP1", &SetSegment},
    RawProfile{"Raw profile type app1", &SetSegment},  RawProfile{"Raw profile type xmp", &SetPacket},
    RawProfile{"Raw profile type iptc", &SetDatasets}, RawProfile{"Raw profile type 8bim", &SetDatasets},
};
/// Of one keyword: an Exif and an XMP segment, and as many copies.
constexpr std::size_t kMaxRawProfiles = 4;

/// A compressed Exif block: a zero byte, the size of the block, and a zlib stream.
std::optional<std::string> UnfoldedExif(std::string_view data) {
    constexpr std::size_t kStreamPlace = 5;
    return data.size() > kStreamPlace
               ? Decompressed(data.substr(kStreamPlace), Compression::kZlib, kMaxDecompressedBytes)
               : std::nullopt;
}

/// Reads the blocks of one file.
class BlockReader {
public:
    BlockReader(const ByteSource& file, Structure& structure) : mFile(file), mStructure(structure) {}

    void Read(const Chunk& chunk) {
        const std::string_view type = chunk.Type();
        if (type == "eXIf" || type == "zxIf") {
            ReadExif(chunk);
        } else if (type == "iTXt" || type == "tEXt" || type == "zTXt") {
            ReadText(chunk);
        }
    }
    void Finish() { std::move(mRawProfiles.begin(), mRawProfiles.end(), std::back_inserter(mStructure.mBlocks)); }

private:
    void Damaged(const char* what) {
        if (mStructure.mDamage.empty()) {
            mStructure.mDamage = what;
        }
    }
    bool Has(Kind kind) const {
        return std::any_of(mStructure.mBlocks.begin(), mStructure.mBlocks.end(),
                           [&](const Block& block) { return block.mKind == kind; });
    }
    void ReadExif(const Chunk& chunk) {
        if (Has(Kind::kExif)) {
            return;
        }
        auto bytes = ReadChunk(mFile, chunk);
        if (bytes && bytes->starts_with('\0')) {
            bytes = UnfoldedExif(*bytes);
        }
        if (!bytes) {
            return Damaged("The Exif chunk of the PNG file cannot be read.");
        }
        mStructure.mBlocks.push_back({Kind::kExif, chunk, false, {}, {}, {}});
        SetExif(mStructure.mBlocks.back(), std::move(*bytes));
    }
    void ReadText(const Chunk& chunk) {
        const std::string head =
            ReadUpTo(mFile, chunk.mData.mOffset, std::min<std::uint64_t>(chunk.mData.mSize, kMaxPngKeywordBytes));
        const std::string_view keyword = PngKeyword(head);
        if (chunk.Type() == "iTXt" && keyword == kPacketKeyword && !Has(Kind::kPacket)) {
            return ReadPacket(chunk);
        }
        const auto* const profile = std::find_if(kRawProfiles.begin(), kRawProfiles.end(),
                                                 [&](const RawProfile& row) { return row.mKeyword == keyword; });
        if (profile != kRawProfiles.end()) {
            ReadRawProfile(chunk, static_cast<std::size_t>(profile - kRawProfiles.begin()));
        }
    }
    void ReadPacket(const Chunk& chunk) {
        const auto data = ReadChunk(mFile, chunk);
        auto text = data ? PngText(chunk.Type(), *data) : std::nullopt;
        if (!text) {
            return Damaged("The XMP chunk of the PNG file cannot be read.");
        }
        mStructure.mBlocks.push_back({Kind::kPacket, chunk, false, std::move(*text), {}, {}});
    }
    /// One that cannot be read is a text like others.
    void ReadRawProfile(const Chunk& chunk, std::size_t row) {
        if (mSeen[row]++ >= kMaxRawProfiles) {
            return;
        }
        const auto data = ReadChunk(mFile, chunk);
        const auto text = data ? PngText(chunk.Type(), *data) : std::nullopt;
        auto bytes = text ? RawProfileBytes(*text) : std::nullopt;
        if (!bytes) {
            return;
        }
        Block block{Kind::kPacket, chunk, true, {}, {}, {}};
        kRawProfiles[row].mSet(block, std::move(*bytes));
        if (!block.mBytes.empty()) {
            mRawProfiles.push_back(std::move(block));
        }
    }

    const ByteSource& mFile;
    Structure& mStructure;
    std::vector<Block> mRawProfiles;
    std::array<std::size_t, kRawProfiles.size()> mSeen{};
};

Structure ReadStructure(const ByteSource& file) {
    Structure structure;
    const std::uint64_t size = file.Size();
    const std::uint64_t begin = std::min<std::uint64_t>(kSignature.size(), size);
    structure.mChunks = ReadChunks(file, {begin, size - begin}, kLayout, "IEND");
    if (structure.mChunks.Find("IHDR") == nullptr || structure.mChunks.Find("IEND") == nullptr) {
        structure.mDamage = "The PNG file is cut off or damaged.";
    }
    BlockReader reader(file, structure);
    for (const Chunk& chunk : structure.mChunks.mChunks) {
        reader.Read(chunk);
    }
    reader.Finish();
    return structure;
}

/// The new form of a block in the plan: in its chunk, or in a new one in front when it had none of its own. Raw profiles
/// that say what the block said before go, so that readers of either agree.
class BlockPlanner {
public:
    BlockPlanner(const Structure& structure, Plan& plan) : mStructure(structure), mPlan(plan) {}

    const Block* Find(Kind kind) const {
        const auto found = std::find_if(mStructure.mBlocks.begin(), mStructure.mBlocks.end(),
                                        [&](const Block& block) { return block.mKind == kind; });
        return found != mStructure.mBlocks.end() ? &*found : nullptr;
    }
    void Put(const Block* old, const std::string& chunk) {
        if (old != nullptr && !old->mIsRawProfile) {
            mPlan.Replace(old->mChunk.mWhole, chunk, Touch::kBlock);
        } else {
            mPlan.Insert(mStructure.mChunks.Find("IHDR")->mWhole.End(), chunk, Touch::kBlock);
        }
        for (const Block& block : mStructure.mBlocks) {
            if (old != nullptr && block.mIsRawProfile && block.mKind == old->mKind && block.mBytes == old->mBytes) {
                mPlan.Remove(block.mChunk.mWhole, Touch::kBlock);
            }
        }
    }

private:
    const Structure& mStructure;
    Plan& mPlan;
};

/// The data of the iTXt chunk for the packet, in the room of the old one where that is not far too large.
std::string PacketText(const ByteSource& file, const Block* old, std::string_view element) {
    if (old == nullptr || old->mIsRawProfile) {
        return InternationalText(kPacketKeyword, ShortPacket(element));
    }
    const std::string data = ReadChunk(file, old->mChunk).value_or(std::string());
    return InternationalTextLike(data, FittingPacket(element, old->mBytes.size()));
}

class Png : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        const Structure structure = ReadStructure(*file);
        FileBlocks blocks;
        for (const Block& block : structure.mBlocks) {
            if (block.mBytes.empty()) {
                continue;
            }
            if (block.mKind == Kind::kExif) {
                blocks.mExif.push_back({std::make_shared<MemorySource>(block.mBytes), TiffDirectory::kMain});
            } else if (block.mKind == Kind::kPacket && !blocks.mXMP) {
                blocks.mXMP = block.mBytes;
            } else if (block.mKind == Kind::kDatasets && !blocks.mIIM) {
                blocks.mIIM = block.mBytes;
                blocks.mIIMDigest = block.mDigest;
            }
        }
        if (!structure.mDamage.empty()) {
            blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
            blocks.mDetail = structure.mDamage;
        }
        return blocks;
    }

    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        const Structure structure = ReadStructure(*file);
        if (!structure.mDamage.empty()) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, structure.mDamage);
        }
        PlannedEdit edit;
        BlockPlanner planner(structure, edit.mPlan);
        if (!changes.mExif.empty()) {
            const Block* const old = planner.Find(Kind::kExif);
            const bool hasBlock = old != nullptr && !old->mBytes.empty();
            const auto stream = EditedExif(hasBlock ? std::optional(old->mBytes) : std::nullopt, changes.mExif);
            if (!stream) {
                return RefusedEdit(FileStatus::kFileStatus_DamagedFile, "The Exif chunk of the PNG file is damaged.");
            }
            const bool keepsSignature = old != nullptr && !old->mIsRawProfile;
            planner.Put(old, ChunkBytes(kLayout, "eXIf", (keepsSignature ? old->mSignature : "") + *stream));
        }
        if (changes.mXMP) {
            const Block* const old = planner.Find(Kind::kPacket);
            planner.Put(old, ChunkBytes(kLayout, "iTXt", PacketText(*file, old, *changes.mXMP)));
        }
        return edit;
    }

    std::size_t MaxPacketBytes() const override { return kMaxChunkBytes / 2; }
};

}  // namespace

bool IsPng(std::string_view head) {
    return head.starts_with(kSignature);
}

const Container& PngContainer() {
    static const Png container;
    return container;
}

}  // namespace zephmetadata::media
