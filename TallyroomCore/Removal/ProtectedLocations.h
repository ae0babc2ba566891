#pragma once

#include "FileSystem/FileAttributes.h"
#include "FileSystem/MountTable.h"
#include "FileSystem/SystemError.h"
#include "Removal/ItemPlace.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tallyroom {

/// What must never be removed or moved: "/", the home folder, mount points, and every folder that holds one
/// of them, by any of its places. The home folder and its ancestors are known by device and inode, so that no
/// link, no ".." and no bind mount leads around them; mount points by their real paths.
class ProtectedLocations {
public:
    /// Looks up the home folder ($HOME and the user's record) and what is mounted; an error for an empty
    /// table. Good for one batch: the kernel itself protects later mounts.
    [[nodiscard]] static SystemResult<ProtectedLocations> read(std::span<const Mount> mounts);

    /// Folders that the user wants to keep with all that they hold; every batch that begins later refuses
    /// them. In place of those before. Where one lies is asked then, for some seconds at most. Any thread.
    static void protect(std::vector<FileUrl> folders);

    /// Why an item must stay, in words for people; none when it may go. Refuses a link only
    /// if the home folder's path runs through it.
    [[nodiscard]] std::optional<std::string> refusal(const ItemPlace& place) const;

private:
    struct Guarded {
        FileId id;
        bool isHome = false; ///< else a folder that holds it
    };

    void guard(const std::string& home);
    void readChosen();
    [[nodiscard]] std::optional<std::string> refusalByChoice(const std::string& path) const;
    void guardOtherPlaces(const std::string& home, std::span<const Mount> mounts);
    [[nodiscard]] const Guarded* find(const FileAttributes& attributes) const;

    std::vector<std::string> m_mountPoints;
    std::vector<std::string> m_shownElsewhere; ///< what a mount shows, at its other places
    std::vector<Guarded> m_homeAndAbove;
    std::vector<std::string> m_chosen; ///< by the user; real paths
};

} // namespace tallyroom
