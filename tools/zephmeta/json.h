#pragma once

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

namespace zephmeta {

/// Members in the order they were set, as people read them.
using Json = nlohmann::ordered_json;

/// One line of JSON. Bytes that are no UTF-8 (file names may hold such) become U+FFFD.
inline std::string JsonLine(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}
inline std::string JsonPage(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

/// Appends @p text as JSON. Of collections nearly all texts are plain, and are copied.
inline void AppendJsonText(std::string& line, const std::string& text) {
    const bool isPlain =
        std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
    if (isPlain) {
        line.append(1, '"').append(text).append(1, '"');
    } else {
        line += JsonLine(text);
    }
}

/// An object that begins with the name of a file. A name that is no UTF-8 comes with its bytes, in hexadecimal digits.
inline Json FileObject(const std::string& name) {
    Json json = {{"file", name}};
    try {
        static_cast<void>(json.dump());
    } catch (const Json::type_error&) {
        constexpr const char* kDigits = "0123456789abcdef";
        std::string bytes;
        for (const char c : name) {
            const auto byte = static_cast<unsigned char>(c);
            bytes += {kDigits[byte >> 4U], kDigits[byte & 0xFU]};
        }
        json["fileBytes"] = bytes;
    }
    return json;
}

}  // namespace zephmeta
