#pragma once

#include "Model/EntryList.h"
#include "Model/FileKind.h"
#include "Rows/PositionSet.h"
#include "Treemap/Outline.h"
#include "Treemap/SteadyLayout.h"

#include <QRect>

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

namespace tallyroom {

/// A folder laid out at one size, several levels at once: which tiles there are, where they lie, who holds
/// and who is beside whom. All lengths are device pixels, so that edges are sharp at any scale. Never changed
/// once made. Main thread.
class TreemapScene {
public:
    /// What there is to lay out.
    struct Content {
        /// The folder's listing, and which of its positions are shown: the first level.
        EntryList entries;
        std::vector<std::uint32_t> visible;
        /// What lies deeper; may be none, or lag behind the listing. An outline of a folder further down
        /// tells more of it than one that begins above.
        std::vector<SharedOutline> outlines;
    };

    /// Where to lay it out.
    struct Frame {
        QRect area;       ///< of the whole folder
        QRect window;     ///< the part of it that is on screen; folders outside are not opened
        double scale = 1; ///< the device pixels of a device-independent one
    };

    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
    static constexpr std::size_t mostTiles = 20'000;

    struct Tile {
        /// The tile and the gap to its right and below it: siblings share edges, every pixel of what holds
        /// them has one owner.
        QRect cell;
        /// Where a folder's children lie; empty unless they are drawn.
        QRect content;
        /// The tile of the folder that holds it; `none` on the first level.
        std::uint32_t parent = none;
        /// A folder's tiles follow each other.
        std::uint32_t firstChild = 0;
        std::uint32_t childCount = 0;
        /// What of its content is too small to be drawn one by one, in `rests`; `none` when nothing is.
        std::uint32_t rest = none;
        /// Of the first level: the position in the list of entries.
        std::uint32_t position = none;
        std::uint32_t outline = none; ///< which one tells of it
        std::uint32_t node = none;    ///< in that outline
        std::uint32_t level = 0;
        FileKind kind = FileKind::other;
    };

    /// What is too small to be drawn one by one in one folder.
    struct Rest {
        std::uint32_t parent = none; ///< its tile
        std::vector<QRect> cells;
        std::size_t count = 0;
        std::int64_t sizeBytes = 0;
    };

    TreemapScene() = default;

    /// Larger first on each level, whatever the order of `visible`. Larger folders are opened first, until
    /// there are `mostTiles`. `layout` remembers where things were.
    TreemapScene(Content content, const Frame& frame, SteadyLayout& layout);

    /// The first level first, and every folder before what it holds; the place of a tile in this list is its
    /// number below.
    [[nodiscard]] const std::vector<Tile>& tiles() const noexcept { return m_tiles; }

    /// How many tiles the first level has.
    [[nodiscard]] std::size_t topCount() const noexcept { return m_topCount; }

    [[nodiscard]] const std::vector<Rest>& rests() const noexcept { return m_rests; }

    /// The first level's; nothing when all of it is drawn.
    [[nodiscard]] const Rest* topRest() const;

    [[nodiscard]] const Entry& entry(std::size_t tile) const;

    /// What the outlines tell of a tile; nothing when none knows it.
    [[nodiscard]] const Outline::Node* node(std::size_t tile) const;

    [[nodiscard]] const EntryList& entries() const noexcept { return m_content.entries; }

    [[nodiscard]] bool isOpen(std::size_t tile) const { return !m_tiles[tile].content.isEmpty(); }

    /// The part of the cell that is painted: without the gap, which shrinks with the tile.
    [[nodiscard]] QRect painted(std::size_t tile) const;

    /// Where an open folder's name stands; empty when it has no room for one.
    [[nodiscard]] QRect header(std::size_t tile) const;

    /// The entry's part of the whole folder, hidden entries included, and of the folder that holds it, within
    /// [0, 1].
    [[nodiscard]] double share(std::size_t tile) const;
    [[nodiscard]] double shareOfParent(std::size_t tile) const;

    /// How many items a folder holds; nothing where it is not known.
    [[nodiscard]] std::optional<std::size_t> itemCount(std::size_t tile) const;

    /// The bytes of every kind among what is drawn and not open; what is not told one by one, closed folders
    /// among it, counts as a folder's. They add up to what is shown.
    [[nodiscard]] std::array<std::int64_t, 11> bytesByKind() const;

    /// The innermost tile there. O(siblings) a level, as is the next one.
    [[nodiscard]] std::optional<std::size_t> tileAt(const QPoint& pixel) const;

    [[nodiscard]] std::optional<std::size_t> find(const FileUrl& url) const;

    /// The rest there; nothing where a tile is.
    [[nodiscard]] const Rest* restAt(const QPoint& pixel) const;

    /// The numbers of the tiles that the same folder holds: the first one and the one after the last.
    [[nodiscard]] std::pair<std::size_t, std::size_t> siblings(std::size_t tile) const;
    [[nodiscard]] std::pair<std::size_t, std::size_t> children(std::size_t tile) const;

private:
    struct Child;

    void placeTop(SteadyLayout& layout);
    void open(std::size_t tile, SteadyLayout& layout);
    void place(const std::vector<Child>& children, std::int64_t restBytes, std::size_t restCount,
               std::uint32_t parent, SteadyLayout& layout);
    void findNode(Tile& tile) const;
    void findKinds();
    [[nodiscard]] QRect contentOf(std::size_t tile) const;
    [[nodiscard]] int pixels(double length) const;
    [[nodiscard]] std::optional<std::size_t> tileAt(const QPoint& pixel, std::uint32_t& inside) const;

    Content m_content;
    Frame m_frame;
    double m_folderBytes = 0;
    std::size_t m_topCount = 0;
    std::vector<Tile> m_tiles;
    std::vector<Rest> m_rests;
    std::uint32_t m_topRest = none;
};

} // namespace tallyroom
