#pragma once

#include "Rows/Selection.h"
#include "Tools/DiskUsage/Treemap/TreemapCursor.h"
#include "Tools/DiskUsage/Treemap/TreemapPainter.h"

#include <QTimer>
#include <QWidget>

#include <optional>

namespace tallyroom {

/// The children of a folder as tiles, areas in proportion to sizes, colours by kind. A click makes a tile the
/// current one; with Ctrl, or on the tile's box, it checks; a double click enters or reveals. The keys do the
/// same. Holds no truth: it says what was asked for, and the owner comes back with the new selection or list.
/// Main thread.
class TreemapView : public QWidget {
    Q_OBJECT

public:
    /// `selection` must outlive the view.
    explicit TreemapView(const Selection& selection, QWidget* parent = nullptr);

    /// Shows the whole list. Cheap, and calm however often it comes: of a burst of lists about ten a second
    /// are laid out and drawn, the last one always.
    void setEntries(EntryList entries);

    /// Shows the entries at the positions `visible`; shares stay those of the whole list.
    void setEntries(EntryList entries, std::vector<std::uint32_t> visible);

    /// The entry that the keyboard is on; nothing while there is none.
    [[nodiscard]] std::optional<Entry> currentEntry() const;

    /// What is on screen; what a click hits is what is seen, also while a newer list waits.
    [[nodiscard]] const TreemapScene& scene() const noexcept { return m_scene; }

    /// Where a tile is painted, in the view's coordinates.
    [[nodiscard]] QRectF tileRect(std::size_t tile) const;

    [[nodiscard]] std::optional<std::size_t> currentTile() const noexcept { return m_cursor.tile(); }

    [[nodiscard]] bool isChecked(std::size_t tile) const;

    /// Moves the keyboard's place to the tile.
    void setCurrentTile(std::size_t tile);

    /// The same for an entry, whose tile need not be there yet.
    void setCurrentEntry(const FileUrl& url);

    /// Forgets the current tile: another folder is about to be shown. For someone who has just pressed Enter
    /// the largest tile is the current one from then on, until the next key or click.
    void startOver();

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The user checked or unchecked the entry.
    void selectionToggled(const tallyroom::FileUrl& url);
    /// Double click or Enter: a folder is to be entered, a file to be revealed.
    void activated(const tallyroom::Entry& entry);
    void contextMenuRequested(const tallyroom::Entry& entry, const QPoint& globalPosition);
    void currentChanged();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    struct Press {
        FileUrl url;
        bool checks = false; ///< on the box, or with Ctrl
    };

    void layOut();
    void paintMap();
    void refreshTile(std::size_t tile);
    void showChecks(std::optional<std::uint32_t> position);
    void announceCurrent(bool isAnother);
    void hover(std::optional<std::size_t> tile);
    [[nodiscard]] std::optional<std::size_t> tileAt(const QPointF& position) const;
    [[nodiscard]] bool isOnCheckBox(const QPointF& position) const;
    [[nodiscard]] QString toolTipAt(const QPointF& position) const;

    const Selection& m_selection;
    EntryList m_entries;
    std::vector<std::uint32_t> m_visible;

    TreemapScene m_scene;
    std::optional<TreemapPainter> m_painter; // none after the theme changed
    QImage m_map;                            // null when it is to be painted anew
    bool m_isStale = false;                  // a newer list waits for the burst's end, or for being shown
    QTimer m_burst;

    TreemapCursor m_cursor;
    bool m_isEntering = false; // by the key
    std::optional<QPointF> m_pointer;
    std::optional<std::size_t> m_hoveredTile; // what is under m_pointer in m_scene
    std::optional<Press> m_pressed;
};

} // namespace tallyroom
