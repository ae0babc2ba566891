#pragma once

#include <QStyledItemDelegate>

namespace tallyroom {

class DuplicateTableModel;
class EntryRows;

/// Paints the rows of a `DuplicateTable`: groups as sections, copies below them. Main thread.
class DuplicateRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    DuplicateRowDelegate(const DuplicateTableModel& model, EntryRows& view);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

private:
    void paintHead(QPainter& painter, const QRect& cell, const QModelIndex& index) const;
    void paintCopy(QPainter& painter, const QRect& cell, const QModelIndex& index) const;
    void paintPath(QPainter& painter, const QRect& cell, int row) const;

    const DuplicateTableModel& m_model;
    EntryRows& m_view;
};

} // namespace tallyroom
