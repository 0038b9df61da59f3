// Media files of strangers: their blocks are read whatever the file is, and an edit changes what it was asked to alone.
#include <algorithm>
#include <array>

#include "media/files/plan_check.h"
#include "media/formats.h"
#include "media/native/exif/exif_values.h"
#include "media/native/iim/iim_values.h"
#include "support.h"

using namespace zephmetadata;
using namespace zephmetadata::media;

namespace {

constexpr std::string_view kArtist("Ines Calder\0", 12);
constexpr std::uint16_t kArtistTag = 0x013B;
/// What one edit changes besides the packet, by the bits of the file's last byte.
enum Choice : unsigned { kChoice_Exif = 1, kChoice_IIM = 2, kChoice_LongPacket = 4 };
constexpr unsigned kChoiceBits = 3;
/// As many edits as show whether a file grows with each.
constexpr int kRepeats = 3;

std::string Element(unsigned choice) {
    const std::string title((choice & kChoice_LongPacket) != 0 ? 3000 : 8, 't');
    return R"(<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">)"
           R"(<rdf:Description rdf:about="" xmlns:dc="http://purl.org/dc/elements/1.1/" dc:format=")" +
           title + R"("/></rdf:RDF></x:xmpmeta>)";
}

void ReadValues(const FileBlocks& blocks) {
    for (const ExifStream& stream : blocks.mExif) {
        ExifValues(ReadTiff(*stream.mSource, stream.mFirst));
    }
    IIMValues(ReadIIM(blocks.mIIM.value_or(std::string())));
}

bool HasArtist(const FileBlocks& blocks) {
    return std::any_of(blocks.mExif.begin(), blocks.mExif.end(), [](const ExifStream& stream) {
        const TiffFields fields = ReadTiff(*stream.mSource, stream.mFirst);
        const TiffField* const artist = fields.Find(TiffDirectory::kMain, kArtistTag);
        return artist != nullptr && artist->mBytes == kArtist;
    });
}

/// What the Exif blocks say apart from the fields that every edit of a file that is one stream changes: the packet
/// (700), IPTC (33723) and image resources (34377).
std::vector<std::string> ExifContent(const FileBlocks& blocks) {
    constexpr auto kOwnBlocks = std::to_array<std::uint16_t>({700, 33723, 34377});
    std::vector<std::string> content;
    for (const ExifStream& stream : blocks.mExif) {
        for (const TiffField& field : ReadTiff(*stream.mSource, stream.mFirst).mFields) {
            const bool isPointer = field.mTag == 0x8769 || field.mTag == 0x8825;
            if (!isPointer && std::find(kOwnBlocks.begin(), kOwnBlocks.end(), field.mTag) == kOwnBlocks.end()) {
                content.push_back(NumberBytes(field.mTag, 2) + field.mBytes);
            }
        }
    }
    return content;
}

BlockChanges ChangesOf(const FormatRow& format, unsigned choice) {
    BlockChanges changes;
    changes.mXMP = Element(choice);
    if ((format.mWrites & kMetadata_Exif) != 0 && (choice & kChoice_Exif) != 0) {
        changes.mExif = {{TiffDirectory::kMain, kArtistTag, TiffType::kAscii, std::string(kArtist)}};
    }
    if ((format.mWrites & kMetadata_IIM) != 0 && (choice & kChoice_IIM) != 0) {
        changes.mIIM = IIMDatasetBytes(kRecordApplication, 90, "Marlhaven");
    }
    return changes;
}

void RequireAsked(const FileBlocks& before, const FileBlocks& after, const BlockChanges& changes) {
    fuzz::Require(after.mStatus == kFileStatus_Success && after.mIsWhole,
                  "a written file reads back: " + after.mDetail);
    fuzz::Require(after.mXMP && after.mXMP->find(*changes.mXMP) != std::string::npos, "the new packet is read");
    fuzz::Require(after.mExtendedXMP.empty(), "the old packet's further parts are gone");
    fuzz::Require(changes.mExif.empty() || HasArtist(after), "the new Exif field is read");
    fuzz::Require(!changes.mExif.empty() || ExifContent(after) == ExifContent(before),
                  "Exif that was not asked for stays");
    fuzz::Require(after.mIIM == (changes.mIIM ? changes.mIIM : before.mIIM), "the IIM datasets are the wanted ones");
    fuzz::Require(changes.mIIM || after.mIIMDigest == before.mIIMDigest, "the digest of IIM that stays is kept");
}

using Source = std::shared_ptr<const MemorySource>;

/// The file after one edit; null when the edit is refused.
Source EditedFile(const FormatRow& format, const Source& file, const FileBlocks& blocks, const BlockChanges& changes) {
    const Container& container = format.mContainer();
    const PlannedEdit edit = container.PlanEdit(file, changes);
    if (edit.mStatus != kFileStatus_Success) {
        return nullptr;
    }
    std::optional<std::string> bytes = Carried(edit.mPlan, *file);
    fuzz::Require(bytes.has_value(), "a plan is sound");
    const auto made = std::make_shared<const MemorySource>(*std::move(bytes));
    fuzz::Require(PlanDifference(edit.mPlan, *file, *made).empty(), "a plan is carried out as it says");
    fuzz::Require(ReferenceDifference(edit.mPlan, container.References(*file), container.References(*made)).empty(),
                  "what the file refers to lies where it refers to");
    fuzz::Require(FormatOf(*made) == &format, "a format stays what it is");
    RequireAsked(blocks, container.Read(made), changes);
    return made;
}

void EditFile(const FormatRow& format, Source file, unsigned choice) {
    const BlockChanges changes = ChangesOf(format, choice);
    std::uint64_t size = 0;
    for (int i = 0; i < kRepeats; ++i) {
        const FileBlocks blocks = format.mContainer().Read(file);
        if (blocks.mStatus != kFileStatus_Success || !blocks.mWhyReadOnly.empty() || !blocks.mIsWhole) {
            return;
        }
        file = EditedFile(format, file, blocks, changes);
        if (!file) {
            fuzz::Require(i == 0, "a file that was written can be written again");
            return;
        }
        // A PDF keeps its history: each edit is one more section at its end.
        fuzz::Require(i == 0 || format.mName == "PDF" || file->Size() <= size,
                      "the same edit again needs no more room");
        size = file->Size();
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto file = std::make_shared<const MemorySource>(std::string(fuzz::Text(data, size)));
    const unsigned last = size == 0 ? 0 : data[size - 1];
    // Hosts may come with any file: each format is tried on what is of another one, too.
    const FormatRow& other = FormatRows()[last % FormatRows().size()];
    ReadValues(other.mContainer().Read(file));
    other.mContainer().References(*file);

    const FormatRow* const format = FormatOf(*file);
    if (format == nullptr) {
        return 0;
    }
    ReadValues(format->mContainer().Read(file));
    if ((format->mWrites & kMetadata_XMP) != 0) {
        EditFile(*format, file, last % (1U << kChoiceBits));
    }
    return 0;
}
