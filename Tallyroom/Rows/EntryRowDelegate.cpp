#include "Rows/EntryRowDelegate.h"

#include "Controls/CheckBox.h"
#include "Controls/Spinner.h"
#include "Rows/EntryTable.h"
#include "Rows/RowPainting.h"
#include "Rows/SizeBarCell.h"
#include "Text/SizeProportion.h"
#include "Text/UnreadText.h"
#include "Theme/FileKindPresentation.h"
#include "Theme/SymbolIcon.h"

#include <QPainter>

#include <algorithm>

namespace tallyroom {

EntryRowDelegate::EntryRowDelegate(const EntryTableModel& model, EntryTable& view)
    : QStyledItemDelegate(&view), m_model(model), m_view(view)
{
    m_clock.start();
}

void EntryRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    RowPainting::paintGround(*painter, option.rect, index, m_view, RowPainting::Ground::striped);
    const Entry& entry = m_model.entry(index.row());
    const QRect cell = option.rect;
    if (index.column() == EntryTableModel::checkColumn && m_model.isRunning(index.row())) {
        const int top = cell.top() + (cell.height() - Theme::checkBoxSize) / 2;
        Spinner::paint(*painter, {cell.left() + Theme::margin, top, Theme::checkBoxSize, Theme::checkBoxSize},
                       m_clock.elapsed());
    } else if (index.column() == EntryTableModel::checkColumn) {
        const bool isHovered = index.row() == m_view.hoveredRow();
        CheckBox::paintBox(
            *painter, {cell.left() + Theme::margin, cell.top(), Theme::checkBoxSize, cell.height()},
            {m_model.isChecked(index.row()), true, isHovered, false, m_model.isPartlyChecked(index.row())});
    } else if (index.column() == EntryTableModel::nameColumn) {
        paintName(*painter, cell, index.row(), entry);
    } else if (index.column() == m_model.sizeColumn()) {
        paintSize(*painter, cell, index.row(), entry);
    } else {
        painter->setPen(Theme::shared().colour(Theme::Colour::secondary));
        painter->setFont(Theme::shared().body());
        const QRect place = cell.adjusted(0, 0, -2 * Theme::gap, 0);
        const bool isNumeric = m_model.ownColumn(index.column())->isNumeric;
        const QString text =
            painter->fontMetrics().elidedText(index.data().toString(), Qt::ElideRight, place.width());
        const Qt::Alignment alignment = (isNumeric ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
        painter->drawText(place, static_cast<int>(alignment), text);
    }
    painter->restore();
}

QColor EntryRowDelegate::tint(int row, const Entry& entry) const
{
    if (m_model.isRunning(row)) {
        return Theme::shared().colour(Theme::Colour::secondary);
    }
    return m_model.style().tint ? m_model.style().tint(entry) : Theme::shared().tint(drawnKind(entry));
}

void EntryRowDelegate::paintName(QPainter& painter, QRect cell, int row, const Entry& entry) const
{
    const EntryTableStyle& style = m_model.style();
    const Theme& theme = Theme::shared();
    const std::string symbol = style.symbol ? style.symbol(entry) : symbolName(entry);
    SymbolIcon::paint(painter, {cell.left(), cell.top(), Theme::iconSize, cell.height()}, symbol,
                      tint(row, entry));
    cell.adjust(Theme::iconSize + Theme::gap + 2, 0, -Theme::gap, 0);
    if (!style.secondLine) {
        paintNameLine(painter, cell, row, entry);
        return;
    }
    const int lineHeight = QFontMetrics{theme.body()}.height();
    const int smallHeight = QFontMetrics{theme.small()}.height();
    const int top = cell.top() + (cell.height() - lineHeight - smallHeight) / 2;
    paintNameLine(painter, {cell.left(), top, cell.width(), lineHeight}, row, entry);
    painter.setFont(theme.small());
    painter.setPen(theme.colour(Theme::Colour::secondary));
    const QRect second{cell.left(), top + lineHeight, cell.width(), smallHeight};
    painter.drawText(
        second, Qt::AlignLeft | Qt::AlignVCenter,
        painter.fontMetrics().elidedText(style.secondLine(entry), Qt::ElideMiddle, second.width()));
}

void EntryRowDelegate::paintNameLine(QPainter& painter, const QRect& line, int row, const Entry& entry) const
{
    const EntryTableStyle& style = m_model.style();
    const Theme& theme = Theme::shared();
    const bool hasChevron = style.showsChevronForDirectories && entry.isDirectory;
    const std::vector<EntryBadge> badges = style.badges ? style.badges(entry) : std::vector<EntryBadge>{};
    const int trailing =
        RowPainting::badgesWidth(badges) + (hasChevron ? Theme::smallIconSize + Theme::gap : 0);
    painter.setFont(style.hasStrongNames ? theme.strong() : theme.body());
    const QFontMetrics metrics = painter.fontMetrics();
    const int room = std::max(line.width() - trailing, line.width() / 3); // the path is below
    const QString name = metrics.elidedText(m_model.nameText(entry), Qt::ElideMiddle, room);
    painter.setPen(theme.colour(m_model.isRunning(row) ? Theme::Colour::secondary : Theme::Colour::text));
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, name);
    int left = line.left() + metrics.horizontalAdvance(name) + Theme::gap;
    if (hasChevron) {
        SymbolIcon::paint(painter, {left, line.top(), Theme::smallIconSize, line.height()}, "chevron.right",
                          theme.colour(Theme::Colour::secondary), Theme::smallIconSize);
        left += Theme::smallIconSize + Theme::gap;
    }
    RowPainting::paintBadges(painter, line, left, badges);
}

void EntryRowDelegate::paintSize(QPainter& painter, const QRect& cell, int row, const Entry& entry) const
{
    const double fraction = SizeProportion::fraction(entry.sizeBytes, m_model.largestSize());
    SizeBarCell{entry.sizeBytes, fraction, tint(row, entry), UnreadText::size(entry)}.paint(
        painter, cell.adjusted(0, 0, -m_view.trailingMargin(), 0));
}

} // namespace tallyroom
