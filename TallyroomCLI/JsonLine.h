#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tallyroom {

/// One JSON object on one line; its members keep the order in which they are added. Keys are plain text.
class JsonLine {
public:
    /// Bytes that are not UTF-8 become U+FFFD; control characters become \u009b and the like.
    JsonLine& text(std::string_view key, std::string_view value);

    JsonLine& number(std::string_view key, std::int64_t value) { return raw(key, std::to_string(value)); }

    JsonLine& truth(std::string_view key, bool value) { return raw(key, value ? "true" : "false"); }

    JsonLine& null(std::string_view key) { return raw(key, "null"); }

    /// The line with its end.
    [[nodiscard]] std::string line() const { return m_members + "}\n"; }

private:
    JsonLine& raw(std::string_view key, std::string_view value);

    std::string m_members;
};

} // namespace tallyroom
