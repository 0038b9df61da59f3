#include "collections/table.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <unordered_set>
#include <utility>

#include "collections/csv.h"

namespace zephmeta {

namespace {

constexpr std::size_t kLongestRow = std::size_t{64} << 20U;
constexpr std::size_t kBlockBytes = std::size_t{64} << 10U;

constexpr const char* kRowIsGone = "its row can no longer be read";

/// Tells where an object ends that began with "{".
class ObjectEnd {
public:
    bool Take(char c) {
        if (mIsQuoted) {
            mIsQuoted = mIsEscaped || c != '"';
            mIsEscaped = !mIsEscaped && c == '\\';
            return false;
        }
        mIsQuoted = c == '"';
        mDepth += c == '{' || c == '[' ? 1 : c == '}' || c == ']' ? -1 : 0;
        return mDepth <= 0;
    }

private:
    int mDepth = 0;
    bool mIsQuoted = false;
    bool mIsEscaped = false;
};

/// What can be read from a descriptor as a file without a name, so that its rows can be gone back to. -1, with the reason in
/// errno, when it cannot be kept.
int Kept(int from) {
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    const std::unique_ptr<std::FILE, Close> file(std::tmpfile());
    std::array<char, kBlockBytes> buffer{};
    ssize_t count = file ? 1 : -1;
    while (count > 0) {
        count = read(from, buffer.data(), buffer.size());
        const auto size = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        count = std::fwrite(buffer.data(), 1, size, file.get()) == size ? count : -1;
    }
    return count == 0 && std::fflush(file.get()) == 0 ? dup(fileno(file.get())) : -1;
}

std::string WhyUnreadable(int error) {
    return std::string("cannot be read (") + std::strerror(error) + ")";
}

std::string Row(std::size_t number, const std::string& problem) {
    return "row " + std::to_string(number) + ": " + problem + "; it is passed over";
}

/// A file name as it stands in a row: as it is, and the bytes of one that is no UTF-8 in hexadecimal digits beside it.
std::string FileNameIn(const nlohmann::json& row) {
    const auto bytes = row.find("fileBytes");
    if (bytes == row.end() || !bytes->is_string() || bytes->get<std::string>().empty()) {
        const auto name = row.find("file");
        return name == row.end() || !name->is_string() ? std::string() : name->get<std::string>();
    }
    const auto digits = bytes->get<std::string>();
    std::string name;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        unsigned byte = 0;
        const auto [end, error] = std::from_chars(&digits[i], &digits[i] + 2, byte, 16);
        if (error != std::errc() || end != &digits[i] + 2) {
            return {};
        }
        name += static_cast<char>(byte);
    }
    return name;
}

bool IsBlank(std::string_view record) {
    return record.find_first_not_of("\r\n") == std::string_view::npos;
}

/// The object that begins with @p first.
template <typename Source>
std::string TakeObject(char first, Source& bytes) {
    std::string object(1, first);
    ObjectEnd end;
    char c = 0;
    for (bool isDone = end.Take(first); !isDone && object.size() < kLongestRow && bytes.Next(c);) {
        object += c;
        isDone = end.Take(c);
    }
    return object;
}

}  // namespace

/// Hands out the bytes of a file from an offset on. Throws std::system_error when they cannot be read.
class Table::Bytes {
public:
    Bytes(int descriptor, std::uint64_t offset) : mDescriptor(descriptor), mOffset(offset) {}

    std::uint64_t Offset() const { return mOffset - (mEnd - mAt); }
    bool Next(char& c) {
        if (mAt == mEnd) {
            const ssize_t count = pread(mDescriptor, mBuffer.data(), mBuffer.size(), static_cast<off_t>(mOffset));
            if (count < 0) {
                throw std::system_error(errno, std::generic_category());
            }
            mAt = 0;
            mEnd = static_cast<std::size_t>(count);
            mOffset += mEnd;
        }
        if (mAt == mEnd) {
            return false;
        }
        c = mBuffer[mAt++];
        return true;
    }

private:
    int mDescriptor;
    std::uint64_t mOffset;
    std::size_t mAt = 0;
    std::size_t mEnd = 0;
    std::array<char, kBlockBytes> mBuffer{};
};

Table::~Table() {
    if (mDescriptor >= 0) {
        close(mDescriptor);
    }
}

bool Table::Open(const std::string& name, Problems& problems) {
    mDescriptor = name == "-" ? dup(STDIN_FILENO) : open(name.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    const bool isFile = name != "-" && fstat(mDescriptor, &status) == 0 && S_ISREG(status.st_mode);
    if (mDescriptor >= 0 && !isFile) {
        const int kept = Kept(mDescriptor);
        const int error = errno;
        close(std::exchange(mDescriptor, kept));
        errno = error;
    }
    if (mDescriptor < 0) {
        problems.Report(name, WhyUnreadable(errno));
    }
    return mDescriptor >= 0;
}

bool Table::Read(const std::string& name, Problems& problems) {
    if (!Open(name, problems)) {
        return false;
    }
    constexpr std::string_view kMark = "\xEF\xBB\xBF";  // programs for tables begin UTF-8 with it
    std::array<char, 16> head{};
    const ssize_t count = pread(mDescriptor, head.data(), head.size(), 0);
    const std::string_view start(head.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    const std::uint64_t begin = start.starts_with(kMark) ? kMark.size() : 0;
    if (start.starts_with("SQLite format 3")) {
        problems.Report(name, "is a database; CSV and JSON can be imported");
        return false;
    }
    const std::size_t first = start.find_first_not_of(" \t\r\n", begin);
    mIsJSON = first != std::string_view::npos && (start[first] == '{' || start[first] == '[');
    try {
        Bytes bytes(mDescriptor, begin);
        mIsJSON ? ReadJSON(name, bytes, problems) : ReadCSV(name, bytes, problems);
    } catch (const std::system_error& error) {
        problems.Report(name, WhyUnreadable(error.code().value()));
        return false;
    }
    return !mFiles.empty();
}

bool Table::IsTaken(const std::string& column, Problems& problems) {
    const auto [known, isNew] = mColumns.try_emplace(column, false);
    if (isNew) {
        const std::string problem = WhyNoColumn(column);
        known->second = problem.empty();
        if (!problem.empty()) {
            problems.Report({}, problem + "; the column is passed over");
        }
    }
    return known->second;
}

void Table::AddRow(const std::string& name, const std::string& file, const Place& place, Problems& problems) {
    if (file.empty() || file.find('\0') != std::string::npos) {
        problems.Report(name, Row(place.mNumber, "names no file"));
    } else if (const auto [before, isNew] = mPlaces.try_emplace(file, place); !isNew) {
        problems.Report(name, Row(place.mNumber, "\"" + file + "\" stands in row " +
                                                     std::to_string(before->second.mNumber) + " already"));
    } else {
        mFiles.push_back(file);
    }
}

void Table::ReadCSV(const std::string& name, Bytes& bytes, Problems& problems) {
    std::string record;
    for (std::size_t number = 1;; ++number) {
        const std::uint64_t offset = bytes.Offset();
        record = TakeCSVRecord(bytes);
        if (record.empty()) {
            return;
        }
        if (IsBlank(record)) {
            continue;
        }
        try {
            std::vector<std::string> fields = CSVFields(record, mSeparator.value());
            if (!mHeader.empty()) {
                AddRow(name, FileNameIn(RowFrom(fields)), {offset, record.size(), number}, problems);
            } else if (const std::string problem = TakeHeader(std::move(fields), problems); !problem.empty()) {
                problems.Report(name, problem);
                return;
            }
        } catch (const std::invalid_argument& error) {
            problems.Report(name, Row(number, error.what()));
        }
    }
}

/// The record with its line end; empty at the end of the table. The first that is not blank tells the separator.
std::string Table::TakeCSVRecord(Bytes& bytes) {
    CSVRecordEnd end(mSeparator);
    std::string record;
    for (char c = 0; record.size() < kLongestRow && bytes.Next(c);) {
        record += c;
        if (end.Take(c)) {
            break;
        }
    }
    if (!mSeparator && !IsBlank(record)) {
        mSeparator = end.Separator();
    }
    return record;
}

/// Why the table is none with this header; empty when it is one.
std::string Table::TakeHeader(std::vector<std::string> header, Problems& problems) {
    std::unordered_set<std::string_view> read;  // what has no colon is of no use, often a column without a name
    for (const std::string& column : header) {
        const bool isRead = column == "file" || column.find(':') != std::string::npos;
        if (isRead && !read.insert(column).second) {
            return "has two columns \"" + column + "\"";
        }
    }
    if (!read.contains("file")) {
        return "has no column \"file\"";
    }
    for (const std::string& column : header) {
        column.find(':') == std::string::npos || IsTaken(column, problems);
    }
    mHeader = std::move(header);
    return {};
}

nlohmann::json Table::RowFrom(const std::vector<std::string>& fields) const {
    if (fields.size() != mHeader.size()) {
        throw std::invalid_argument("has " + std::to_string(fields.size()) + " fields where the header has " +
                                    std::to_string(mHeader.size()));
    }
    nlohmann::json row = nlohmann::json::object();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        row[mHeader[i]] = fields[i];
    }
    return row;
}

void Table::ReadJSON(const std::string& name, Bytes& bytes, Problems& problems) {
    std::size_t number = 0;
    for (char c = 0; bytes.Next(c);) {
        if (std::string_view(" \t\r\n,[]").find(c) != std::string_view::npos) {
            continue;
        }
        ++number;
        const std::uint64_t offset = bytes.Offset() - 1;
        const std::string record = TakeObject(c, bytes);
        const nlohmann::json row = nlohmann::json::parse(record, nullptr, false);
        if (!row.is_object()) {
            problems.Report(name, Row(number, "is no JSON object"));
            // What follows is not to be taken for something else.
            while (bytes.Next(c) && c != '\n') {
            }
            continue;
        }
        if (row.contains("error")) {
            continue;  // the export said so already
        }
        for (const auto& [path, value] : row.items()) {
            path.find(':') == std::string::npos || IsTaken(path, problems);
        }
        AddRow(name, FileNameIn(row), {offset, record.size(), number}, problems);
    }
}

std::string Table::BytesAt(const Place& place) const {
    std::string bytes(place.mSize, '\0');
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            pread(mDescriptor, bytes.data() + done, bytes.size() - done, static_cast<off_t>(place.mOffset + done));
        if (count <= 0) {
            throw std::invalid_argument(kRowIsGone);
        }
        done += static_cast<std::size_t>(count);
    }
    return bytes;
}

Cells Table::CellsFor(const std::string& file, bool emptyDeletes) const {
    const std::string bytes = BytesAt(mPlaces.at(file));
    nlohmann::json row =
        mIsJSON ? nlohmann::json::parse(bytes, nullptr, false) : RowFrom(CSVFields(bytes, mSeparator.value()));
    if (!row.is_object()) {
        throw std::invalid_argument(kRowIsGone);
    }
    for (const auto& [column, isTaken] : mColumns) {
        if (!isTaken) {
            row.erase(column);
        }
    }
    if (mIsJSON) {
        return CellsIn(row);
    }
    Cells cells;
    for (const auto& [column, cell] : row.items()) {
        const auto& text = cell.get_ref<const std::string&>();
        if (column.find(':') == std::string::npos) {
            continue;
        }
        if (!text.empty()) {
            cells[column] = CellOf(column, text);
        } else if (emptyDeletes) {
            cells[DeletedColumn(column)] = nlohmann::json();
        }
    }
    return cells;
}

}  // namespace zephmeta
