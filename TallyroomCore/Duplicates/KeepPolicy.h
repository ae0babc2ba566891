#pragma once

#include "Duplicates/DuplicateGroup.h"

#include <array>
#include <optional>
#include <set>

namespace tallyroom {

/// Which copy of a group stays when one is kept.
enum class KeepRule : unsigned char { firstByPath, oldest, newest, shortestPath, inFolder };

/// Which copies may go when the others of their groups are kept. A plain value. Any thread.
struct KeepPolicy {
    static constexpr std::array<KeepRule, 5> rules{KeepRule::firstByPath, KeepRule::oldest, KeepRule::newest,
                                                   KeepRule::shortestPath, KeepRule::inFolder};

    KeepRule rule = KeepRule::firstByPath;
    /// For `inFolder`: all copies in it stay; a group without one there is left as it is.
    FileUrl folder{};
    /// Nothing in these is ever proposed.
    std::set<FileUrl> protectedFolders{};

    /// Whether a tool or a program keeps the copies at this place: packages, virtual environments, histories.
    [[nodiscard]] static bool isManaged(const FileUrl& url) noexcept;

    /// Whether all copies of the group lie in such places.
    [[nodiscard]] static bool isManaged(const DuplicateGroup& group) noexcept;

    [[nodiscard]] bool isProtected(const FileUrl& url) const;

    /// Whether nothing but a person's own check may choose the copy at `url`.
    [[nodiscard]] bool isReserved(const FileUrl& url) const { return isManaged(url) || isProtected(url); }

    /// The copy that the rule keeps: outside of any trash and of managed places, ties by path; nothing where
    /// it says nothing of the group.
    [[nodiscard]] std::optional<std::size_t> keptCopy(const DuplicateGroup& group) const;

    /// Which copies need not stay by the rule.
    [[nodiscard]] std::vector<bool> redundant(const DuplicateGroup& group) const;

    /// Which copies need not stay beside the one at `kept`.
    [[nodiscard]] std::vector<bool> redundantBeside(const DuplicateGroup& group, std::size_t kept) const;

    friend bool operator==(const KeepPolicy&, const KeepPolicy&) = default;

private:
    [[nodiscard]] bool isInFolder(const FileUrl& url) const;
};

} // namespace tallyroom
