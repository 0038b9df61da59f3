#include "media/containers/tiff/raw.h"

#include <algorithm>
#include <array>

#include "media/containers/tiff/raw_blocks.h"
#include "media/containers/tiff/tiff_blocks.h"
#include "media/native/tiff/tiff_layout.h"

namespace zephmetadata::media {

namespace {

using namespace std::string_view_literals;

/// Pictures, raw data and previews of one photo; a file with more pages than that is no raw file.
constexpr std::size_t kMaxRawDirectories = 16;

struct Signature {
    std::size_t mOffset;
    std::string_view mBytes;
    void (*mRead)(const std::shared_ptr<const ByteSource>&, FileBlocks&);
};
constexpr auto kSignatures = std::to_array<Signature>({
    {0, "FUJIFILMCCD-RAW"sv, &ReadRAF},
    {0, "\0MRM"sv, &ReadMRW},
    {0, "FOVb"sv, &ReadX3F},
    {0, "IIU\0"sv, &ReadRW2},
    {0, "IIRO"sv, &ReadTiffRaw},
    {0, "IIRS"sv, &ReadTiffRaw},
    {0, "MMOR"sv, &ReadTiffRaw},
    {8, "CR\x02"sv, &ReadTiffRaw},  // CR2
    {8, "IIIITwaR"sv, &ReadTiffRaw},
    {8, "MMMMRawT"sv, &ReadTiffRaw},  // IIQ
});

const Signature* SignatureOf(std::string_view head) {
    const auto* const found = std::find_if(std::begin(kSignatures), std::end(kSignatures), [&](const Signature& row) {
        return head.size() > row.mOffset && head.substr(row.mOffset).starts_with(row.mBytes);
    });
    return found == std::end(kSignatures) ? nullptr : found;
}

/// An entry that only raw files have.
bool IsOfRaw(const ByteSource& file, const TiffHeader& header, const TiffEntry& entry) {
    constexpr std::uint16_t kCompression = 259;
    constexpr std::uint16_t kPhotometricInterpretation = 262;
    constexpr std::uint16_t kLeafData = 34310;
    constexpr std::uint16_t kKodakDirectory = 65024;
    // ARW, ERF, SRW (two kinds), NEF, KDC and DCR, PEF.
    constexpr auto kCompressions = std::to_array<std::uint64_t>({32767, 32769, 32770, 32772, 34713, 65000, 65535});
    constexpr auto kInterpretations = std::to_array<std::uint64_t>({32803, 34892});  // colour filter array, linear raw
    const auto isAmong = [&](const auto& values) {
        const std::vector<std::uint64_t> numbers = TiffIntegers(file, header, entry, 1);
        return !numbers.empty() && std::find(std::begin(values), std::end(values), numbers[0]) != std::end(values);
    };
    switch (entry.mTag) {
        case kCompression:
            return isAmong(kCompressions);
        case kPhotometricInterpretation:
            return isAmong(kInterpretations);
        case kTagDNGPrivateData:  // a pointer to Sony's own directory (SR2, ARW)
            return entry.mIsInline;
        case kLeafData:
        case kKodakDirectory:
            return true;
        default:
            return false;
    }
}

class Raw : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        FileBlocks blocks;
        const Signature* const signature = SignatureOf(ReadUpTo(*file, 0, 64));
        signature == nullptr ? ReadTiffRaw(file, blocks) : signature->mRead(file, blocks);
        return blocks;
    }
};

}  // namespace

bool IsRaw(std::string_view head) {
    return SignatureOf(head) != nullptr;
}

bool IsRawTiff(const ByteSource& file) {
    constexpr std::uint16_t kDNGVersion = 50706;
    const PagedSource pages(file);
    const std::optional<TiffHeader> header = ReadTiffHeader(pages);
    if (!header) {
        return false;
    }
    bool isRaw = header->mIsRaw || IsRaw(ReadUpTo(pages, 0, 64));
    bool isDNG = false;
    const auto visit = [&](const TiffTable& table, std::optional<TiffDirectory>) {
        isDNG = isDNG || table.Find(kDNGVersion) != nullptr;
        isRaw = isRaw || std::any_of(table.mEntries.begin(), table.mEntries.end(),
                                     [&](const TiffEntry& entry) { return IsOfRaw(pages, *header, entry); });
    };
    WalkTiff(pages, *header, visit, kMaxRawDirectories);
    return isRaw && !isDNG;
}

const Container& RawContainer() {
    static const Raw container;
    return container;
}

}  // namespace zephmetadata::media
