#pragma once

#include "FileSystem/FileDescriptor.h"
#include "FileSystem/RealPath.h"
#include "FileSystem/SystemError.h"
#include "Model/Entry.h"
#include "Model/FileUrl.h"
#include "Removal/MeantItem.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tallyroom {

/// An item as its name in the open folder that holds it. Removal speaks of items only in this way: whatever
/// becomes of the path meanwhile, the folder stays the one that was opened, and the name is never followed.
struct ItemPlace {
    FileDescriptor parent; ///< opened as a step only (O_PATH)
    std::string name;      ///< one component, without slashes
    std::string location;  ///< as it was given, without slashes at its end
    MeantItem meant{};     ///< which one it has to be

    /// Opens the folder that holds the item at a location of any length. "shortcut/" is the link, not its
    /// target. EINVAL for what names no item: a relative or empty location, a NUL byte in it, a last step
    /// "." or "..". EBUSY for "/".
    [[nodiscard]] static SystemResult<ItemPlace> open(const FileUrl& url);

    /// Opens the folder that holds the item that a scan saw: the folder that the scan started from, if it is
    /// the same one still, and from there down without following any link. ESTALE when the way has changed,
    /// or no scan has seen the item. Whether it is the item is seen when it goes.
    [[nodiscard]] static SystemResult<ItemPlace> open(const Entry& entry,
                                                      std::shared_ptr<const VolumeMarks> volumes);

    /// Where the item really lies, links and ".." on the way resolved, as the mount table would name it. The
    /// kernel tells no path beyond PATH_MAX: of such a location the steps past the first few thousand bytes
    /// are as given.
    [[nodiscard]] SystemResult<std::string> realPath() const;
};

/// Renames an item of one open folder into another one. EEXIST when the new name is taken.
[[nodiscard]] SystemResult<void> moveWithoutReplacing(int from, const std::string& name, int to,
                                                      const std::string& newName);

} // namespace tallyroom
