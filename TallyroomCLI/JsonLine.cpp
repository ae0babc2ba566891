#include "JsonLine.h"

#include "Terminal.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace tallyroom {

namespace {

/// Most names, and all that is percent-encoded: nothing in it needs an escape.
bool isPlain(std::string_view text)
{
    return std::ranges::all_of(
        text, [](char byte) { return byte >= 0x20 && byte < 0x7F && byte != '"' && byte != '\\'; });
}

} // namespace

JsonLine& JsonLine::text(std::string_view key, std::string_view value)
{
    if (isPlain(value)) {
        return raw(key, std::string{"\""}.append(value).append("\""));
    }
    const nlohmann::json escaped(value);
    return raw(
        key, Terminal::printableJson(escaped.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)));
}

JsonLine& JsonLine::raw(std::string_view key, std::string_view value)
{
    m_members.append(m_members.empty() ? "{\"" : ",\"").append(key).append("\":").append(value);
    return *this;
}

} // namespace tallyroom
