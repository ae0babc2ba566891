#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tallyroom {

/// How one case of a closed set is named.
struct CaseNames {
    std::string_view rawValue;    ///< the case's name
    std::string_view displayName; ///< the name for people, in French
    std::string_view symbolName;  ///< the name of the icon
};

/// What classes with a fixed set of cases share. `Case` derives from it, holds every case in `all`, in the
/// order of their indices, and gives their names: `static const CaseNames& namesAt(std::size_t index)`.
/// Any thread.
template <class Case>
class ClosedSet {
public:
    /// The place in `Case::all`.
    [[nodiscard]] constexpr std::size_t index() const noexcept { return m_index; }

    /// The case whose raw value is `text`, letter by letter; nothing for any other text.
    [[nodiscard]] static std::optional<Case> fromRawValue(std::string_view text)
    {
        const auto found = std::ranges::find(Case::all, text, &Case::rawValue);
        return found != Case::all.end() ? std::optional<Case>{*found} : std::nullopt;
    }

    [[nodiscard]] std::string_view rawValue() const noexcept { return Case::namesAt(m_index).rawValue; }

    [[nodiscard]] std::string_view displayName() const noexcept { return Case::namesAt(m_index).displayName; }

    [[nodiscard]] std::string_view symbolName() const noexcept { return Case::namesAt(m_index).symbolName; }

private:
    friend Case;

    constexpr explicit ClosedSet(std::uint8_t index) noexcept : m_index(index) {}

    std::uint8_t m_index;
};

} // namespace tallyroom
