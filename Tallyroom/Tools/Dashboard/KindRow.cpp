#include "Tools/Dashboard/KindRow.h"

#include "Rows/SizeBarCell.h"
#include "Text/KindText.h"
#include "Text/NumberText.h"
#include "Text/SizeProportion.h"
#include "Theme/FileKindPresentation.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"

#include <QPainter>

namespace tallyroom {

namespace {

bool isNarrowAt(int width)
{
    return width < Theme::narrowWidth;
}

} // namespace

KindRow::KindRow(const Content& content, QWidget* parent) : QPushButton(parent), m_content(content)
{
    QSizePolicy policy{QSizePolicy::Preferred, QSizePolicy::Preferred};
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setAccessibleName(KindText::name(m_content.kind.category, m_content.kind.share));
    setAccessibleDescription(QStringLiteral("Montre les plus gros fichiers de ce type."));
    setToolTip(accessibleDescription());
    setCursor(Qt::PointingHandCursor);
    Theme::style(this, Theme::Button::quiet);
    connect(&Theme::shared(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

int KindRow::heightForWidth(int width) const
{
    return isNarrowAt(width) ? Theme::tallRowHeight : Theme::rowHeight;
}

QSize KindRow::sizeHint() const
{
    return {Theme::narrowWidth, Theme::rowHeight};
}

QSize KindRow::minimumSizeHint() const
{
    return {Theme::nameColumnMinimum + Theme::sizeColumnMinimum, Theme::rowHeight};
}

bool KindRow::isNarrow() const
{
    return isNarrowAt(width());
}

void KindRow::paintEvent(QPaintEvent* event)
{
    QPushButton::paintEvent(event); // the ground under the mouse, and the line around what has the keyboard
    const Theme& theme = Theme::shared();
    const CategorySize& category = m_content.kind.category;
    QPainter painter{this};
    if (!m_content.isLast) {
        painter.fillRect(0, height() - 1, width(), 1, theme.colour(Theme::Colour::line));
    }
    QRect room = rect().adjusted(Theme::gap, 0, -Theme::smallIconSize - Theme::gap, 0);
    SymbolIcon::paint(painter, {room.right() + 1, 0, Theme::smallIconSize + Theme::gap, height()},
                      "chevron.right", theme.colour(Theme::Colour::secondary), Theme::smallIconSize);
    SymbolIcon::paint(painter, {room.left(), 0, Theme::iconSize, height()}, category.kind.symbolName(),
                      theme.tint(category.kind));
    const int barWidth = isNarrow() ? Theme::sizeColumnMinimum : Theme::barWidth(width());
    SizeBarCell{category.totalBytes, SizeProportion::fraction(category.totalBytes, m_content.largest),
                theme.tint(category.kind)}
        .paint(painter, room.adjusted(room.width() - barWidth, 0, 0, 0));
    room.adjust(Theme::iconSize + Theme::gap, 0, -barWidth - Theme::margin, 0);

    painter.setFont(theme.body());
    painter.setPen(theme.colour(Theme::Colour::secondary));
    const QString share = KindText::share(m_content.kind.share);
    painter.drawText(room, Qt::AlignRight | Qt::AlignVCenter, share);
    const int shareWidth = painter.fontMetrics().horizontalAdvance(KindText::share(1));
    paintName(painter, room.adjusted(0, 0, -shareWidth - Theme::margin, 0));
}

void KindRow::paintName(QPainter& painter, const QRect& room) const
{
    const Theme& theme = Theme::shared();
    const QString name = displayName(m_content.kind.category.kind);
    const QString files = NumberText::files(m_content.kind.category.fileCount);
    const int nameHeight = painter.fontMetrics().height();
    QRect line = room;
    if (isNarrow()) {
        line.setTop((height() - nameHeight - QFontMetrics{theme.small()}.height()) / 2);
        line.setHeight(nameHeight);
    } else {
        painter.drawText(room, Qt::AlignRight | Qt::AlignVCenter, files);
    }
    painter.setPen(theme.colour(Theme::Colour::text));
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, name);
    if (isNarrow()) {
        painter.setFont(theme.small());
        painter.setPen(theme.colour(Theme::Colour::secondary));
        painter.drawText(line.translated(0, nameHeight), Qt::AlignLeft | Qt::AlignTop, files);
    }
}

} // namespace tallyroom
