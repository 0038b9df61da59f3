#include "undo/journal_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <system_error>

#include "undo/numbers.h"

namespace zephmeta {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kMagic = "zephmeta undo 1\n";
constexpr std::string_view kExtension = ".journal";
constexpr std::string_view kNewExtension = ".new";
/// Before each record: its state, its size and its checksum.
constexpr std::size_t kHeadBytes = 1 + 2 * kNumberBytes;

[[noreturn]] void Throw(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// Where programs keep what should last but is no document (XDG Base Directory Specification).
fs::path Folder() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && *state == '/') {
        return fs::path(state) / "zephmeta";
    }
    const char* const home = std::getenv("HOME");
    if (home == nullptr || *home != '/') {
        throw std::runtime_error("HOME names no folder");
    }
    return fs::path(home) / ".local/state/zephmeta";
}

/// FNV-1a of 64 bits: against what a loss of power leaves, not against forgery.
std::uint64_t ChecksumOf(std::string_view bytes) {
    std::uint64_t sum = 0xCBF29CE484222325U;
    for (const char c : bytes) {
        sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    }
    return sum;
}

bool WriteAt(int file, std::uint64_t offset, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count < 0 && errno != EINTR) {
            return false;
        }
        const auto done = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        bytes.remove_prefix(done);
        offset += done;
    }
    return true;
}

/// Fewer at the end of the file, and where it cannot be read.
std::string ReadAt(int file, std::uint64_t offset, std::size_t size) {
    std::string bytes(size, '\0');
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = pread(file, bytes.data() + done, size - done, static_cast<off_t>(offset + done));
        if (count == 0 || (count < 0 && errno != EINTR)) {
            break;
        }
        done += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    bytes.resize(done);
    return bytes;
}

std::uint64_t SizeOf(int file) {
    struct stat status {};
    return fstat(file, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

/// An own regular file, locked; -1 when it is none or when another process has it.
int OpenLocked(const fs::path& path) {
    const int file = open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    struct stat status {};
    struct stat named {};
    // Until it was locked it may have been removed or replaced.
    if (file >= 0 && fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
        flock(file, LOCK_EX | LOCK_NB) == 0 && lstat(path.c_str(), &named) == 0 && named.st_ino == status.st_ino) {
        return file;
    }
    if (file >= 0) {
        close(file);
    }
    return -1;
}

/// The journals of the folder, the newest first.
std::vector<fs::path> Journals(const fs::path& folder) {
    std::vector<fs::path> found;
    // A folder that cannot be read has none. The standard library's listing ends the process when memory is short.
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), &closedir);
    while (const dirent* const entry = entries ? readdir(entries.get()) : nullptr) {
        fs::path path = folder / static_cast<const char*>(entry->d_name);
        const fs::path extension = path.extension();
        if (extension == kExtension || extension == kNewExtension) {
            found.push_back(std::move(path));
        }
    }
    std::sort(found.begin(), found.end(), std::greater<>());
    return found;
}

void RemoveEarlier(const fs::path& folder) {
    for (const fs::path& path : Journals(folder)) {
        if (const int file = OpenLocked(path); file >= 0) {
            unlink(path.c_str());
            close(file);
        }
    }
}

/// Names in the order of the runs, and no two alike.
std::string NewName() {
    constexpr std::size_t kDigits = 20;
    const std::string time = std::to_string(std::chrono::system_clock::now().time_since_epoch().count());
    return std::string(kDigits - std::min(kDigits, time.size()), '0') + time + "-" + std::to_string(getpid());
}

/// What stands at an offset, as far as it is a whole record.
struct Frame {
    char mState = 0;
    std::uint64_t mSize = 0;
    std::optional<JournalRecord> mRecord;
};

Frame FrameAt(int file, std::uint64_t offset, std::uint64_t fileSize) {
    Frame frame;
    const std::string head = ReadAt(file, offset, kHeadBytes);
    if (head.size() < kHeadBytes) {
        return frame;
    }
    frame.mState = head.front();
    frame.mSize = NumberIn(std::string_view(head).substr(1));
    if (frame.mSize > fileSize - std::min(fileSize, offset + kHeadBytes)) {
        return frame;
    }
    const std::string bytes = ReadAt(file, offset + kHeadBytes, static_cast<std::size_t>(frame.mSize));
    if (bytes.size() == frame.mSize && ChecksumOf(bytes) == NumberIn(std::string_view(head).substr(1 + kNumberBytes))) {
        frame.mRecord = Unpacked(bytes);
    }
    return frame;
}

}  // namespace

std::unique_ptr<JournalFile> JournalFile::Create() {
    const fs::path folder = Folder();
    std::error_code error;
    fs::create_directories(folder.parent_path(), error);
    if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        Throw(folder.native());
    }
    RemoveEarlier(folder);
    auto journal = Begin((folder / NewName()).concat(kExtension));
    journal->TakeName();
    return journal;
}

/// It has its name when it is locked, so that nobody takes it for one of a run that is at its end.
std::unique_ptr<JournalFile> JournalFile::Begin(const fs::path& path) {
    const fs::path made = fs::path(path).concat(kNewExtension);
    const int file = open(made.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) {
        Throw(path.parent_path().native());
    }
    std::unique_ptr<JournalFile> journal(new JournalFile(path, file));
    if (flock(file, LOCK_EX) != 0 || !WriteAt(file, 0, kMagic)) {
        const int reason = errno;
        unlink(made.c_str());
        errno = reason;
        Throw(path.parent_path().native());
    }
    journal->mEnd = kMagic.size();
    return journal;
}

void JournalFile::TakeName() const {
    const fs::path made = fs::path(mPath).concat(kNewExtension);
    if (rename(made.c_str(), mPath.c_str()) != 0) {
        const int reason = errno;
        unlink(made.c_str());
        errno = reason;
        Throw(mPath.native());
    }
}

void JournalFile::DropSpent() {
    bool isWhole = true;
    const auto fresh = Begin(mPath);
    try {
        for (const Entry& entry : Entries(isWhole)) {
            const auto record = entry.mState == State::kSpent ? std::nullopt : Read(entry);
            if (record) {
                fresh->Append(entry.mState, *record);
            }
        }
    } catch (const std::system_error&) {
        unlink(fs::path(mPath).concat(kNewExtension).c_str());
        throw;
    }
    fresh->TakeName();
    std::swap(mFile, fresh->mFile);
    std::swap(mEnd, fresh->mEnd);
}

std::unique_ptr<JournalFile> JournalFile::OpenLast() {
    for (const fs::path& path : Journals(Folder())) {
        const int file = path.extension() == kExtension ? OpenLocked(path) : -1;
        if (file >= 0) {
            return std::unique_ptr<JournalFile>(new JournalFile(path, file));
        }
    }
    return nullptr;
}

JournalFile::~JournalFile() {
    fdatasync(mFile);
    close(mFile);
}

std::vector<JournalFile::Entry> JournalFile::Entries(bool& isWhole) {
    const std::uint64_t size = SizeOf(mFile);
    std::vector<Entry> entries;
    mEnd = kMagic.size();
    isWhole = ReadAt(mFile, 0, kMagic.size()) == kMagic;
    while (isWhole && mEnd < size) {
        Frame frame = FrameAt(mFile, mEnd, size);
        isWhole = frame.mRecord.has_value();
        if (isWhole) {
            entries.push_back({static_cast<State>(frame.mState), mEnd, std::move(frame.mRecord->mPath)});
            mEnd += kHeadBytes + frame.mSize;
        }
    }
    return entries;
}

std::optional<JournalRecord> JournalFile::Read(const Entry& entry) const {
    return FrameAt(mFile, entry.mOffset, SizeOf(mFile)).mRecord;
}

void JournalFile::Append(State state, const JournalRecord& record) {
    constexpr std::uint64_t kMostUnsynced = 64;  // to write one through costs as much as to write a small photo
    const std::string bytes = Packed(record);
    std::string frame(1, static_cast<char>(state));
    frame.append(NumberBytes(bytes.size())).append(NumberBytes(ChecksumOf(bytes))).append(bytes);
    if (!WriteAt(mFile, mEnd, frame)) {
        const int reason = errno;
        if (ftruncate(mFile, static_cast<off_t>(mEnd)) != 0) {
            mEnd = SizeOf(mFile);  // what follows is not found
        }
        throw std::system_error(reason, std::generic_category(), "its journal");
    }
    mEnd += frame.size();
    if (++mUnsynced >= kMostUnsynced) {
        fdatasync(mFile);
        mUnsynced = 0;
    }
}

void JournalFile::Mark(const Entry& entry, State state) const {
    const char byte = static_cast<char>(state);
    if (!WriteAt(mFile, entry.mOffset, {&byte, 1})) {
        Throw("its journal");
    }
}

}  // namespace zephmeta
