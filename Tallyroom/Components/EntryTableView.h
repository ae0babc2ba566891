#pragma once

#include "Components/EntryArrangement.h"

#include <QTableView>

#include <optional>

namespace tallyroom {

class EntryTableHeader;
class EntryTableModel;

/// The part of an `EntryTable` that scrolls: keeps the reader's row in place while rows change, and turns
/// mouse and keys into checks and requests. Main thread.
class EntryTableView : public QTableView {
    Q_OBJECT

public:
    EntryTableView(EntryTableModel& model, QWidget* parent);

    /// Makes `row` the current one and scrolls to it.
    void goTo(int row);

    /// No current row, and the top of the list.
    void startOver();

    /// What stays free on the right of the rows, the scroll bar aside.
    [[nodiscard]] int trailingMargin() const;

    /// The row under the mouse, -1 for none.
    [[nodiscard]] int hoveredRow() const { return m_hoveredRow; }

Q_SIGNALS:
    void rowActivated(int row);
    void rowCopyRequested(int row);
    void rowMenuRequested(int row, const QPoint& globalPosition);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyboardSearch(const QString& text) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;

private:
    /// Where the reader is, for the time in which rows change.
    struct Place {
        EntryArrangement rows; ///< that the numbers below belong to
        std::optional<int> currentRow;
        std::optional<int> anchorRow; ///< the row that must stay where it is on screen
        int anchorTop = 0;            ///< its top in the viewport
    };

    /// A press on a box, which counts once it is released there.
    struct Press {
        FileUrl url;
        QPoint position;
    };

    void setUp();
    void layOutColumns();
    void showSortOrder();
    void sortBy(int column);
    void rememberPlace();
    void restorePlace();
    [[nodiscard]] std::optional<int> anchorRow() const;
    [[nodiscard]] int rowAfterChange(int row) const;

    [[nodiscard]] int currentRow() const { return currentIndex().row(); }

    void makeCurrent(int row);
    void hover(const QPoint& position);
    void toggle(const FileUrl& url, int row, Qt::KeyboardModifiers modifiers);

    EntryTableModel& m_model;
    EntryTableHeader* m_header;
    Place m_place;
    std::optional<Press> m_press;
    std::optional<FileUrl> m_rangeStart;
    int m_hoveredRow = -1;
};

} // namespace tallyroom
