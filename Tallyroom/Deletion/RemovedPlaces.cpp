#include "Deletion/RemovedPlaces.h"

namespace tallyroom {

void RemovedPlaces::add(const std::vector<Entry>& items)
{
    for (const Entry& item : items) {
        const std::string_view place = m_places.of(item);
        m_items.emplace(place);
        m_nameMarks.push_back(markOf(item.name));
        if (item.isDirectory) {
            m_folders.emplace(place);
        }
    }
    m_lastParent.clear();
    markNames();
}

void RemovedPlaces::markNames()
{
    constexpr std::size_t marksAnItem = 16;
    m_marks.assign(std::bit_ceil(m_nameMarks.size()) * marksAnItem, false);
    for (const std::size_t mark : m_nameMarks) {
        m_marks[mark & (m_marks.size() - 1)] = true;
    }
}

void RemovedPlaces::remove(const std::vector<Entry>& items)
{
    for (const Entry& item : items) {
        const std::string place{m_places.of(item)};
        m_items.erase(place);
        m_folders.erase(place);
    }
    m_lastParent.clear();
}

bool RemovedPlaces::covers(const Entry& entry) const
{
    if (contains(entry)) {
        return true;
    }
    if (m_folders.empty()) {
        return false;
    }
    const std::string_view path = m_places.of(entry);
    const std::string_view parent = path.substr(0, path.find_last_of('/') + 1);
    if (parent != m_lastParent) {
        m_lastParent = parent;
        m_isLastParentCovered = isBelowFolder(parent);
    }
    return m_isLastParentCovered;
}

/// Whether a folder of the items stands on the way to `path`.
bool RemovedPlaces::isBelowFolder(std::string_view path) const
{
    for (std::size_t slash = path.find_last_of('/'); slash != std::string_view::npos && slash > 0;
         slash = path.find_last_of('/', slash - 1)) {
        if (m_folders.contains(path.substr(0, slash))) {
            return true;
        }
    }
    return false;
}

} // namespace tallyroom
