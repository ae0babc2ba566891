#include "Tools/Duplicates/DuplicateRowDelegate.h"

#include "Controls/CheckBox.h"
#include "Rows/EntryRows.h"
#include "Rows/RowPainting.h"
#include "Theme/SymbolIcon.h"
#include "Tools/Duplicates/DuplicateTableModel.h"

#include <QPainter>

#include <algorithm>

namespace tallyroom {

namespace {

constexpr int left = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine;
constexpr int right = Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine;

} // namespace

DuplicateRowDelegate::DuplicateRowDelegate(const DuplicateTableModel& model, EntryRows& view)
    : QStyledItemDelegate(&view), m_model(model), m_view(view)
{}

void DuplicateRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const bool isHead = m_model.isHead(index.row());
    RowPainting::paintGround(*painter, option.rect, index, m_view,
                             isHead ? RowPainting::Ground::section : RowPainting::Ground::plain);
    const QColor line = Theme::shared().colour(Theme::Colour::line);
    painter->fillRect(QRect{option.rect.left(), option.rect.bottom(), option.rect.width(), 1}, line);
    if (index.row() == 0) {
        painter->fillRect(QRect{option.rect.left(), option.rect.top(), option.rect.width(), 1}, line);
    }
    if (isHead) {
        paintHead(*painter, option.rect, index);
    } else {
        paintCopy(*painter, option.rect, index);
    }
    painter->restore();
}

void DuplicateRowDelegate::paintHead(QPainter& painter, const QRect& cell, const QModelIndex& index) const
{
    const Theme& theme = Theme::shared();
    const DuplicateGroup& group = m_model.groupAt(index.row());
    const FileKind kind = FileKind::of(group.entries.front());
    if (index.column() == DuplicateTableModel::checkColumn) {
        SymbolIcon::paint(painter, {cell.left() + Theme::margin, cell.top(), Theme::iconSize, cell.height()},
                          std::string{kind.symbolName()}, theme.tint(kind));
        return;
    }
    const QColor text = theme.colour(Theme::Colour::text);
    const QColor secondary = theme.colour(Theme::Colour::secondary);
    const QFontMetrics body{theme.body()};
    const QFontMetrics strong{theme.strong()};
    if (index.column() == DuplicateTableModel::nameColumn) {
        const QString amount = DuplicateTableModel::amount(group);
        const std::vector<EntryBadge> badges = m_model.badges(index.row());
        const int room = std::max(cell.width() - body.horizontalAdvance(amount) - 3 * Theme::gap -
                                      RowPainting::badgesWidth(badges),
                                  cell.width() / 3);
        const QString name = strong.elidedText(index.data().toString(), Qt::ElideMiddle, room);
        painter.setFont(theme.strong());
        painter.setPen(text);
        painter.drawText(cell, left, name);
        painter.setFont(theme.body());
        painter.setPen(secondary);
        const int amountLeft = strong.horizontalAdvance(name) + Theme::gap;
        painter.drawText(cell.adjusted(amountLeft, 0, 0, 0), left, amount);
        RowPainting::paintBadges(painter, cell.adjusted(0, 0, -Theme::gap, 0),
                                 cell.left() + amountLeft + body.horizontalAdvance(amount) + Theme::gap,
                                 badges);
        return;
    }
    const DuplicateTableModel::Gain gain = DuplicateTableModel::gain(group);
    const QRect place = cell.adjusted(0, 0, -m_view.trailingMargin(), 0);
    painter.setFont(theme.body());
    painter.setPen(secondary);
    painter.drawText(place, right, gain.word);
    painter.setFont(theme.strong());
    painter.setPen(text);
    painter.drawText(place.adjusted(0, 0, -body.horizontalAdvance(gain.word) - Theme::gap, 0), right,
                     gain.bytes);
}

void DuplicateRowDelegate::paintCopy(QPainter& painter, const QRect& cell, const QModelIndex& index) const
{
    const Theme& theme = Theme::shared();
    switch (index.column()) {
    case DuplicateTableModel::checkColumn:
        CheckBox::paintBox(
            painter,
            {cell.left() + Theme::margin + Theme::gap, cell.top(), Theme::checkBoxSize, cell.height()},
            {m_model.isChecked(index.row()), true, index.row() == m_view.hoveredRow(), false});
        break;
    case DuplicateTableModel::nameColumn:
        paintPath(painter, cell, index.row());
        break;
    default:
        painter.setFont(theme.body());
        painter.setPen(theme.colour(Theme::Colour::secondary));
        painter.drawText(cell.adjusted(0, 0, -m_view.trailingMargin(), 0), right, index.data().toString());
        break;
    }
}

void DuplicateRowDelegate::paintPath(QPainter& painter, const QRect& cell, int row) const
{
    const Theme& theme = Theme::shared();
    const std::vector<EntryBadge> badges = m_model.badges(row);
    const QRect line = cell.adjusted(Theme::gap, 0, -Theme::gap, 0);
    const int room = std::max(line.width() - RowPainting::badgesWidth(badges), line.width() / 2);
    const QFontMetrics metrics{theme.body()};
    const QString path = metrics.elidedText(
        m_model.index(row, DuplicateTableModel::nameColumn).data().toString(), Qt::ElideMiddle, room);
    painter.setFont(theme.body());
    painter.setPen(theme.colour(Theme::Colour::text));
    painter.drawText(line, left, path);
    RowPainting::paintBadges(painter, line, line.left() + metrics.horizontalAdvance(path) + Theme::gap,
                             badges);
}

} // namespace tallyroom
