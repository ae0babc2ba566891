#include "Tools/DiskUsage/ListChoice.h"

#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"

#include <QPainter>

namespace tallyroom {

ListChoice::ListChoice(Half half, std::string symbol, const QString& name, QWidget* parent)
    : QAbstractButton(parent), m_half(half), m_symbol(std::move(symbol))
{
    setCheckable(true);
    setAccessibleName(name);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize ListChoice::sizeHint() const
{
    return {Theme::controlHeight + Theme::gap / 2, Theme::controlHeight};
}

void ListChoice::paintEvent(QPaintEvent* /*event*/)
{
    const Theme& theme = Theme::shared();
    const QColor accent = theme.colour(Theme::Colour::accent);
    QPainter painter{this};
    painter.setRenderHint(QPainter::Antialiasing);
    // The frame reaches beyond the half's inner edge, where it is cut off: two halves make one frame.
    const int beyond = 2 * Theme::controlRadius;
    const QRectF frame = QRectF{rect()}.adjusted(m_half == Half::left ? 0.5 : -beyond, 0.5,
                                                 m_half == Half::left ? beyond : -0.5, -0.5);
    painter.setPen(hasFocus() ? accent : theme.colour(Theme::Colour::line));
    if (isChecked()) {
        painter.setBrush(theme.wash(accent, Theme::trackOpacity));
    } else if (underMouse()) {
        painter.setBrush(theme.colour(Theme::Colour::hover));
    } else {
        painter.setBrush(theme.colour(theme.isDark() ? Theme::Colour::side : Theme::Colour::window));
    }
    painter.drawRoundedRect(frame, Theme::controlRadius, Theme::controlRadius);
    if (m_half == Half::right) {
        painter.drawLine(QPointF{0.5, 0}, QPointF{0.5, static_cast<qreal>(height())});
    }
    SymbolIcon::paint(painter, rect(), m_symbol, isChecked() ? accent : theme.colour(Theme::Colour::text));
}

} // namespace tallyroom
