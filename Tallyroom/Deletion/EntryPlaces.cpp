#include "Deletion/EntryPlaces.h"

#include "FileSystem/ScanRoots.h"

namespace tallyroom {

namespace {

/// What all paths below `folder` begin with.
std::string beginning(const FileUrl& folder)
{
    return folder.path() == "/" ? folder.path() : folder.path() + '/';
}

} // namespace

std::string_view EntryPlaces::of(const Entry& entry)
{
    if (entry.identity.root != m_root) {
        m_root = entry.identity.root;
        const ScanRoot& root = ScanRoots::find(m_root);
        m_spelled = beginning(root.url);
        m_real = beginning(root.place);
    }
    const std::string& path = entry.url.path();
    if (m_spelled == m_real || !path.starts_with(m_spelled)) {
        return path;
    }
    m_place = m_real;
    m_place.append(path, m_spelled.size());
    return m_place;
}

} // namespace tallyroom
