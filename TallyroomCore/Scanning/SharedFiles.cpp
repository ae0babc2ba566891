#include "Scanning/SharedFiles.h"

#include <algorithm>

namespace tallyroom {

SharedFiles::Meeting SharedFiles::meet(const FileAttributes& file, std::uint32_t folder,
                                       std::string_view child)
{
    const std::scoped_lock lock{m_mutex};
    const auto [place, isNew] = m_files.try_emplace(file.id(), Known{file.links, std::string{child}, {}});
    Known& known = place->second;
    Meeting meeting{known.folders, known.first};
    if (child < known.first) {
        known.first = child;
    }
    if (std::ranges::find(known.folders, folder) == known.folders.end()) {
        if (known.folders.size() == mostFolders) {
            known.folders.erase(known.folders.begin());
        }
        known.folders.push_back(folder);
    }
    if (known.left-- <= 1) {
        m_files.erase(place);
    }
    return meeting;
}

} // namespace tallyroom
