#pragma once

#include <QElapsedTimer>
#include <QStyledItemDelegate>

namespace tallyroom {

class EntryTableModel;
class EntryTable;
struct Entry;

/// Paints the cells of an `EntryTable`: box, icon and name, own texts, size bar. Main thread.
class EntryRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    EntryRowDelegate(const EntryTableModel& model, EntryTable& view);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

private:
    void paintName(QPainter& painter, QRect cell, int row, const Entry& entry) const;
    void paintNameLine(QPainter& painter, const QRect& line, int row, const Entry& entry) const;
    void paintSize(QPainter& painter, const QRect& cell, int row, const Entry& entry) const;
    [[nodiscard]] QColor tint(int row, const Entry& entry) const;

    const EntryTableModel& m_model;
    EntryTable& m_view;
    QElapsedTimer m_clock; // turns the marks of what is being measured
};

} // namespace tallyroom
