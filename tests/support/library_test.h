#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

#include "support/temp_folder.h"
#include "zephcore/text.h"
#include "zephmetadata/library.h"

namespace zephmetadata {

/// A record as tests compare and print it: the whole of it, never "some error".
struct Record {
    ErrorKind mKind;
    std::string mMessage;
    std::string mContext;

    friend bool operator==(const Record&, const Record&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Record& record) {
        return out << static_cast<int>(record.mKind) << " \"" << record.mMessage << "\" in \"" << record.mContext
                   << '"';
    }
};

inline std::vector<Record> Records() {
    std::vector<Record> records;
    for (const ErrorInfo& info : GetErrorInfos()) {
        records.push_back({info.kind, zephcore::UTF16to8(info.message), zephcore::UTF16to8(info.context)});
    }
    return records;
}

}  // namespace zephmetadata

namespace support {

/// A test with the library started over folders of its own.
class LibraryTest : public ::testing::Test {
protected:
    LibraryTest() { zephmetadata::Initialize(); }
    ~LibraryTest() override { zephmetadata::Terminate(); }

    const TempFolder& Folder() const { return mFolder; }

private:
    TempFolder mFolder;
};

}  // namespace support
