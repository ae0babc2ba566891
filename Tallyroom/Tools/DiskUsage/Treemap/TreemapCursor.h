#pragma once

#include "Tools/DiskUsage/Treemap/TreemapNeighbours.h"

#include <optional>

namespace tallyroom {

/// The tile that the keyboard is on. It is known by its entry's location and survives any change of the list.
/// Functions that take a scene expect the one on screen; those that give a bool say whether another entry is
/// the current one now. A value. Main thread.
class TreemapCursor {
public:
    /// Where the current entry is drawn; nothing when there is none, or it is too small to be drawn.
    [[nodiscard]] std::optional<std::size_t> tile() const noexcept { return m_tile; }

    [[nodiscard]] bool hasEntry() const noexcept { return m_url.has_value(); }

    bool set(const TreemapScene& scene, std::size_t tile);

    /// The same for an entry, whose tile need not be there yet; an entry that is not in the list is refused.
    bool set(const TreemapScene& scene, const EntryList& entries, const FileUrl& url);

    bool clear();

    /// Makes the largest tile the current one, whichever it is, until `letGo`.
    void stayAtLargest() { m_staysAtLargest = true; }

    void letGo() { m_staysAtLargest = false; }

    bool move(const TreemapScene& scene, TreemapNeighbours::Direction direction);

    /// Finds the entry again after the tiles were laid out anew. One that is gone from `entries`, deleted
    /// perhaps, hands over to what has taken its place.
    bool follow(const TreemapScene& scene, const EntryList& entries);

private:
    bool set(const TreemapScene& scene, std::optional<std::size_t> tile, const QPoint& anchor);

    std::optional<FileUrl> m_url;
    std::optional<std::size_t> m_tile;
    QPoint m_anchor; // device pixels; where the arrow keys move from
    bool m_staysAtLargest = false;
};

} // namespace tallyroom
