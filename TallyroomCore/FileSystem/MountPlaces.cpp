#include "FileSystem/MountPlaces.h"

#include <algorithm>
#include <utility>

namespace tallyroom {

namespace {

/// Takes the first name off a path; empty at its end.
std::string_view takeName(std::string_view& path)
{
    path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
    const std::string_view name = path.substr(0, path.find('/'));
    path.remove_prefix(name.size());
    return name;
}

} // namespace

MountPlaces::Position MountPlaces::Position::child(std::string_view name) const
{
    Position position;
    position.m_mount = m_mount;
    if (m_place == nullptr) {
        return position;
    }
    if (const auto found = m_place->below.find(name); found != m_place->below.end()) {
        position.m_place = found->second.get();
        position.m_mount = position.m_place->mount == nullptr ? m_mount : position.m_place->mount;
    }
    return position;
}

MountPlaces::MountPlaces(std::vector<Mount> mounts) : m_mounts(std::move(mounts))
{
    for (const Mount& mount : m_mounts) {
        Place* place = &m_top;
        std::string_view path = mount.mountPoint;
        for (std::string_view name = takeName(path); !name.empty(); name = takeName(path)) {
            std::unique_ptr<Place>& below = place->below[std::string{name}];
            if (below == nullptr) {
                below = std::make_unique<Place>();
            }
            place = below.get();
        }
        place->mount = &mount;
    }
}

MountPlaces::Position MountPlaces::find(std::string_view path) const
{
    Position position;
    position.m_mount = m_top.mount;
    position.m_place = &m_top;
    for (std::string_view name = takeName(path); !name.empty(); name = takeName(path)) {
        position = position.child(name);
    }
    return position;
}

} // namespace tallyroom
