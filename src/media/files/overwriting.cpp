#include "media/files/overwriting.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "media/bytes.h"

// A journal is a header, the old bytes, and a checksum of each page of the new ones: by these a file that a killed
// process left half written is told from one that another program wrote since.

namespace zephmetadata::media {

namespace {

constexpr std::string_view kMagic = "zephmetadata journal 1\n\n";
constexpr std::size_t kNumberBytes = 8;
constexpr std::size_t kChecksumBytes = 4;
/// What systems write at once or not at all, as long as they live.
constexpr std::uint64_t kPageBytes = 4096;

struct Journal {
    std::uint64_t mInode = 0;
    FileTime mBorn;  ///< tells a file from a later one with the same number
    FileTime mModified;
    std::uint64_t mOldSize = 0;
    std::uint64_t mNewSize = 0;
    ChangedStretch mChanged;
};

constexpr std::size_t kNumbers = 10;
constexpr std::size_t kHeaderBytes = kMagic.size() + (kNumbers + 1) * kNumberBytes;

std::uint64_t ChecksumOf(std::string_view bytes) {
    return crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size()));
}

std::string HeaderOf(const Journal& journal) {
    const std::array<std::uint64_t, kNumbers> numbers = {journal.mInode,
                                                         static_cast<std::uint64_t>(journal.mBorn.mSeconds),
                                                         static_cast<std::uint64_t>(journal.mBorn.mNanoseconds),
                                                         static_cast<std::uint64_t>(journal.mModified.mSeconds),
                                                         static_cast<std::uint64_t>(journal.mModified.mNanoseconds),
                                                         journal.mOldSize,
                                                         journal.mNewSize,
                                                         journal.mChanged.mBegin,
                                                         journal.mChanged.mOldEnd,
                                                         journal.mChanged.mNewEnd};
    std::string header(kMagic);
    for (const std::uint64_t number : numbers) {
        header += NumberBytes(number, kNumberBytes);
    }
    return header + NumberBytes(ChecksumOf(header), kNumberBytes);
}

/// Checksums have pages of their own up to the ends of the old and the new bytes.
std::uint64_t PageEnd(const ChangedStretch& changed, std::uint64_t at) {
    std::uint64_t end = (at / kPageBytes + 1) * kPageBytes;
    for (const std::uint64_t edge : {changed.mOldEnd, changed.mNewEnd}) {
        end = at < edge ? std::min(end, edge) : end;
    }
    return end;
}

std::uint64_t ChecksumsSize(const ChangedStretch& changed) {
    std::uint64_t size = 0;
    for (std::uint64_t at = changed.mBegin; at < changed.mNewEnd; at = PageEnd(changed, at)) {
        size += kChecksumBytes;
    }
    return size;
}

bool IsStretchWithin(const ChangedStretch& changed, std::uint64_t oldSize, std::uint64_t newSize) {
    const bool isToTheEnds = changed.mOldEnd == oldSize && changed.mNewEnd == newSize;
    const bool isInside = oldSize == newSize && changed.mOldEnd == changed.mNewEnd && changed.mOldEnd <= oldSize;
    return (isToTheEnds || isInside) && changed.mBegin <= std::min(changed.mOldEnd, changed.mNewEnd);
}

/// The header of an open journal; absent when it is none, or not whole.
std::optional<Journal> ReadJournal(int file) {
    std::string header(kHeaderBytes, '\0');
    if (!ReadFileAt(file, 0, header.data(), header.size()) || !header.starts_with(kMagic)) {
        return std::nullopt;
    }
    std::array<std::uint64_t, kNumbers + 1> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        numbers[i] = Get64(header, kMagic.size() + i * kNumberBytes);
    }
    Journal journal;
    journal.mInode = numbers[0];
    journal.mBorn = {static_cast<std::int64_t>(numbers[1]), static_cast<std::int64_t>(numbers[2])};
    journal.mModified = {static_cast<std::int64_t>(numbers[3]), static_cast<std::int64_t>(numbers[4])};
    journal.mOldSize = numbers[5];
    journal.mNewSize = numbers[6];
    journal.mChanged = {numbers[7], numbers[8], numbers[9]};
    const std::string_view summed = std::string_view(header).substr(0, kHeaderBytes - kNumberBytes);
    const std::uint64_t size = StampOf(file).mSize;
    if (numbers[kNumbers] != ChecksumOf(summed) || journal.mNewSize / kPageBytes > size ||
        !IsStretchWithin(journal.mChanged, journal.mOldSize, journal.mNewSize)) {
        return std::nullopt;
    }
    const std::uint64_t oldBytes = journal.mChanged.mOldEnd - journal.mChanged.mBegin;
    return size == kHeaderBytes + oldBytes + ChecksumsSize(journal.mChanged) ? std::optional(journal) : std::nullopt;
}

/// When the file was made; a default one where the system does not know.
FileTime BirthOf(int file) {
    struct statx status {};
    const bool isKnown = statx(file, "", AT_EMPTY_PATH, STATX_BTIME, &status) == 0 && (status.stx_mask & STATX_BTIME);
    return isKnown ? FileTime{status.stx_btime.tv_sec, status.stx_btime.tv_nsec} : FileTime();
}

/// Checksums of the pages of the new bytes; absent when they cannot be read.
std::optional<std::string> ChecksumsOf(int fresh, const ChangedStretch& changed) {
    std::string checksums;
    std::array<char, kPageBytes> page{};
    for (std::uint64_t at = changed.mBegin; at < changed.mNewEnd;) {
        const std::uint64_t end = PageEnd(changed, at);
        const auto size = static_cast<std::size_t>(end - at);
        if (!ReadFileAt(fresh, at, page.data(), size)) {
            return std::nullopt;
        }
        checksums += NumberBytes(ChecksumOf({page.data(), size}), kChecksumBytes);
        at = end;
    }
    return checksums;
}

/// Whether a file holds what a killed process left: every page the old one, the new one, or reserved and never written.
class HalfWritten {
public:
    HalfWritten(const Journal& journal, int journalFile, int file)
        : mJournal(journal), mJournalFile(journalFile), mFile(file), mSize(StampOf(file).mSize) {}

    bool IsSo() {
        const auto [least, most] = std::minmax(mJournal.mOldSize, mJournal.mNewSize);
        const ChangedStretch& changed = mJournal.mChanged;
        const std::uint64_t oldBytes = changed.mOldEnd - changed.mBegin;
        std::uint64_t checksumAt = kHeaderBytes + oldBytes;
        if (mSize < least || mSize > most) {
            return false;
        }
        const std::uint64_t last = std::min(mSize, std::max(changed.mOldEnd, changed.mNewEnd));
        for (std::uint64_t at = changed.mBegin; at < last; at = PageEnd(changed, at)) {
            if (!IsKnownPage(at, PageEnd(changed, at), checksumAt)) {
                return false;
            }
            checksumAt += kChecksumBytes;
        }
        return true;
    }

private:
    bool IsKnownPage(std::uint64_t at, std::uint64_t end, std::uint64_t checksumAt) {
        const auto size = static_cast<std::size_t>(std::min(end, mSize) - at);
        if (!ReadFileAt(mFile, at, mPage.data(), size)) {
            return false;
        }
        const std::string_view page(mPage.data(), size);
        const ChangedStretch& changed = mJournal.mChanged;
        if (at < changed.mOldEnd) {
            const std::uint64_t oldAt = kHeaderBytes + at - changed.mBegin;
            if (ReadFileAt(mJournalFile, oldAt, mOld.data(), size) && page == std::string_view(mOld.data(), size)) {
                return true;
            }
        } else if (page.find_first_not_of('\0') == std::string_view::npos) {
            return true;
        }
        std::string checksum(kChecksumBytes, '\0');
        return at < changed.mNewEnd && end <= mSize &&
               ReadFileAt(mJournalFile, checksumAt, checksum.data(), checksum.size()) &&
               Get32(checksum, 0) == ChecksumOf(page);
    }

    const Journal& mJournal;
    int mJournalFile;
    int mFile;
    std::uint64_t mSize;
    std::array<char, kPageBytes> mPage{};
    std::array<char, kPageBytes> mOld{};
};

/// Puts the old bytes and the old size back, and the old time where we may.
bool Restore(const Journal& journal, int journalFile, int file) {
    const ChangedStretch& changed = journal.mChanged;
    const std::array<timespec, 2> times = {
        timespec{0, UTIME_OMIT},
        timespec{journal.mModified.mSeconds, static_cast<long>(journal.mModified.mNanoseconds)}};
    if (!CopyByBlocks(journalFile, kHeaderBytes, file, changed.mBegin, changed.mOldEnd - changed.mBegin) ||
        ftruncate(file, static_cast<off_t>(journal.mOldSize)) != 0) {
        return false;
    }
    futimens(file, times.data());
    return SyncFile(file);
}

/// Absent when the system does not tell of the files.
std::optional<Journal> JournalFor(int old, int fresh, const ChangedStretch& changed) {
    const FileStamp before = StampOf(old);
    const FileStamp after = StampOf(fresh);
    if (!before.IsKnown() || !after.IsKnown()) {
        return std::nullopt;
    }
    return Journal{before.mInode, BirthOf(old), before.mModified, before.mSize, after.mSize, changed};
}

/// Writes a journal that lasts before anything else is written.
WriteOutcome SaveJournal(const FilePlace& place, NewFile& file, const Journal& journal, int old, int fresh) {
    const std::uint64_t oldBytes = journal.mChanged.mOldEnd - journal.mChanged.mBegin;
    const auto checksums = ChecksumsOf(fresh, journal.mChanged);
    struct stat status {};
    if (!file.IsOpen() || !checksums || fstat(old, &status) != 0) {
        return SystemFailure();
    }
    // So that the file's owner can finish what an administrator's process left. Others may not do that.
    if (status.st_uid != geteuid() && fchown(file.Number(), status.st_uid, static_cast<gid_t>(-1)) != 0) {
        errno = 0;
    }
    const std::string name = FilePlace::JournalName(journal.mInode);
    if (!WriteFileAt(file.Number(), 0, HeaderOf(journal)) ||
        !CopyRange(old, journal.mChanged.mBegin, file.Number(), kHeaderBytes, oldBytes) ||
        !WriteFileAt(file.Number(), kHeaderBytes + oldBytes, *checksums) || !SyncFile(file.Number())) {
        return SystemFailure();
    }
    if (!file.TakeName(name)) {
        return errno == EEXIST ? Failure(FileStatus::kFileStatus_NotWritten,
                                         place.PathOf(name) + " is left of an interrupted write")
                               : SystemFailure();
    }
    place.Sync();
    return Success();
}

/// Running out of space half way is the likeliest way to fail.
bool Reserve(int file, std::uint64_t oldSize, std::uint64_t newSize) {
    if (newSize <= oldSize) {
        return true;
    }
    const auto offset = static_cast<off_t>(oldSize);
    const auto size = static_cast<off_t>(newSize - oldSize);
    const auto reserve = [&] { return fallocate(file, FALLOC_FL_KEEP_SIZE, offset, size); };
    return Uninterrupted(reserve) == 0 || errno == EOPNOTSUPP || errno == ENOSYS;
}

bool WriteOver(const Journal& journal, int fresh, int file) {
    const ChangedStretch& changed = journal.mChanged;
    return Reserve(file, journal.mOldSize, journal.mNewSize) &&
           CopyByBlocks(fresh, changed.mBegin, file, changed.mBegin, changed.mNewEnd - changed.mBegin) &&
           ftruncate(file, static_cast<off_t>(journal.mNewSize)) == 0 && SyncFile(file);
}

/// Takes a journal out of use: one that stayed would have the next opening put the old bytes back.
bool Retire(const FilePlace& place, const std::string& name, int journalFile) {
    return place.Remove(name) || ftruncate(journalFile, 0) == 0;
}

}  // namespace

WriteOutcome Overwrite(const FilePlace& place, int old, int fresh, const ChangedStretch& changed,
                       const SystemMeans& means) {
    const OpenFile file = place.Open(place.Name(), O_RDWR);
    if (!file) {
        return SystemFailure();
    }
    if (!StampOf(file.Number()).IsSameFile(StampOf(old))) {
        return Failure(FileStatus::kFileStatus_Changed);
    }
    const std::optional<Journal> journal = JournalFor(old, fresh, changed);
    if (!journal) {
        return SystemFailure();
    }
    NewFile journalFile(place, FilePlace::NewJournalName(journal->mInode), S_IRUSR | S_IWUSR, means);
    if (WriteOutcome outcome = SaveJournal(place, journalFile, *journal, old, fresh); !outcome.IsSuccess()) {
        return outcome;
    }
    const std::string name = FilePlace::JournalName(journal->mInode);
    WriteOutcome outcome = WriteOver(*journal, fresh, file.Number()) && Retire(place, name, journalFile.Number())
                               ? Success()
                               : SystemFailure();
    if (!outcome.IsSuccess()) {
        if (!Restore(*journal, journalFile.Number(), file.Number())) {
            outcome.mDetail += "; the old bytes are safe in " + place.PathOf(name);
            return outcome;
        }
        place.Remove(name);
    }
    place.Sync();
    outcome.mStamp = StampOf(file.Number());
    return outcome;
}

void FinishOverwriting(const FilePlace& place, int file) {
    struct stat status {};
    struct stat journalStatus {};
    if (fstat(file, &status) != 0) {
        return;
    }
    const std::string name = FilePlace::JournalName(status.st_ino);
    const OpenFile journalFile = place.Open(name, O_RDONLY);
    if (!journalFile || fstat(journalFile.Number(), &journalStatus) != 0 || !S_ISREG(journalStatus.st_mode) ||
        (journalStatus.st_uid != geteuid() && journalStatus.st_uid != status.st_uid)) {
        return;  // nothing to do, or laid there by a stranger
    }
    const auto journal = ReadJournal(journalFile.Number());
    const OpenFile target = place.Open(place.Name(), O_RDWR);
    if (!target || !StampOf(target.Number()).IsSameFile(StampOf(status))) {
        return;
    }
    // One that is not whole was never needed: it gets its name when it is. One of a file that is gone never will be.
    const bool isOfThisFile = journal && journal->mInode == status.st_ino && journal->mBorn == BirthOf(file);
    if (isOfThisFile && !(HalfWritten(*journal, journalFile.Number(), file).IsSo() &&
                          Restore(*journal, journalFile.Number(), target.Number()))) {
        return;
    }
    place.Remove(name);
    place.Sync();
}

}  // namespace zephmetadata::media
