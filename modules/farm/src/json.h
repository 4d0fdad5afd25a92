#pragma once

#include <nlohmann/json.hpp>

using Json = nlohmann::ordered_json;

/// Bytes of a path that are no UTF-8 are replaced.
inline std::string inq_line(const Json& json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// Null, which is no object, if the text is none.
inline Json parse_json(const std::string& text)
{
    const Json json = Json::parse(text, nullptr, false);
    return json.is_object() ? json : Json();
}
