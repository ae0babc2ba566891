#pragma once

#include "FileSystem/FileAttributes.h"
#include "FileSystem/ScanRoots.h"
#include "Model/ItemIdentity.h"

#include <memory>
#include <optional>

namespace tallyroom {

/// The message for an item that was replaced.
constexpr const char* hasChanged = "Cet élément a changé depuis l'analyse.";

/// The item to remove, to compare with right before it goes and right after.
struct MeantItem {
    std::optional<ItemIdentity> identity;       ///< none: whatever lies there
    std::shared_ptr<const VolumeMarks> volumes; ///< as they are mounted now

    [[nodiscard]] bool isThis(const FileAttributes& found) const
    {
        return !identity || (volumes != nullptr && volumes->identify(found).isSameItem(*identity));
    }
};

} // namespace tallyroom
