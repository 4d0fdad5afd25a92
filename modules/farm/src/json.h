#pragma once

#include <nlohmann/json.hpp>
#include <optional>

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

/// What `read` makes of some JSON; none if that is not what it should be.
template <class Result, class Read> std::optional<Result> read_json(Read read)
{
    try {
        return read();
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}
