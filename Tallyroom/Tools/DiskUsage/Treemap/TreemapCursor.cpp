#include "Tools/DiskUsage/Treemap/TreemapCursor.h"

#include <algorithm>
#include <utility>

namespace tallyroom {

namespace {

bool lists(const EntryList& entries, const FileUrl& url)
{
    return std::ranges::any_of(entries, [&url](const Entry& entry) { return entry.url == url; });
}

} // namespace

bool TreemapCursor::set(const TreemapScene& scene, std::optional<std::size_t> tile, const QPoint& anchor)
{
    m_anchor = anchor;
    m_tile = tile;
    const auto url = tile ? std::optional{scene.entry(*tile).url} : std::nullopt;
    return std::exchange(m_url, url) != url;
}

bool TreemapCursor::set(const TreemapScene& scene, std::size_t tile)
{
    return set(scene, tile, scene.painted(tile).center());
}

bool TreemapCursor::set(const TreemapScene& scene, const EntryList& entries, const FileUrl& url)
{
    if (m_url == url || !(scene.find(url) || lists(entries, url))) {
        return false;
    }
    m_url = url;
    follow(scene, entries);
    return true;
}

bool TreemapCursor::clear()
{
    letGo();
    return set({}, std::nullopt, {});
}

bool TreemapCursor::move(const TreemapScene& scene, TreemapNeighbours::Direction direction)
{
    if (!m_tile) {
        return !scene.tiles().empty() && set(scene, 0);
    }
    const auto next = TreemapNeighbours::neighbour(scene, *m_tile, direction, m_anchor);
    return next && set(scene, next, TreemapNeighbours::anchorWithin(scene, *next, direction, m_anchor));
}

bool TreemapCursor::follow(const TreemapScene& scene, const EntryList& entries)
{
    if (m_staysAtLargest && !scene.tiles().empty()) {
        return set(scene, 0);
    }
    if (!m_url) {
        return false;
    }
    m_tile = scene.find(*m_url);
    if (m_tile) {
        m_anchor = scene.painted(*m_tile).center();
        return false;
    }
    return !lists(entries, *m_url) && set(scene, scene.tileAt(m_anchor), m_anchor);
}

} // namespace tallyroom
