#pragma once

#include "Rows/Selection.h"
#include "Tools/DiskUsage/Treemap/TreemapCursor.h"
#include "Tools/DiskUsage/Treemap/TreemapGrowth.h"
#include "Tools/DiskUsage/Treemap/TreemapPainter.h"
#include "Tools/DiskUsage/Treemap/TreemapZoom.h"

#include <QTimer>
#include <QWidget>

#include <optional>

namespace tallyroom {

/// What a map draws: a folder as tiles within tiles, several levels at once, areas in proportion to sizes,
/// colours by kind; where the keyboard and the pointer are; how closely one looks. Holds no truth of its own:
/// it says what was asked for, and the owner comes back with the new selection or list. Main thread.
class TreemapCanvas : public QWidget {
    Q_OBJECT

public:
    /// Shows the entries at the positions `visible`; shares stay those of the whole list. Cheap, and calm
    /// however often it comes: of a burst of lists about ten a second are laid out and drawn, the last one
    /// always.
    void setEntries(EntryList entries, std::vector<std::uint32_t> visible);

    /// What lies deeper, as `TreemapScene::Content` has it. As cheap and calm.
    void setOutlines(std::vector<SharedOutline> outlines);

    /// Dims what is of another kind.
    void setDistinguished(const std::optional<FileKind>& kind);

    /// What is on screen; what a click hits is what is seen, also while a newer list waits.
    [[nodiscard]] const TreemapScene& scene() const noexcept { return m_scene; }

    /// Where a tile is painted, in the view's coordinates.
    [[nodiscard]] QRectF tileRect(std::size_t tile) const;

    /// Where a click checks it; nothing where its box has no room.
    [[nodiscard]] std::optional<QRectF> boxOf(std::size_t tile) const;

    [[nodiscard]] std::optional<std::size_t> currentTile() const noexcept { return m_cursor.tile(); }

    /// The entry that the keyboard is on; nothing while there is none.
    [[nodiscard]] std::optional<Entry> currentEntry() const;

    /// The tile under the pointer, else the current one.
    [[nodiscard]] std::optional<std::size_t> pointedTile() const;

    /// What is too small to be drawn, under the pointer.
    [[nodiscard]] const TreemapScene::Rest* pointedRest() const;

    /// Whether it is checked by itself, and whether a folder that holds it is.
    [[nodiscard]] bool isChecked(std::size_t tile) const;
    [[nodiscard]] bool isCovered(std::size_t tile) const;

    /// Moves the keyboard's place to the tile.
    void setCurrentTile(std::size_t tile);

    /// The same for an entry, whose tile need not be there yet. After `forgetCurrent` the map shrinks to it,
    /// once: one comes out of it.
    void setCurrentEntry(const FileUrl& url);

    /// Forgets the current tile: another folder is about to be shown. For someone who has just pressed Enter
    /// the largest tile is the current one from then on, until the next key or click.
    void forgetCurrent();

    /// Enters a folder, reveals a file.
    void activate(std::size_t tile);

    [[nodiscard]] const TreemapZoom& magnification() const { return m_zoom; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The user checked or unchecked the entry.
    void selectionToggled(const tallyroom::Entry& entry);
    /// Double click or Enter: a folder is to be entered, a file to be revealed.
    void activated(const tallyroom::Entry& entry);
    void contextMenuRequested(const tallyroom::Entry& entry, const QPoint& globalPosition);
    void currentChanged();
    /// Another place is pointed at.
    void pointedChanged();
    /// Other tiles are drawn.
    void laidOut();
    /// The folder fills much of the window: more of it can be shown.
    void lookedCloser(const tallyroom::FileUrl& folder);

protected:
    /// `selection` must outlive the canvas.
    TreemapCanvas(const Selection& selection, QWidget* parent);

    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

    [[nodiscard]] TreemapCursor& cursor() { return m_cursor; }

    /// For as long as the key is handled.
    void setEntering(bool isEntering) { m_isEntering = isEntering; }

    void announceCurrent(bool isAnother);
    void pointAt(const std::optional<QPointF>& position);
    void zoom(double by, const QPointF& place);
    void moveBy(const QPointF& way);
    void fit();

    /// Zooms out or moves until the tile is on screen.
    void bringIntoView(std::size_t tile);

    [[nodiscard]] QPoint pixelAt(const QPointF& position) const;
    [[nodiscard]] std::optional<std::size_t> tileAt(const QPointF& position) const;

private:
    void showSoon(bool isUrgent);
    void layOut();
    void paintMap();
    void paintAgain();
    void showChecks(std::optional<std::uint32_t> position);
    void hover(std::optional<std::size_t> tile);
    void comeOut();
    void lookCloser(const QPointF& place);
    [[nodiscard]] QRectF mapArea() const;
    [[nodiscard]] TreemapPainter::Look lookOf(std::size_t tile) const;

    const Selection& m_selection;
    TreemapScene::Content m_content;
    std::optional<FileKind> m_distinguished;

    SteadyLayout m_layout;
    TreemapScene m_scene;
    std::optional<TreemapPainter> m_painter; // none after the theme changed
    QImage m_map;                            // null when it is to be painted anew
    bool m_isStale = false;                  // a newer list waits for the burst's end, or for being shown
    QTimer m_burst;
    TreemapZoom m_zoom;
    TreemapGrowth m_growth;

    TreemapCursor m_cursor;
    bool m_isEntering = false;  // by the key
    bool m_isElsewhere = false; // another folder was shown last
    bool m_isComingOut = false; // as soon as the tile is there that one comes out of
    std::optional<QPointF> m_pointer;
    std::optional<std::size_t> m_hoveredTile; // what is under m_pointer in m_scene
};

} // namespace tallyroom
