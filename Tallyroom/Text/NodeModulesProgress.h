#pragma once

#include "Text/NumberText.h"

namespace tallyroom {

/// The progress line of a search for node_modules: the number of folders found, then of those measured.
struct NodeModulesProgress {
    bool isDiscovering = false;
    std::int64_t found = 0;
    std::int64_t sized = 0;
    double fraction = 0; ///< 0 to 1

    [[nodiscard]] QString text() const
    {
        return isDiscovering
                   ? QStringLiteral("Recherche… %1 node_modules trouvés").arg(NumberText::grouped(found))
                   : QStringLiteral("Mesure des tailles… %1/%2")
                         .arg(NumberText::grouped(sized), NumberText::grouped(found));
    }
};

} // namespace tallyroom
