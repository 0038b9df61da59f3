#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zephmeta {

/// A field of a table as RFC 4180 has it, in quotes where it needs them.
std::string CSVField(std::string_view text);

/// The fields of one record, with or without its line end. Throws std::invalid_argument for a record that is none.
std::vector<std::string> CSVFields(std::string_view record, char separator);

/// Tells where a record ends: a line end in quotes belongs to a field.
class CSVRecordEnd {
public:
    /// Without a separator it is a comma, or what tables of some countries have instead: which of them comes first.
    explicit CSVRecordEnd(std::optional<char> separator) : mSeparator(separator) {}

    /// Whether the record ends with this character.
    bool Take(char c);
    char Separator() const { return mSeparator.value_or(','); }

private:
    std::optional<char> mSeparator;
    bool mIsQuoted = false;
    bool mCanOpen = true;
};

}  // namespace zephmeta
