#include "collections/table.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "collections/csv.h"

namespace zephmeta {

namespace {

constexpr std::size_t kLongestRow = std::size_t{64} << 20U;

/// Hands out the bytes of a file from an offset on.
class Bytes {
public:
    Bytes(int descriptor, std::uint64_t offset) : mDescriptor(descriptor), mOffset(offset) {}

    std::uint64_t Offset() const { return mOffset - (mEnd - mAt); }
    bool Next(char& c) {
        if (mAt == mEnd) {
            const ssize_t count = pread(mDescriptor, mBuffer.data(), mBuffer.size(), static_cast<off_t>(mOffset));
            mAt = 0;
            mEnd = count > 0 ? static_cast<std::size_t>(count) : 0;
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
    std::array<char, 65536> mBuffer{};
};

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

/// Standard input as a file without a name, so that its rows can be gone back to. -1 when it cannot be kept.
int KeptInput() {
    std::FILE* const file = std::tmpfile();
    const int descriptor = file == nullptr ? -1 : dup(fileno(file));
    if (file != nullptr) {
        std::fclose(file);
    }
    std::array<char, 65536> buffer{};
    for (ssize_t count = 1; descriptor >= 0 && count > 0;) {
        count = read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count > 0 && write(descriptor, buffer.data(), static_cast<std::size_t>(count)) != count) {
            close(descriptor);
            return -1;
        }
    }
    return descriptor;
}

std::string Row(std::size_t number, const std::string& problem) {
    return "row " + std::to_string(number) + ": " + problem + "; it is passed over";
}

}  // namespace

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

Table::~Table() {
    if (mDescriptor >= 0) {
        close(mDescriptor);
    }
}

bool Table::Open(const std::string& name, Problems& problems) {
    mDescriptor = name == "-" ? KeptInput() : open(name.c_str(), O_RDONLY | O_CLOEXEC);
    char c = 0;
    if (mDescriptor < 0 || (pread(mDescriptor, &c, 1, 0) < 0 && errno == EISDIR)) {
        problems.Report(name, std::string("cannot be read (") + std::strerror(errno) + ")");
        return false;
    }
    return true;
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
    mIsJSON ? ReadJSON(name, begin, problems) : ReadCSV(name, begin, problems);
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

void Table::ReadCSV(const std::string& name, std::uint64_t begin, Problems& problems) {
    Bytes bytes(mDescriptor, begin);
    std::string record;
    char c = 0;
    for (std::size_t number = 1;; ++number) {
        const std::uint64_t offset = bytes.Offset();
        record.clear();
        CSVRecordEnd end(mSeparator);
        while (record.size() < kLongestRow && bytes.Next(c)) {
            record += c;
            // The header tells what stands between the fields: a comma, or what tables of some countries have instead.
            if (number == 1 && mHeader.empty() && std::string_view(",;\t").find(c) != std::string_view::npos) {
                mSeparator = c;
                mHeader.emplace_back();
                end = CSVRecordEnd(c);
            }
            if (end.Take(c)) {
                break;
            }
        }
        if (record.empty()) {
            return;
        }
        if (record.find_first_not_of("\r\n") == std::string::npos) {
            continue;
        }
        try {
            std::vector<std::string> fields = CSVFields(record, mSeparator);
            if (number == 1) {
                mHeader = std::move(fields);
                if (std::find(mHeader.begin(), mHeader.end(), "file") == mHeader.end()) {
                    problems.Report(name, "has no column \"file\"");
                    return;
                }
                for (const std::string& column : mHeader) {
                    column.find(':') == std::string::npos || IsTaken(column, problems);
                }
            } else {
                AddRow(name, FileNameIn(RowFrom(fields)), {offset, record.size(), number}, problems);
            }
        } catch (const std::invalid_argument& error) {
            problems.Report(name, Row(number, error.what()));
        }
    }
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

void Table::ReadJSON(const std::string& name, std::uint64_t begin, Problems& problems) {
    Bytes bytes(mDescriptor, begin);
    std::string record;
    char c = 0;
    for (std::size_t number = 1;; ++number) {
        while (bytes.Next(c) && std::string_view(" \t\r\n,[]").find(c) != std::string_view::npos) {
            c = 0;
        }
        if (c == 0) {
            return;
        }
        const std::uint64_t offset = bytes.Offset() - 1;
        record.assign(1, std::exchange(c, 0));
        ObjectEnd end;
        for (bool isDone = end.Take(record.front()); !isDone && record.size() < kLongestRow && bytes.Next(c);) {
            record += std::exchange(c, 0);
            isDone = end.Take(record.back());
        }
        const nlohmann::json row = nlohmann::json::parse(record, nullptr, false);
        if (!row.is_object()) {
            problems.Report(name, Row(number, "is no JSON object"));
            // What follows is not to be taken for something else.
            while (bytes.Next(c) && c != '\n') {
            }
            c = 0;
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
            throw std::invalid_argument("its row can no longer be read");
        }
        done += static_cast<std::size_t>(count);
    }
    return bytes;
}

Cells Table::CellsFor(const std::string& file, bool emptyDeletes) const {
    const std::string bytes = BytesAt(mPlaces.at(file));
    nlohmann::json row = mIsJSON ? nlohmann::json::parse(bytes, nullptr, false) : RowFrom(CSVFields(bytes, mSeparator));
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
        const bool isEmptied = text.empty();
        if (column.find(':') == std::string::npos || (isEmptied && !emptyDeletes)) {
            continue;
        }
        // In a table x-default has a cell of its own, so that one alone is emptied.
        const bool isAlternative = isEmptied && zephmetadata::PrimitiveTypeOfPath(ResolveTarget(column).mPath) ==
                                                    zephmetadata::kPrimitiveType_Alt;
        const bool isDefault = isAlternative && !column.ends_with(']');
        cells[column + (isDefault ? "[?xml:lang=\"x-default\"]" : "")] =
            isEmptied ? nlohmann::json() : CellOf(column, text);
    }
    return cells;
}

}  // namespace zephmeta
