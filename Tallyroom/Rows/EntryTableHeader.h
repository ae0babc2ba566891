#pragma once

#include "Controls/OwnKeys.h"

#include <QHeaderView>

#include <optional>

namespace tallyroom {

/// Column titles in quiet small type, with a mark beside the one that sorts. With the keyboard, left and
/// right choose a title, with Ctrl they change its column's width, Space and Enter click it, the down arrow
/// goes to the rows. The mouse takes a column by its left edge: columns stand to the right. Main thread.
class EntryTableHeader : public QHeaderView {
    Q_OBJECT

public:
    /// The model's answer whether people may change a column's width.
    static constexpr int widthRole = Qt::UserRole;

    explicit EntryTableHeader(QWidget* parent);

    /// What its keys do.
    [[nodiscard]] static std::vector<ToldKeys> keys();

    /// Shows what the rows are sorted by; -1 for no column.
    void showSortOrder(int column, bool isAscending);

Q_SIGNALS:
    /// A right click, or the menu key.
    void menuRequested(const QPoint& globalPosition);
    /// That column is to be so wide.
    void widthChosen(int column, int width);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;

private:
    enum class Act { previous, next, sort, narrow, widen, leave };

    [[nodiscard]] static const OwnKeys<Act>& ownKeys();
    void changeWidth(int step);
    [[nodiscard]] QString title(int column) const;
    /// The column whose left edge is at `x`; none for those that keep their width.
    [[nodiscard]] std::optional<int> edgeAt(int x) const;
    void moveChoice(int step);
    void nameChoice();

    /// An edge under the mouse.
    struct Drag {
        int column = 0;
        int width = 0; ///< when it began, with
        int x = 0;
    };

    std::optional<Drag> m_drag;
    int m_chosenColumn = -1; // by the keyboard
    int m_sortColumn = -1;
    bool m_isAscending = false;
};

} // namespace tallyroom
