#pragma once

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace support {

/// A row of the published list of properties and of the fields of structures.
struct IptcRow {
    std::string mLevel, mStructure, mId, mValue, mOccurrence, mOrder, mTopic;
    std::string mExample;  ///< a value that is allowed; empty where any text is
    std::string mShown;    ///< how exiftool -n prints it, where it does not print it as it is
    std::string mIIM;      ///< exiftool's tag of the IIM dataset, with "=" and its value where that is another

    int Position() const { return std::stoi(mOrder.substr(mOrder.find_first_of("0123456789"))); }
    /// A value that is allowed.
    std::string Value() const {
        const bool isAddress = mValue == "uri" || mValue == "url";
        return !mExample.empty() ? mExample
                                 : (isAddress ? "http://example.org/" : "Some ") + mId.substr(mId.find(':') + 1);
    }
    /// The expression of a value below @p parent, which is empty or ends with a slash.
    std::string Expression(const std::string& parent) const {
        return parent + mId + (mOccurrence == "multi" ? "[1]" : "");
    }
};

inline std::vector<IptcRow> ReadIptcRows(const std::filesystem::path& path) {
    std::istringstream lines(ReadFile(path));
    std::vector<IptcRow> rows;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('#')) {
            continue;
        }
        IptcRow row;
        std::istringstream columns(line);
        for (std::string* const column : {&row.mLevel, &row.mStructure, &row.mId, &row.mValue, &row.mOccurrence,
                                          &row.mOrder, &row.mTopic, &row.mExample, &row.mShown, &row.mIIM}) {
            std::getline(columns, *column, '\t');
        }
        rows.push_back(row);
    }
    return rows;
}

/// A value of the list in its place, with what it is in another program.
struct IptcField {
    std::string mPath, mValue, mShown;
};

/// The fields of @p structure, those that are structures by what they hold. Some hold themselves: @p depth is a bound.
inline std::vector<IptcField> FieldsOf(const std::vector<IptcRow>& rows, const std::string& structure = "",
                                       const std::string& parent = "", int depth = 4) {
    std::vector<IptcField> fields;
    for (const IptcRow& row : rows) {
        if (row.mStructure != structure || depth == 0) {
            continue;
        }
        const std::string path = row.Expression(parent);
        const bool isStructure =
            std::ranges::any_of(rows, [&](const IptcRow& field) { return field.mStructure == row.mValue; });
        if (isStructure) {
            const std::vector<IptcField> below = FieldsOf(rows, row.mValue, path + "/", depth - 1);
            fields.insert(fields.end(), below.begin(), below.end());
        } else {
            fields.push_back({path, row.Value(), row.mShown.empty() ? row.Value() : row.mShown});
        }
    }
    return fields;
}

}  // namespace support
