#include "undo/journal_record.h"

#include <cstdint>

#include "undo/numbers.h"
#include "zephcore/files.h"

namespace zephmeta {

namespace {

using zephmetadata::ByteChange;
using zephmetadata::FileChange;

/// Texts have their sizes before them, lists their counts.
class Writer {
public:
    void Put(std::uint64_t number) { mBytes += NumberBytes(number); }
    void Put(std::int64_t number) { Put(static_cast<std::uint64_t>(number)); }
    void Put(std::string_view text) {
        Put(std::uint64_t{text.size()});
        mBytes += text;
    }
    std::string Bytes() && { return std::move(mBytes); }

private:
    std::string mBytes;
};

/// Past the end all numbers are 0 and all texts empty.
class Reader {
public:
    explicit Reader(std::string_view bytes) : mBytes(bytes) {}

    std::uint64_t Number() {
        const std::string_view bytes = Take(kNumberBytes);
        return bytes.empty() ? 0 : NumberIn(bytes);
    }
    std::int64_t Signed() { return static_cast<std::int64_t>(Number()); }
    std::string Text() { return std::string(Take(Number())); }
    bool IsAtEnd() const { return mIsWhole && mBytes.empty(); }
    bool IsWhole() const { return mIsWhole; }

private:
    std::string_view Take(std::uint64_t size) {
        mIsWhole = mIsWhole && size <= mBytes.size();
        const std::string_view taken = mIsWhole ? mBytes.substr(0, static_cast<std::size_t>(size)) : std::string_view();
        mBytes.remove_prefix(taken.size());
        return taken;
    }

    std::string_view mBytes;
    bool mIsWhole = true;
};

}  // namespace

std::string Packed(const JournalRecord& record) {
    Writer writer;
    const FileChange& undo = record.mUndo;
    writer.Put(record.mPath);
    writer.Put(std::uint64_t{record.mKeepsTime});
    writer.Put(std::int64_t{undo.mKind});
    writer.Put(undo.mFileSize);
    writer.Put(undo.mSeconds);
    writer.Put(undo.mNanoseconds);
    writer.Put(undo.mDigest);
    writer.Put(std::uint64_t{record.mChanged.size()});
    for (const std::string& expression : record.mChanged) {
        writer.Put(expression);
    }
    writer.Put(std::uint64_t{undo.mBytes.size()});
    for (const ByteChange& stretch : undo.mBytes) {
        writer.Put(stretch.mOffset);
        writer.Put(stretch.mSize);
        writer.Put(stretch.mBytes);
    }
    return std::move(writer).Bytes();
}

std::optional<JournalRecord> Unpacked(std::string_view bytes) {
    Reader reader(bytes);
    JournalRecord record;
    FileChange& undo = record.mUndo;
    record.mPath = reader.Text();
    undo.mPath = zephcore::PathFromNative(record.mPath);
    record.mKeepsTime = reader.Number() != 0;
    undo.mKind = static_cast<zephmetadata::FileChangeKind>(reader.Number());
    undo.mFileSize = reader.Number();
    undo.mSeconds = reader.Signed();
    undo.mNanoseconds = reader.Signed();
    undo.mDigest = reader.Text();
    for (std::uint64_t left = reader.Number(); left > 0 && reader.IsWhole(); --left) {
        record.mChanged.push_back(reader.Text());
    }
    for (std::uint64_t left = reader.Number(); left > 0 && reader.IsWhole(); --left) {
        const std::uint64_t offset = reader.Number();
        const std::uint64_t size = reader.Number();
        undo.mBytes.push_back({offset, size, reader.Text()});
    }
    return reader.IsAtEnd() ? std::optional(std::move(record)) : std::nullopt;
}

}  // namespace zephmeta
