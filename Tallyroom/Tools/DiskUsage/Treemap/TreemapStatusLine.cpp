#include "Tools/DiskUsage/Treemap/TreemapStatusLine.h"

#include "Theme/Theme.h"

#include <QPainter>

namespace tallyroom {

namespace {

constexpr int lineHeight = 24;

} // namespace

TreemapStatusLine::TreemapStatusLine(QWidget* parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    connect(&Theme::shared(), &Theme::changed, this, [this] { update(); });
}

void TreemapStatusLine::show(const QString& place, const QString& facts)
{
    if (place != m_place || facts != m_facts) {
        m_place = place;
        m_facts = facts;
        update();
    }
}

QSize TreemapStatusLine::sizeHint() const
{
    return {400, lineHeight};
}

QSize TreemapStatusLine::minimumSizeHint() const
{
    return {0, lineHeight};
}

void TreemapStatusLine::paintEvent(QPaintEvent* /*event*/)
{
    const Theme& theme = Theme::shared();
    QPainter painter{this};
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.colour(Theme::Colour::side));
    painter.drawRoundedRect(rect(), Theme::badgeRadius, Theme::badgeRadius);
    const QRect room = rect().adjusted(Theme::gap, 0, -Theme::gap, 0);
    painter.setFont(theme.small());
    painter.setPen(theme.colour(Theme::Colour::secondary));
    const int factsWidth = std::min(painter.fontMetrics().horizontalAdvance(m_facts), room.width());
    painter.drawText(room, Qt::AlignVCenter | Qt::AlignRight, m_facts);
    QFont name = theme.small();
    name.setWeight(QFont::DemiBold);
    painter.setFont(name);
    painter.setPen(theme.colour(Theme::Colour::text));
    const QRect left = room.adjusted(0, 0, -factsWidth - 2 * Theme::gap, 0);
    painter.drawText(left, Qt::AlignVCenter | Qt::AlignLeft,
                     painter.fontMetrics().elidedText(m_place, Qt::ElideMiddle, std::max(left.width(), 0)));
}

} // namespace tallyroom
