#pragma once

#include "FileSystem/MountTable.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tallyroom {

/// The mounts as a walk meets them on its way down, name by name. Made of the table alone: nothing waits.
class MountPlaces {
    struct Place;

public:
    /// Where a walk stands. Good as long as the places.
    class Position {
    public:
        /// The mount that holds the folder; null when it is not known.
        [[nodiscard]] const Mount* mount() const noexcept { return m_mount; }

        /// The mount whose top the folder is; null for other folders.
        [[nodiscard]] const Mount* mountPoint() const noexcept
        {
            return m_place == nullptr ? nullptr : m_place->mount;
        }

        /// Whether a child or something below may be a mount point.
        [[nodiscard]] bool mayHoldMounts() const noexcept { return m_place != nullptr; }

        /// The position of a child. Cheap where no mount lies below.
        [[nodiscard]] Position child(std::string_view name) const;

    private:
        friend class MountPlaces;

        const Mount* m_mount = nullptr;
        const Place* m_place = nullptr; ///< null where no mount lies at the folder or below it
    };

    /// Of mounts that paths reach (`MountTable::reachable`).
    explicit MountPlaces(std::vector<Mount> mounts);

    /// The position of an absolute path without links.
    [[nodiscard]] Position find(std::string_view path) const;

private:
    struct Place {
        const Mount* mount = nullptr;
        std::map<std::string, std::unique_ptr<Place>, std::less<>> below;
    };

    std::vector<Mount> m_mounts;
    Place m_top; // of "/"
};

} // namespace tallyroom
