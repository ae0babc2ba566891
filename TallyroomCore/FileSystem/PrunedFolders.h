#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace tallyroom {

/// The folders of version control: full of files that nobody deletes one by one, so no search enters them.
inline constexpr std::array<std::string_view, 3> prunedDirectoryNames{".git", ".hg", ".svn"};

/// True for the name of a folder that searches pass by, letter by letter.
[[nodiscard]] constexpr bool isPruned(std::string_view name) noexcept
{
    return std::ranges::find(prunedDirectoryNames, name) != prunedDirectoryNames.end();
}

} // namespace tallyroom
