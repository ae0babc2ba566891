#include "Deletion/RemovedPlaces.h"

#include <algorithm>
#include <iterator>

namespace tallyroom {

void RemovedPlaces::add(const std::vector<Entry>& items)
{
    for (const Entry& item : items) {
        m_items.insert(item.url.path());
        if (item.isDirectory) {
            m_folders.insert(item.url.path());
        }
    }
    m_lastParent.clear();
}

void RemovedPlaces::remove(const std::vector<Entry>& items)
{
    for (const Entry& item : items) {
        m_items.erase(item.url.path());
        m_folders.erase(item.url.path());
    }
    m_lastParent.clear();
}

bool RemovedPlaces::covers(const FileUrl& url) const
{
    const std::string_view path = url.path();
    if (m_items.contains(path)) {
        return true;
    }
    const std::string_view parent = path.substr(0, path.find_last_of('/') + 1);
    if (m_folders.empty() || parent.empty()) {
        return false;
    }
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

EntryList RemovedPlaces::without(const EntryList& entries) const
{
    const auto isGone = [this](const Entry& entry) { return covers(entry.url); };
    if (isEmpty() || std::ranges::none_of(entries, isGone)) {
        return entries;
    }
    std::vector<Entry> others;
    others.reserve(entries.size());
    std::ranges::remove_copy_if(entries, std::back_inserter(others), isGone);
    return EntryList{std::move(others)};
}

} // namespace tallyroom
