#pragma once

#include "Model/EntryList.h"
#include "Model/FileKind.h"

#include <QRect>

#include <cstdint>
#include <optional>
#include <vector>

namespace tallyroom {

/// A list of entries laid out at one size: which tiles there are, where they lie, who is beside whom. All
/// lengths are device pixels, so that edges are sharp at any scale. Never changed once made. Main thread.
class TreemapScene {
public:
    struct Tile {
        /// The tile and the gap to its right and below it: tiles share edges, every pixel has one owner.
        QRect cell;
        /// Position in the list of entries.
        std::uint32_t entry = 0;
        FileKind kind = FileKind::other;
    };

    /// What is too small to be drawn one by one.
    struct Crumbs {
        std::vector<QRect> cells;
        std::size_t count = 0;
        double sizeBytes = 0;
    };

    enum class Direction { left, right, up, down };

    TreemapScene() = default;

    /// Lays out `visible`, positions in `entries`, within `area`, larger first whatever their order.
    /// `scale` is the device pixels of a device-independent one. O(n) for a ranked list.
    TreemapScene(EntryList entries, std::vector<std::uint32_t> visible, const QRect& area, double scale);

    /// Larger first; the place of a tile in this list is its number below.
    [[nodiscard]] const std::vector<Tile>& tiles() const noexcept { return m_tiles; }

    [[nodiscard]] const Crumbs& crumbs() const noexcept { return m_crumbs; }

    [[nodiscard]] const Entry& entry(std::size_t tile) const { return m_entries[m_tiles[tile].entry]; }

    [[nodiscard]] const EntryList& entries() const noexcept { return m_entries; }

    /// The part of the cell that is painted: without the gap, which shrinks with the tile.
    [[nodiscard]] QRect painted(std::size_t tile) const;

    /// The entry's part of the whole folder, hidden entries included, within [0, 1].
    [[nodiscard]] double share(std::size_t tile) const;

    /// O(number of tiles), as are the next two.
    [[nodiscard]] std::optional<std::size_t> tileAt(const QPoint& pixel) const;

    [[nodiscard]] std::optional<std::size_t> find(const FileUrl& url) const;

    /// The nearest tile beyond that edge of `from`, among those that touch the level of `anchor`, or else
    /// lie closest to it; nothing at the border.
    [[nodiscard]] std::optional<std::size_t> neighbour(std::size_t from, Direction direction,
                                                       const QPoint& anchor) const;

    /// Where to go on from in `tile` after a move there: its middle, but on the level of `anchor` across the
    /// direction, so that the way back leads back.
    [[nodiscard]] QPoint anchorWithin(std::size_t tile, Direction direction, const QPoint& anchor) const;

private:
    void place(const std::vector<std::uint32_t>& visible, const std::vector<double>& weights);
    void findKinds();

    EntryList m_entries;
    QRect m_area;
    double m_scale = 1;
    double m_folderBytes = 0;
    std::vector<Tile> m_tiles;
    Crumbs m_crumbs;
};

} // namespace tallyroom
