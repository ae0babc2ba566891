#pragma once

#include <QHeaderView>

namespace tallyroom {

/// Column titles in quiet small type, with a mark beside the one that sorts. With the keyboard, left and
/// right choose a title, Space and Enter click it, the down arrow goes to the rows. Main thread.
class EntryTableHeader : public QHeaderView {
    Q_OBJECT

public:
    explicit EntryTableHeader(QWidget* parent);

    /// Shows what the rows are sorted by; -1 for no column.
    void showSortOrder(int column, bool isAscending);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;

private:
    [[nodiscard]] QString title(int column) const;
    void moveChoice(int step);
    void nameChoice();

    int m_chosenColumn = -1; // by the keyboard
    int m_sortColumn = -1;
    bool m_isAscending = false;
};

} // namespace tallyroom
