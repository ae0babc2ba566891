#include "Tools/Dashboard/KindBar.h"

#include "Text/KindText.h"
#include "Theme/FileKindPresentation.h"
#include "Theme/Theme.h"

#include <QHelpEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStringList>
#include <QToolTip>

#include <algorithm>
#include <iterator>

namespace tallyroom {

KindBar::KindBar(QWidget* parent) : QWidget(parent)
{
    setFixedHeight(Theme::shareBarHeight);
    connect(&Theme::shared(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

void KindBar::setKinds(const std::vector<KindShare>& kinds)
{
    m_kinds.clear();
    std::ranges::copy_if(kinds, std::back_inserter(m_kinds),
                         [](const KindShare& kind) { return kind.share > 0; });
    QStringList words;
    for (const KindShare& kind : m_kinds) {
        words << displayName(kind.category.kind) + QLatin1Char{' '} + KindText::share(kind.share);
    }
    setAccessibleName(QStringLiteral("Répartition par type"));
    setAccessibleDescription(words.join(QStringLiteral(", ")));
    update();
}

/// Every kind gets the least length, and its share of the rest.
std::vector<QRectF> KindBar::places() const
{
    const auto count = static_cast<double>(m_kinds.size());
    const double rest =
        std::max(0.0, width() - (count - 1) * Theme::shareBarGap - count * Theme::shareBarLeast);
    std::vector<QRectF> result;
    double left = 0;
    for (const KindShare& kind : m_kinds) {
        const double length = Theme::shareBarLeast + rest * kind.share;
        result.emplace_back(left, 0, length, height());
        left += length + Theme::shareBarGap;
    }
    return result;
}

void KindBar::paintEvent(QPaintEvent* /*event*/)
{
    const Theme& theme = Theme::shared();
    QPainter painter{this};
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath outline;
    outline.addRoundedRect(rect(), Theme::controlRadius, Theme::controlRadius);
    painter.setClipPath(outline);
    const std::vector<QRectF> all = places();
    if (all.empty()) {
        painter.fillRect(rect(), theme.colour(Theme::Colour::line));
    }
    for (std::size_t place = 0; place < all.size(); ++place) {
        painter.fillRect(all[place], theme.tint(m_kinds[place].category.kind));
    }
}

bool KindBar::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip) {
        return QWidget::event(event);
    }
    const auto* const help = static_cast<QHelpEvent*>(event);
    const std::vector<QRectF> all = places();
    const auto under = std::ranges::find_if(
        all, [x = help->pos().x()](const QRectF& place) { return x >= place.left() && x < place.right(); });
    if (under == all.end()) {
        QToolTip::hideText();
    } else {
        const KindShare& kind = m_kinds[static_cast<std::size_t>(under - all.begin())];
        QToolTip::showText(help->globalPos(), KindText::toolTip(kind.category, kind.share), this,
                           under->toAlignedRect());
    }
    return true;
}

} // namespace tallyroom
