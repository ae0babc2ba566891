#include "Components/EntryRowDelegate.h"

#include "Components/EntryTableModel.h"
#include "Components/EntryTableView.h"
#include "Components/SelectionCheckbox.h"
#include "Components/SizeBarCell.h"
#include "Components/SymbolIcon.h"
#include "Text/SizeProportion.h"

#include <QPainter>

#include <algorithm>

namespace tallyroom {

namespace {

constexpr int badgePadding = 6;

/// Draws the badge at `left` and gives its width with the gap before the next.
int paintBadge(QPainter& painter, const QRect& line, int left, const EntryBadge& badge)
{
    const Theme& theme = Theme::shared();
    QFont font = theme.small();
    font.setWeight(QFont::DemiBold);
    const QFontMetrics metrics{font};
    const int height = metrics.height() + 4;
    const QRect place{left, line.center().y() - height / 2 + 1,
                      metrics.horizontalAdvance(badge.text) + 2 * badgePadding, height};
    if (place.right() > line.right()) {
        return 0;
    }
    const QColor colour = theme.colour(badge.colour);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.wash(colour, Theme::trackOpacity));
    painter.drawRoundedRect(place, Theme::badgeRadius, Theme::badgeRadius);
    painter.setPen(colour);
    painter.setFont(font);
    painter.drawText(place, Qt::AlignCenter, badge.text);
    return place.width() + Theme::gap;
}

int badgesWidth(const std::vector<EntryBadge>& badges)
{
    QFont font = Theme::shared().small();
    font.setWeight(QFont::DemiBold);
    const QFontMetrics metrics{font};
    int width = 0;
    for (const EntryBadge& badge : badges) {
        width += metrics.horizontalAdvance(badge.text) + 2 * badgePadding + Theme::gap;
    }
    return width;
}

} // namespace

EntryRowDelegate::EntryRowDelegate(const EntryTableModel& model, EntryTableView& view)
    : QStyledItemDelegate(&view), m_model(model), m_view(view)
{}

void EntryRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    paintRow(*painter, option, index);
    const Entry& entry = m_model.entry(index.row());
    const QRect cell = option.rect;
    if (index.column() == EntryTableModel::checkColumn) {
        const bool isHovered = index.row() == m_view.hoveredRow();
        SelectionCheckbox::paintBox(
            *painter, {cell.left() + Theme::margin, cell.top(), Theme::checkBoxSize, cell.height()},
            {m_model.isChecked(index.row()), true, isHovered, false});
    } else if (index.column() == EntryTableModel::nameColumn) {
        paintName(*painter, cell, entry);
    } else if (index.column() == m_model.sizeColumn()) {
        paintSize(*painter, cell, entry);
    } else {
        painter->setPen(Theme::shared().colour(Theme::Colour::secondary));
        painter->setFont(Theme::shared().body());
        const QString text = painter->fontMetrics().elidedText(index.data().toString(), Qt::ElideRight,
                                                               cell.width() - Theme::gap);
        painter->drawText(cell, Qt::AlignLeft | Qt::AlignVCenter, text);
    }
    painter->restore();
}

void EntryRowDelegate::paintRow(QPainter& painter, const QStyleOptionViewItem& option,
                                const QModelIndex& index) const
{
    const Theme& theme = Theme::shared();
    const bool isCurrent = index.row() == m_view.currentIndex().row();
    const QColor accent = theme.colour(Theme::Colour::accent);
    if (isCurrent) {
        painter.fillRect(option.rect, theme.wash(accent, m_view.hasFocus() ? 0.16 : 0.08));
    } else if (index.row() == m_view.hoveredRow()) {
        painter.fillRect(option.rect, theme.colour(Theme::Colour::hover));
    } else if (index.row() % 2 == 0) {
        painter.fillRect(option.rect, theme.colour(Theme::Colour::rowStripe));
    }
    if (isCurrent && m_view.hasFocus() && index.column() == EntryTableModel::checkColumn) {
        painter.fillRect(QRect{option.rect.topLeft(), QSize{3, option.rect.height()}}, accent);
    }
}

QColor EntryRowDelegate::tint(const Entry& entry) const
{
    return m_model.style().tint ? m_model.style().tint(entry) : Theme::shared().tint(FileKind::of(entry));
}

void EntryRowDelegate::paintName(QPainter& painter, QRect cell, const Entry& entry) const
{
    const EntryTableStyle& style = m_model.style();
    const Theme& theme = Theme::shared();
    const std::string symbol =
        style.symbol ? style.symbol(entry) : std::string{FileKind::of(entry).symbolName()};
    SymbolIcon::paint(painter, {cell.left(), cell.top(), Theme::iconSize, cell.height()}, symbol,
                      tint(entry));
    cell.adjust(Theme::iconSize + Theme::gap + 2, 0, -Theme::gap, 0);
    if (!style.secondLine) {
        paintNameLine(painter, cell, entry);
        return;
    }
    const int lineHeight = QFontMetrics{theme.body()}.height();
    const int smallHeight = QFontMetrics{theme.small()}.height();
    const int top = cell.top() + (cell.height() - lineHeight - smallHeight) / 2;
    paintNameLine(painter, {cell.left(), top, cell.width(), lineHeight}, entry);
    painter.setFont(theme.small());
    painter.setPen(theme.colour(Theme::Colour::secondary));
    const QRect second{cell.left(), top + lineHeight, cell.width(), smallHeight};
    painter.drawText(
        second, Qt::AlignLeft | Qt::AlignVCenter,
        painter.fontMetrics().elidedText(style.secondLine(entry), Qt::ElideMiddle, second.width()));
}

void EntryRowDelegate::paintNameLine(QPainter& painter, const QRect& line, const Entry& entry) const
{
    const EntryTableStyle& style = m_model.style();
    const Theme& theme = Theme::shared();
    const bool hasChevron = style.showsChevronForDirectories && entry.isDirectory;
    const std::vector<EntryBadge> badges = style.badges ? style.badges(entry) : std::vector<EntryBadge>{};
    const int trailing = badgesWidth(badges) + (hasChevron ? Theme::smallIconSize + Theme::gap : 0);
    painter.setFont(style.hasStrongNames ? theme.strong() : theme.body());
    const QFontMetrics metrics = painter.fontMetrics();
    const int room = std::max(line.width() - trailing, line.width() / 2);
    const QString name = metrics.elidedText(m_model.nameText(entry), Qt::ElideMiddle, room);
    painter.setPen(theme.colour(Theme::Colour::text));
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, name);
    int left = line.left() + metrics.horizontalAdvance(name) + Theme::gap;
    if (hasChevron) {
        SymbolIcon::paint(painter, {left, line.top(), Theme::smallIconSize, line.height()}, "chevron.right",
                          theme.colour(Theme::Colour::secondary), Theme::smallIconSize);
        left += Theme::smallIconSize + Theme::gap;
    }
    for (const EntryBadge& badge : badges) {
        left += paintBadge(painter, line, left, badge);
    }
}

void EntryRowDelegate::paintSize(QPainter& painter, const QRect& cell, const Entry& entry) const
{
    const double fraction = SizeProportion::fraction(entry.sizeBytes, m_model.rows().largestSize());
    SizeBarCell{entry.sizeBytes, fraction, tint(entry)}.paint(
        painter, cell.adjusted(0, 0, -m_view.trailingMargin(), 0));
}

} // namespace tallyroom
