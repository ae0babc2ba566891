#pragma once

#include "FileSystem/FileAttributes.h"
#include "FileSystem/ScanRoots.h"
#include "Model/ItemIdentity.h"

#include <memory>
#include <optional>

namespace tallyroom {

/// What is said of an item that is another one now.
constexpr const char* hasChanged = "Cet élément a changé depuis l'analyse.";

/// Which item is meant, for the look right before it goes and right after.
struct MeantItem {
    std::optional<ItemIdentity> identity;       ///< none: whatever lies there
    std::shared_ptr<const VolumeMarks> volumes; ///< as they are mounted now

    [[nodiscard]] bool isThis(const FileAttributes& found) const
    {
        return !identity || (volumes != nullptr && volumes->identify(found).isSameItem(*identity));
    }
};

} // namespace tallyroom
