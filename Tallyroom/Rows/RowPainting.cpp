#include "Rows/RowPainting.h"

#include "Rows/EntryRows.h"
#include "Rows/EntryRowsModel.h"
#include "Theme/Theme.h"

#include <QPainter>

#include <algorithm>

namespace tallyroom::RowPainting {

namespace {

constexpr int badgePadding = 6;

QFont badgeFont()
{
    QFont font = Theme::shared().small();
    font.setWeight(QFont::DemiBold);
    return font;
}

/// The width with the gap before the next badge; 0 where not even its first letters fit.
int paintBadge(QPainter& painter, const QRect& line, int left, const EntryBadge& badge)
{
    const Theme& theme = Theme::shared();
    const QFont font = badgeFont();
    const QFontMetrics metrics{font};
    const int room = line.right() + 1 - left - 2 * badgePadding;
    if (room < metrics.horizontalAdvance(badge.text.first(std::min<qsizetype>(badge.text.size(), 3)))) {
        return 0;
    }
    // Half a warning is one, none is not.
    const QString text = metrics.elidedText(badge.text, Qt::ElideRight, room);
    const int height = metrics.height() + 4;
    const QRect place{left, line.center().y() - height / 2 + 1,
                      metrics.horizontalAdvance(text) + 2 * badgePadding, height};
    const QColor colour = theme.colour(badge.colour);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.wash(colour, Theme::trackOpacity));
    painter.drawRoundedRect(place, Theme::badgeRadius, Theme::badgeRadius);
    painter.setPen(colour);
    painter.setFont(font);
    painter.drawText(place, Qt::AlignCenter, text);
    return place.width() + Theme::gap;
}

} // namespace

void paintGround(QPainter& painter, const QRect& cell, const QModelIndex& index, const EntryRows& view,
                 Ground ground)
{
    const Theme& theme = Theme::shared();
    const bool isCurrent = index.row() == view.currentRow();
    const QColor accent = theme.colour(Theme::Colour::accent);
    if (ground == Ground::section) {
        painter.fillRect(cell, theme.colour(Theme::Colour::side));
    }
    if (isCurrent) {
        painter.fillRect(cell, theme.wash(accent, view.hasFocus() ? 0.16 : 0.08));
    } else if (index.row() == view.hoveredRow()) {
        painter.fillRect(cell, theme.colour(Theme::Colour::hover));
    } else if (ground == Ground::striped && index.row() % 2 == 0) {
        painter.fillRect(cell, theme.colour(Theme::Colour::rowStripe));
    }
    if (isCurrent && view.hasFocus() && index.column() == EntryRowsModel::checkColumn) {
        painter.fillRect(QRect{cell.topLeft(), QSize{3, cell.height()}}, accent);
    }
}

void paintBadges(QPainter& painter, const QRect& line, int left, const std::vector<EntryBadge>& badges)
{
    for (const EntryBadge& badge : badges) {
        left += paintBadge(painter, line, left, badge);
    }
}

int badgesWidth(const std::vector<EntryBadge>& badges)
{
    const QFontMetrics metrics{badgeFont()};
    int width = 0;
    for (const EntryBadge& badge : badges) {
        width += metrics.horizontalAdvance(badge.text) + 2 * badgePadding + Theme::gap;
    }
    return width;
}

} // namespace tallyroom::RowPainting
