#pragma once

#include <nlohmann/json.hpp>

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

}  // namespace zephmeta
