#pragma once

#include "Model/FolderNames.h"

#include <array>
#include <cstddef>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

namespace tallyroom {

/// A build ecosystem, with the folders that its tools can regenerate. Any thread.
class Ecosystem {
public:
    enum class Value : unsigned char { javascript, rust, python, jvm, php, xcode };
    using enum Value;

    /// Every ecosystem, in the order in which a folder's name is looked up.
    static const std::array<Ecosystem, 6> all;

    constexpr Ecosystem(Value value) noexcept : m_value(value) {} // NOLINT: an ecosystem is its value

    constexpr operator Value() const noexcept { return m_value; } // NOLINT: so that switch sees the cases

    /// Its place in `all`.
    [[nodiscard]] constexpr std::size_t index() const noexcept { return std::to_underlying(m_value); }

    /// The ecosystem whose raw value is `text`, letter by letter; nothing for any other text.
    [[nodiscard]] static std::optional<Ecosystem> fromRawValue(std::string_view text);

    /// The first ecosystem that makes folders called `name`, letter by letter.
    [[nodiscard]] static std::optional<Ecosystem> first(std::string_view name);

    /// The names of the folders of all `ecosystems`.
    [[nodiscard]] static FolderNames ruleNames(const std::set<Ecosystem>& ecosystems);

    /// The case's name.
    [[nodiscard]] std::string_view rawValue() const noexcept;

    /// The name for people, the same in every language.
    [[nodiscard]] std::string_view displayName() const noexcept;

    /// The name of the icon.
    [[nodiscard]] std::string_view symbolName() const noexcept;

private:
    Value m_value;
};

} // namespace tallyroom
