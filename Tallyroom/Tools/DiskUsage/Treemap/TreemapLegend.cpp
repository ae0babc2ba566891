#include "Tools/DiskUsage/Treemap/TreemapLegend.h"

#include "Layout/FlowLayout.h"
#include "Text/SizeText.h"
#include "Theme/FileKindPresentation.h"
#include "Theme/Theme.h"
#include "Tools/DiskUsage/Treemap/TreemapPalette.h"

#include <QAbstractButton>
#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <functional>
#include <utility>

namespace tallyroom {

namespace {

constexpr int swatch = 10;
constexpr int keyHeight = 20;

/// A colour and what it stands for, as small as a legend's words are.
class LegendKey : public QAbstractButton {
public:
    explicit LegendKey(FileKind kind) : m_kind(kind)
    {
        setCheckable(true);
        setFocusPolicy(Qt::TabFocus);
        setAttribute(Qt::WA_Hover);
    }

    [[nodiscard]] QSize sizeHint() const override
    {
        const int text = QFontMetrics{Theme::shared().small()}.horizontalAdvance(this->text());
        return {text + swatch + 3 * Theme::gap / 2, keyHeight};
    }

    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        const Theme& theme = Theme::shared();
        const TreemapPalette palette;
        QPainter painter{this};
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor ground = isChecked()
                                  ? theme.wash(theme.colour(Theme::Colour::accent), Theme::trackOpacity)
                              : underMouse() ? theme.colour(Theme::Colour::hover)
                                             : theme.colour(Theme::Colour::window);
        painter.setBrush(ground);
        painter.setPen(hasFocus() ? QPen{theme.colour(Theme::Colour::accent)} : QPen{ground});
        painter.drawRoundedRect(QRectF{rect()}.adjusted(0.5, 0.5, -0.5, -0.5), Theme::badgeRadius,
                                Theme::badgeRadius);
        painter.setPen(Qt::NoPen);
        const bool isFolder = m_kind == FileKind::folder;
        painter.setBrush(QColor::fromRgb(isFolder ? palette.rest().fill : palette.file(m_kind, false).fill));
        constexpr int margin = Theme::gap / 2;
        painter.drawRoundedRect(QRect{margin, (height() - swatch) / 2, swatch, swatch}, 2, 2);
        painter.setFont(theme.small());
        painter.setPen(Theme::legible(theme.colour(Theme::Colour::secondary), ground));
        painter.drawText(rect().adjusted(swatch + 2 * margin, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft,
                         text());
    }

private:
    FileKind m_kind;
};

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
        auto* const button = new LegendKey{kind};
        button->hide();
        connect(button, &QAbstractButton::clicked, this,
                [this, kind](bool isOn) { choose(isOn ? std::optional{kind} : std::nullopt); });
        m_buttons.at(kind.index()) = button;
        flow->addWidget(button);
    }
    connect(&Theme::shared(), &Theme::changed, this, [this] { update(); });
}

void TreemapLegend::show(const std::array<std::int64_t, 11>& bytesByKind)
{
    auto kinds = FileKind::all;
    std::ranges::stable_sort(kinds, std::greater{},
                             [&](FileKind kind) { return bytesByKind.at(kind.index()); });
    const bool isReordered = kinds != std::exchange(m_order, kinds);
    for (const FileKind kind : kinds) {
        QAbstractButton* const button = m_buttons.at(kind.index());
        const std::int64_t bytes = bytesByKind.at(kind.index());
        const QString text = labelOf(kind) + QLatin1Char{' '} + sizeText(bytes);
        if (button->text() != text) {
            button->setText(text);
            button->setAccessibleName(text);
            button->updateGeometry();
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
