#pragma once

#include "Model/FolderNames.h"

#include <array>
#include <optional>
#include <set>
#include <span>
#include <string_view>

namespace tallyroom {

/// A world of build tools, with the folders that it can make again at any time. Any thread.
class Ecosystem {
public:
    enum Value : unsigned char { javascript, rust, python, jvm, php, xcode };

    /// Every ecosystem, in the order in which a folder's name is looked up.
    static const std::array<Ecosystem, 6> all;

    constexpr Ecosystem(Value value) noexcept : m_value(value) {} // NOLINT: an ecosystem is its value

    constexpr operator Value() const noexcept { return m_value; } // NOLINT: so that switch sees the cases

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

    /// The names of its folders.
    [[nodiscard]] std::span<const std::string_view> folderNames() const noexcept;

private:
    Value m_value;
};

} // namespace tallyroom
