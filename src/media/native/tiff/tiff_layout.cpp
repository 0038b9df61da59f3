#include "media/native/tiff/tiff_layout.h"

#include <algorithm>
#include <limits>

namespace zephmetadata::media {

namespace {

struct Signature {
    std::string_view mBytes;
    ByteOrder mOrder;
    bool mIsBig;
    bool mIsRaw;
};
using namespace std::string_view_literals;
constexpr auto kSignatures = std::to_array<Signature>({
    {"II\x2A\0"sv, ByteOrder::kLittle, false, false},
    {"MM\0\x2A"sv, ByteOrder::kBig, false, false},
    {"II\x2B\0\x08\0\0\0"sv, ByteOrder::kLittle, true, false},
    {"MM\0\x2B\0\x08\0\0"sv, ByteOrder::kBig, true, false},
    {"IIRO"sv, ByteOrder::kLittle, false, true},
    {"IIRS"sv, ByteOrder::kLittle, false, true},
    {"MMOR"sv, ByteOrder::kBig, false, true},
    {"IIU\0"sv, ByteOrder::kLittle, false, true},
});

/// Of one directory; real files have a dozen.
constexpr std::uint64_t kMaxSubDirectories = 1000;

std::uint64_t Product(std::uint64_t count, std::size_t size) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
    return size != 0 && count > kMost / size ? kMost : count * size;
}

TiffEntry EntryIn(std::string_view bytes, const TiffHeader& header, std::uint64_t offset) {
    TiffEntry entry;
    entry.mTag = Get16(bytes, 0, header.mOrder);
    entry.mType = Get16(bytes, 2, header.mOrder);
    entry.mCount = GetNumber(bytes, 4, header.OffsetBytes(), header.mOrder);
    entry.mField = bytes.substr(header.FieldPlace(), header.OffsetBytes());
    entry.mPlace.mSize = Product(entry.mCount, TiffTypeBytes(static_cast<TiffType>(entry.mType)));
    entry.mIsInline = entry.mPlace.mSize <= header.OffsetBytes();
    entry.mPlace.mOffset = entry.mIsInline ? offset + header.FieldPlace()
                                           : GetNumber(entry.mField, 0, header.OffsetBytes(), header.mOrder);
    return entry;
}

/// What an entry points to, when it is a pointer.
std::optional<std::uint64_t> PointerIn(const ByteSource& stream, const TiffHeader& header, const TiffEntry& entry) {
    const std::vector<std::uint64_t> numbers = TiffIntegers(stream, header, entry, 1);
    return numbers.empty() ? std::nullopt : std::optional(numbers.front());
}

bool AllValuesLieWithin(const TiffTable& table, std::uint64_t size) {
    return std::all_of(table.mEntries.begin(), table.mEntries.end(),
                       [&](const TiffEntry& entry) { return entry.mIsInline || IsWithin(entry.mPlace, size); });
}

/// Whether a directory that something points to is one: some cameras leave rubbish in the pointer to the next one.
bool IsPlausible(const TiffTable& table, std::uint64_t size) {
    const auto good = std::count_if(table.mEntries.begin(), table.mEntries.end(), [&](const TiffEntry& entry) {
        return entry.mPlace.mSize > 0 && (entry.mIsInline || IsWithin(entry.mPlace, size));
    });
    return table.mIsWhole && good > 0 && static_cast<std::size_t>(good) * 2 >= table.mEntries.size();
}

/// One walk through all directories.
class Walk {
public:
    Walk(const ByteSource& stream, const TiffHeader& header, std::size_t most)
        : mStream(stream), mHeader(header), mMost(most) {
        mEntriesLeft = stream.Size() / header.EntryBytes();
        Await(header.mFirst, TiffDirectory::kMain);
    }
    bool Run(const TiffVisitor& visit);

private:
    struct Awaited {
        std::uint64_t mOffset;
        std::optional<TiffDirectory> mKind;
    };
    void Await(std::uint64_t offset, std::optional<TiffDirectory> kind);
    void AwaitTargets(const TiffTable& table, std::optional<TiffDirectory> kind);

    const ByteSource& mStream;
    const TiffHeader& mHeader;
    std::size_t mMost;
    bool mHasMore = false;
    std::uint64_t mEntriesLeft = 0;
    std::vector<Awaited> mQueue;
    std::vector<std::uint64_t> mSeen;  // sorted
};

void Walk::Await(std::uint64_t offset, std::optional<TiffDirectory> kind) {
    const auto place = std::lower_bound(mSeen.begin(), mSeen.end(), offset);
    const bool isKnown = place != mSeen.end() && *place == offset;
    if (offset == 0 || offset >= mStream.Size() || isKnown) {
        return;
    }
    if (mQueue.size() >= mMost) {
        mHasMore = true;
        return;
    }
    mSeen.insert(place, offset);
    mQueue.push_back({offset, kind});
}

void Walk::AwaitTargets(const TiffTable& table, std::optional<TiffDirectory> kind) {
    constexpr auto kPointers =
        std::to_array<std::uint16_t>({kTagExifDirectory, kTagGPSDirectory, kTagSubDirectories, kTagInteropDirectory});
    for (const std::uint16_t tag : kPointers) {
        const TiffEntry* const entry = table.Find(tag);
        if (entry == nullptr) {
            continue;
        }
        std::optional<TiffDirectory> target;
        if (kind == TiffDirectory::kMain && tag == kTagExifDirectory) {
            target = TiffDirectory::kExif;
        } else if (kind == TiffDirectory::kMain && tag == kTagGPSDirectory) {
            target = TiffDirectory::kGPS;
        }
        const std::uint64_t most = tag == kTagSubDirectories ? kMaxSubDirectories : 1;
        for (const std::uint64_t offset : TiffIntegers(mStream, mHeader, *entry, most)) {
            Await(offset, target);
        }
    }
    // What follows an Exif or GPS directory is no directory, whatever the pointer says.
    const bool isChained = kind != TiffDirectory::kExif && kind != TiffDirectory::kGPS;
    if (isChained && !table.mNext.empty()) {
        Await(GetNumber(table.mNext, 0, table.mNext.size(), mHeader.mOrder), std::nullopt);
    }
}

bool Walk::Run(const TiffVisitor& visit) {
    std::size_t at = 0;
    while (at < mQueue.size()) {  // which grows
        const Awaited next = mQueue[at++];
        const std::optional<TiffTable> table = ReadTiffTable(mStream, mHeader, next.mOffset);
        if (!table || (!next.mKind && !IsPlausible(*table, mStream.Size()))) {
            continue;
        }
        if (table->mEntries.size() > mEntriesLeft) {
            return false;
        }
        mEntriesLeft -= table->mEntries.size();
        AwaitTargets(*table, next.mKind);
        visit(*table, next.mKind);
    }
    return !mHasMore;
}

}  // namespace

std::optional<TiffHeader> ReadTiffHeader(const ByteSource& stream) {
    const std::string head = ReadUpTo(stream, 0, 16);
    for (const Signature& signature : kSignatures) {
        TiffHeader header{signature.mOrder, signature.mIsBig, signature.mIsRaw, 0};
        if (head.size() >= header.Bytes() && head.compare(0, signature.mBytes.size(), signature.mBytes) == 0) {
            header.mFirst =
                GetNumber(head, static_cast<std::size_t>(header.PointerPlace()), header.OffsetBytes(), header.mOrder);
            return header;
        }
    }
    return std::nullopt;
}

const TiffEntry* TiffTable::Find(std::uint16_t tag) const {
    const auto found =
        std::find_if(mEntries.begin(), mEntries.end(), [&](const TiffEntry& entry) { return entry.mTag == tag; });
    return found == mEntries.end() ? nullptr : &*found;
}

std::optional<TiffTable> ReadTiffTable(const ByteSource& stream, const TiffHeader& header, std::uint64_t offset) {
    const auto count = ReadRange(stream, {offset, header.CountBytes()});
    if (!count) {
        return std::nullopt;
    }
    const std::uint64_t claimed = GetNumber(*count, 0, count->size(), header.mOrder);
    const auto most = static_cast<std::size_t>(std::min<std::uint64_t>(claimed, kMaxDirectoryEntries));
    const std::uint64_t start = offset + count->size();
    const std::string bytes = ReadUpTo(stream, start, most * header.EntryBytes() + header.OffsetBytes());

    TiffTable table;
    table.mEntries.reserve(std::min(most, bytes.size() / header.EntryBytes()));
    std::size_t at = 0;
    for (; table.mEntries.size() < most && bytes.size() - at >= header.EntryBytes(); at += header.EntryBytes()) {
        table.mEntries.push_back(EntryIn(std::string_view(bytes).substr(at, header.EntryBytes()), header, start + at));
    }
    table.mIsWhole = table.mEntries.size() == claimed;
    if (table.mIsWhole && bytes.size() - at >= header.OffsetBytes()) {
        table.mNext = bytes.substr(at, header.OffsetBytes());
    }
    table.mRange = {offset, count->size() + at + table.mNext.size()};
    return table;
}

TiffTables ReadTiffTables(const ByteSource& stream, const TiffHeader& header, TiffDirectory first) {
    TiffTables found;
    std::vector<std::uint64_t> seen;
    const auto read = [&](TiffDirectory directory, std::uint64_t offset) {
        const bool isNew = std::find(seen.begin(), seen.end(), offset) == seen.end();
        auto table = isNew ? ReadTiffTable(stream, header, offset) : std::nullopt;
        found.mIsWhole =
            found.mIsWhole && table.has_value() && table->mIsWhole && AllValuesLieWithin(*table, stream.Size());
        seen.push_back(offset);
        found.mTables[static_cast<std::size_t>(directory)] = std::move(table);
    };
    read(first, header.mFirst);
    const std::optional<TiffTable>& main = found.mTables[static_cast<std::size_t>(TiffDirectory::kMain)];
    if (!main) {
        return found;
    }
    constexpr auto kPointers = std::to_array<std::pair<std::uint16_t, TiffDirectory>>(
        {{kTagExifDirectory, TiffDirectory::kExif}, {kTagGPSDirectory, TiffDirectory::kGPS}});
    for (const auto& [tag, directory] : kPointers) {
        if (const TiffEntry* const entry = main->Find(tag); entry != nullptr) {
            const std::optional<std::uint64_t> offset = PointerIn(stream, header, *entry);
            found.mIsWhole = found.mIsWhole && offset.has_value();
            if (offset.value_or(0) != 0) {  // some writers leave an empty pointer
                read(directory, *offset);
            }
        }
    }
    return found;
}

bool WalkTiff(const ByteSource& stream, const TiffHeader& header, const TiffVisitor& visit, std::size_t most) {
    return Walk(stream, header, most).Run(visit);
}

}  // namespace zephmetadata::media
