#include "Tools/DiskUsage/Treemap/TreemapLegend.h"

#include "Layout/FlowLayout.h"
#include "Text/SizeText.h"
#include "Theme/FileKindPresentation.h"
#include "Theme/Theme.h"
#include "Tools/DiskUsage/Treemap/TreemapPalette.h"

#include <QPainter>
#include <QPushButton>

#include <algorithm>
#include <functional>
#include <utility>

namespace tallyroom {

namespace {

constexpr int swatch = 10;

QIcon swatchOf(QRgb colour, double scale)
{
    QPixmap pixmap{QSize{swatch, swatch} * scale};
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter{&pixmap};
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgb(colour));
    painter.drawRoundedRect(QRect{0, 0, swatch, swatch}, 2, 2);
    return pixmap;
}

/// Closed folders stand for what is not told one by one.
QString labelOf(FileKind kind)
{
    return kind == FileKind::folder ? QStringLiteral("Sans détail") : displayName(kind);
}

} // namespace

TreemapLegend::TreemapLegend(QWidget* parent) : QWidget(parent)
{
    auto* const flow = new FlowLayout(this);
    for (const FileKind kind : FileKind::all) {
        auto* const button = new QPushButton;
        button->setCheckable(true);
        button->setIconSize({swatch, swatch});
        button->setFocusPolicy(Qt::TabFocus);
        Theme::dress(button, Theme::Button::quiet);
        button->hide();
        connect(button, &QPushButton::clicked, this,
                [this, kind](bool isOn) { choose(isOn ? std::optional{kind} : std::nullopt); });
        m_buttons.at(kind.index()) = button;
        flow->addWidget(button);
    }
    paintIcons();
    connect(&Theme::shared(), &Theme::changed, this, &TreemapLegend::paintIcons);
}

void TreemapLegend::paintIcons()
{
    const TreemapPalette palette;
    for (const FileKind kind : FileKind::all) {
        m_buttons.at(kind.index())->setFont(Theme::shared().small());
        const QRgb colour =
            kind == FileKind::folder ? palette.closed(0).fill : palette.file(kind, false).fill;
        m_buttons.at(kind.index())->setIcon(swatchOf(colour, devicePixelRatioF()));
    }
}

void TreemapLegend::show(const std::array<std::int64_t, 11>& bytesByKind)
{
    auto kinds = FileKind::all;
    std::ranges::stable_sort(kinds, std::greater{},
                             [&](FileKind kind) { return bytesByKind.at(kind.index()); });
    const bool isReordered = kinds != std::exchange(m_order, kinds);
    for (const FileKind kind : kinds) {
        QPushButton* const button = m_buttons.at(kind.index());
        const std::int64_t bytes = bytesByKind.at(kind.index());
        const QString text = labelOf(kind) + QLatin1Char{' '} + sizeText(bytes);
        if (button->text() != text) {
            button->setText(text);
            button->setAccessibleName(text);
        }
        if (isReordered) {
            layout()->removeWidget(button);
            layout()->addWidget(button);
        }
        button->setVisible(bytes > 0 || m_choice == kind);
    }
}

void TreemapLegend::forgetChoice()
{
    choose(std::nullopt);
}

void TreemapLegend::choose(const std::optional<FileKind>& kind)
{
    if (m_choice == kind) {
        return;
    }
    m_choice = kind;
    for (const FileKind one : FileKind::all) {
        m_buttons.at(one.index())->setChecked(m_choice == one);
    }
    Q_EMIT chosen(kind);
}

} // namespace tallyroom
