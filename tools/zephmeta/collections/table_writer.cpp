#include "collections/table_writer.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "collections/csv.h"

namespace zephmeta {

NewTable::NewTable(std::string name) : mName(std::move(name)) {
    if (mName == "-") {
        return;
    }
    constexpr mode_t kMode = 0666;  // less what the user's mask takes away
    const int descriptor = open(mName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
    if (descriptor < 0) {
        mProblem = errno == EEXIST ? "is there already" : std::string("cannot be made (") + std::strerror(errno) + ")";
        return;
    }
    close(descriptor);
    mIsMade = true;
    mFile.open(mName, std::ios::binary | std::ios::trunc);
}

NewTable::~NewTable() {
    if (mIsMade && !mIsKept) {
        unlink(mName.c_str());
    }
}

std::ostream& NewTable::Out() {
    return mName == "-" ? std::cout : mFile;
}

std::string NewTable::Problem() {
    return mProblem.empty() && !Out() ? "cannot be written" : mProblem;
}

std::string NewTable::Keep() {
    errno = 0;
    Out().flush();
    if (!Out()) {
        return errno == 0 ? "cannot be written" : std::string("cannot be written (") + std::strerror(errno) + ")";
    }
    mIsKept = true;
    return {};
}

WaitingRows::WaitingRows() {
    std::error_code error;
    std::string name = (std::filesystem::temp_directory_path(error) / "zephmeta-XXXXXX").native();
    const int descriptor = mkstemp(name.data());
    if (descriptor >= 0) {
        close(descriptor);
        mSpool.open(name, std::ios::in | std::ios::out | std::ios::binary | std::ios::trunc);
        unlink(name.c_str());
    } else {
        mSpool.setstate(std::ios::badbit);
    }
}

void WaitingRows::AddColumns(const Json& row) {
    const std::lock_guard lock(mMutex);
    for (const auto& [column, cell] : row.items()) {
        mColumns.insert(column);
    }
}

std::string WaitingRows::WriteTo(std::ostream& out) {
    const bool hasBytes = mColumns.erase("fileBytes") > 0;
    mColumns.erase("file");
    out << "file" << (hasBytes ? ",fileBytes" : "");
    for (const std::string& column : mColumns) {
        out << ',' << CSVField(column);
    }
    out << "\r\n";
    mSpool.flush();
    mSpool.seekg(0);
    const bool isWhole = mSpool.good();
    std::string line;
    while (out && std::getline(mSpool, line)) {
        const auto row = nlohmann::json::parse(line, nullptr, false);
        const auto field = [&row](const std::string& column) {
            const auto cell = row.find(column);
            return cell == row.end() ? std::string() : CSVField(TextOf(*cell));
        };
        out << field("file") << (hasBytes ? "," + field("fileBytes") : "");
        for (const std::string& column : mColumns) {
            out << ',' << field(column);
        }
        out << "\r\n";
    }
    return isWhole && mSpool.eof() ? std::string() : "cannot be made (no room for the rows in the temporary folder)";
}

Json RowOf(const std::string& file, const Cells& cells) {
    Json row = FileObject(file);
    for (const auto& [column, cell] : cells) {
        row[column] = cell;
    }
    return row;
}

}  // namespace zephmeta
