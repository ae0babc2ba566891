#include "Shell/DropHint.h"

#include "Theme/SymbolIcon.h"

#include <QPainter>

namespace tallyroom {

DropHint::DropHint(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void DropHint::showOver(const QWidget& screen, const QString& words)
{
    m_words = words;
    setGeometry({screen.mapTo(parentWidget(), QPoint{}), screen.size()});
    raise();
    show();
    update();
}

void DropHint::paintEvent(QPaintEvent* /*event*/)
{
    const Theme& theme = Theme::shared();
    const QColor accent = theme.colour(Theme::Colour::accent);
    QPainter painter{this};
    painter.setRenderHint(QPainter::Antialiasing);
    QColor veil = theme.colour(Theme::Colour::window);
    veil.setAlphaF(1 - 2 * static_cast<float>(Theme::washOpacity));
    painter.fillRect(rect(), veil);
    const QRectF frame = QRectF{rect()}.adjusted(Theme::gap, Theme::gap, -Theme::gap, -Theme::gap);
    painter.setPen(QPen{accent, 2, Qt::DashLine});
    painter.setBrush(theme.wash(accent, Theme::washOpacity));
    painter.drawRoundedRect(frame, Theme::cardRadius, Theme::cardRadius);
    const QRect symbol{0, height() / 2 - Theme::welcomeIconSize - Theme::gap, width(),
                       Theme::welcomeIconSize};
    SymbolIcon::paint(painter, symbol, "folder", accent, Theme::welcomeIconSize);
    painter.setFont(theme.title());
    painter.setPen(theme.colour(Theme::Colour::text));
    painter.drawText(QRect{Theme::margin, height() / 2 + Theme::gap, width() - 2 * Theme::margin,
                           2 * Theme::controlHeight},
                     Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, m_words);
}

} // namespace tallyroom
