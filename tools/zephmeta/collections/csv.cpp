#include "collections/csv.h"

#include <algorithm>
#include <stdexcept>

#include "text.h"

namespace zephmeta {

namespace {

/// A field in quotes, taken off the front together with them.
std::string TakeQuoted(std::string_view& rest) {
    std::string field;
    std::size_t i = 1;
    for (;; ++i) {
        const std::size_t quote = rest.find('"', i);
        if (quote == std::string_view::npos) {
            throw std::invalid_argument("a quote is not closed");
        }
        field.append(rest.substr(i, quote - i));
        i = quote + 1;
        if (i >= rest.size() || rest[i] != '"') {
            break;
        }
        field += '"';
    }
    rest.remove_prefix(i);
    return field;
}

}  // namespace

std::string CSVField(std::string_view text) {
    // Blanks at the ends are part of a field, but not every program keeps them without quotes.
    const bool isPlain = text.find_first_of(",;\t\"\r\n") == std::string_view::npos &&
                         (text.empty() || (text.front() != ' ' && text.back() != ' '));
    return isPlain ? std::string(text) : InDoubleQuotes(text);
}

std::vector<std::string> CSVFields(std::string_view record, char separator) {
    std::string_view rest = record;
    rest.remove_suffix(rest.ends_with('\n') ? 1 : 0);
    rest.remove_suffix(rest.ends_with('\r') ? 1 : 0);
    std::vector<std::string> fields;
    for (;;) {
        if (rest.starts_with('"')) {
            fields.push_back(TakeQuoted(rest));
        } else {
            const std::size_t end = std::min(rest.find(separator), rest.size());
            fields.emplace_back(rest.substr(0, end));
            rest.remove_prefix(end);
        }
        if (rest.empty()) {
            return fields;
        }
        if (rest.front() != separator) {
            throw std::invalid_argument("there is text behind a closing quote");
        }
        rest.remove_prefix(1);
    }
}

bool CSVRecordEnd::Take(char c) {
    if (mIsQuoted) {
        mIsQuoted = c != '"';
        mCanOpen = c == '"';  // a doubled quote stands for one, so the field goes on behind it
        return false;
    }
    if (!mSeparator && std::string_view(",;\t").find(c) != std::string_view::npos) {
        mSeparator = c;
    }
    mIsQuoted = c == '"' && mCanOpen;
    mCanOpen = c == mSeparator || c == '\n';
    return c == '\n';
}

}  // namespace zephmeta
