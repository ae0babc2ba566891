#include "Tools/Frame/ToolTitle.h"

#include "Text/PlainText.h"
#include "Theme/Theme.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

namespace tallyroom {

namespace {

constexpr int leastFolder = 8 * Theme::gap; // less of a path tells nothing

} // namespace

ToolTitle::ToolTitle(QString title, QWidget* parent) : QWidget(parent), m_title(std::move(title))
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    setAccessibleName(m_title);
}

void ToolTitle::setFolder(const QString& folder)
{
    m_folder = folder;
    setToolTip(plainToolTip(folder));
    setAccessibleName(folder.isEmpty() ? m_title : m_title + QStringLiteral(" · ") + folder);
    updateGeometry();
    update();
}

QSize ToolTitle::sizeHint() const
{
    const QFontMetrics title{Theme::shared().title()};
    const QFontMetrics folder{Theme::shared().body()};
    // A little more than the letters take, so that rounding cuts no name short.
    return {title.horizontalAdvance(m_title) + folder.horizontalAdvance(QStringLiteral(" · ") + m_folder) +
                Theme::gap / 4,
            Theme::controlHeight};
}

QSize ToolTitle::minimumSizeHint() const
{
    const int title = QFontMetrics{Theme::shared().title()}.horizontalAdvance(m_title);
    return {std::min(title + (m_folder.isEmpty() ? 0 : leastFolder), sizeHint().width()),
            Theme::controlHeight};
}

void ToolTitle::paintEvent(QPaintEvent* /*event*/)
{
    const Theme& theme = Theme::shared();
    QPainter painter{this};
    painter.setFont(theme.title());
    painter.setPen(theme.colour(Theme::Colour::text));
    QRect room = rect();
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter, m_title);
    room.setLeft(painter.fontMetrics().horizontalAdvance(m_title));
    painter.setFont(theme.body());
    painter.setPen(theme.colour(Theme::Colour::secondary));
    const QString folder = QStringLiteral(" · ") + m_folder;
    if (!m_folder.isEmpty()) {
        painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter,
                         painter.fontMetrics().elidedText(folder, Qt::ElideMiddle, room.width()));
    }
}

} // namespace tallyroom
