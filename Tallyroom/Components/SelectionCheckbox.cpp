#include "Components/SelectionCheckbox.h"

#include "Components/SymbolIcon.h"
#include "Components/Theme.h"

#include <QPainter>

namespace tallyroom {

SelectionCheckbox::SelectionCheckbox(FileUrl url, QWidget* parent) : QCheckBox(parent), m_url(std::move(url))
{
    setAttribute(Qt::WA_Hover);
    connect(this, &QCheckBox::clicked, this, [this](bool isOn) { Q_EMIT checkRequested(m_url, isOn); });
}

void SelectionCheckbox::showSelection(const std::unordered_set<FileUrl>& selection)
{
    setChecked(selection.contains(m_url));
}

void SelectionCheckbox::paintBox(QPainter& painter, const QRect& rect, const Look& look)
{
    const Theme& theme = Theme::shared();
    constexpr int size = Theme::checkBoxSize;
    const QRectF box = QRectF{0, 0, size, size}.translated(rect.x() + (rect.width() - size) / 2,
                                                           rect.y() + (rect.height() - size) / 2);
    const QColor accent = theme.colour(Theme::Colour::accentFill);
    const QColor secondary = theme.colour(Theme::Colour::secondary);
    const QColor outline = look.isChecked || look.isHovered || look.hasFocus ? accent : secondary;
    const QColor fill = look.isChecked ? accent : theme.colour(Theme::Colour::window);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (!look.isEnabled) {
        painter.setOpacity(0.5);
    }
    painter.setPen(QPen{outline, 1.2});
    painter.setBrush(fill);
    painter.drawRoundedRect(box.adjusted(0.6, 0.6, -0.6, -0.6), Theme::badgeRadius, Theme::badgeRadius);
    if (look.isChecked) {
        SymbolIcon::paint(painter, box.toRect(), "checkmark", Theme::readableOn(fill), size - 4);
    }
    painter.restore();
}

QSize SelectionCheckbox::sizeHint() const
{
    return {Theme::checkBoxSize + Theme::gap, Theme::checkBoxSize + Theme::gap};
}

void SelectionCheckbox::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter{this};
    paintBox(painter, rect(), {isChecked(), isEnabled(), underMouse(), hasFocus()});
}

bool SelectionCheckbox::hitButton(const QPoint& position) const
{
    return rect().contains(position);
}

} // namespace tallyroom
