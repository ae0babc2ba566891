#pragma once

#include "FileSystem/TreeWalk.h"
#include "Model/FileUrl.h"
#include "Model/FolderNames.h"

#include <memory>
#include <string_view>
#include <vector>

namespace tallyroom {

/// Which folders scans leave out because the user said so. A scan never does it silently: such a folder
/// counts as unread, with the reason. The folder that a scan begins with is never left out.
class ScanScope {
public:
    struct Rules {
        FolderNames names;            ///< of folders anywhere
        std::vector<FileUrl> folders; ///< absolute, without links
        bool staysOnFileSystem = false;

        friend bool operator==(const Rules&, const Rules&) = default;
    };

    explicit ScanScope(Rules rules);

    /// The one of the process, for walks that begin after this. What the caches know was found by the rules
    /// before: who changes rules empties them. Any thread.
    static void use(Rules rules);

    /// Null as long as nothing is left out.
    [[nodiscard]] static std::shared_ptr<const ScanScope> current();

    /// Why a folder in `parent`, which is open, is left out, as a SystemError's code; 0 for one that is not.
    /// Asks no disk.
    [[nodiscard]] int exclusion(const TreeWalk::Folder& parent, std::string_view name) const;

private:
    [[nodiscard]] bool isExcluded(const TreeWalk::Folder& parent, std::string_view name) const;

    Rules m_rules;
    FolderNames m_lastNames; // of the excluded folders
};

} // namespace tallyroom
