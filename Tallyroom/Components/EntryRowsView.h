#pragma once

#include "Model/FileUrl.h"

#include <QTableView>

#include <optional>

namespace tallyroom {

class EntryRowsModel;

/// Shows rows of entries and turns mouse and keys into checks and requests: arrows move, Enter activates,
/// Space and a click on a box check, with Shift the range since the last one. Main thread.
class EntryRowsView : public QTableView {
    Q_OBJECT

public:
    /// No current row, and the top of the list.
    void startOver();

    /// Makes `row` the current one and scrolls to it.
    void goTo(int row);

    /// What stays free on the right of the rows, the scroll bar aside.
    [[nodiscard]] int trailingMargin() const;

    /// The row under the mouse, -1 for none.
    [[nodiscard]] int hoveredRow() const { return m_hoveredRow; }

    /// The row that the keyboard is on, -1 for none.
    [[nodiscard]] int currentRow() const { return currentIndex().row(); }

Q_SIGNALS:
    void rowActivated(int row);
    void rowCopyRequested(int row);
    void rowMenuRequested(int row, const QPoint& globalPosition);
    /// Space on a row that shows no entry.
    void sectionToggled(int row);

protected:
    EntryRowsView(EntryRowsModel& model, int rowHeight, QWidget* parent);

    /// Without scrolling.
    void makeCurrent(int row);
    /// The mouse stands still, but maybe over another row.
    void hoverAgain();

    void keyPressEvent(QKeyEvent* event) override;
    void keyboardSearch(const QString& text) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;

private:
    /// A press on a box, which counts once it is released there.
    struct Press {
        FileUrl url;
        QPoint position;
    };

    void setUp(int rowHeight);
    void hover(const QPoint& position);
    void goToFirstOnScreen();
    void announceCheck();
    void toggle(int row, Qt::KeyboardModifiers modifiers);
    void toggle(const FileUrl& url, int row, Qt::KeyboardModifiers modifiers);
    [[nodiscard]] std::optional<FileUrl> urlAt(int row) const;

    EntryRowsModel& m_rows;
    std::optional<Press> m_press;
    std::optional<FileUrl> m_rangeStart;
    int m_hoveredRow = -1;
};

} // namespace tallyroom
