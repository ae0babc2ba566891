#pragma once

#include <QHeaderView>

namespace tallyroom {

/// Column titles in quiet small type, with a mark beside the one that sorts. Main thread.
class EntryTableHeader : public QHeaderView {
    Q_OBJECT

public:
    explicit EntryTableHeader(QWidget* parent);

    /// Shows what the rows are sorted by; -1 for no column.
    void showSortOrder(int column, bool isAscending);

protected:
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;

private:
    int m_sortColumn = -1;
    bool m_isAscending = false;
};

} // namespace tallyroom
