#include "Tools/DiskUsage/Breadcrumb.h"

#include "Bridge/FileUrlText.h"
#include "Bridge/PlainText.h"
#include "Components/SymbolIcon.h"
#include "Components/Theme.h"

#include <QAbstractButton>
#include <QMenu>
#include <QPainter>

#include <algorithm>

namespace tallyroom {

namespace {

constexpr int chevronWidth = Theme::gap * 2;
constexpr int smallestStep = Theme::gap * 5;

/// One step: its name, quiet until the mouse is over it, semibold where one is.
class BreadcrumbStep : public QAbstractButton {
public:
    BreadcrumbStep(const QString& name, bool isCurrent, QWidget* parent)
        : QAbstractButton(parent), m_isCurrent(isCurrent)
    {
        setText(name);
        setAccessibleName(name);
        setFocusPolicy(isCurrent ? Qt::NoFocus : Qt::TabFocus);
        setAttribute(Qt::WA_Hover);
    }

    [[nodiscard]] QSize sizeHint() const override
    {
        // A little more than the letters take, so that rounding cuts no name short.
        return {QFontMetrics{stepFont()}.horizontalAdvance(text()) + Theme::gap + Theme::gap / 4,
                Theme::controlHeight};
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        const Theme& theme = Theme::shared();
        QPainter painter{this};
        painter.setRenderHint(QPainter::Antialiasing);
        if (hasFocus()) {
            painter.setPen(theme.colour(Theme::Colour::accent));
            painter.drawRoundedRect(QRectF{rect()}.adjusted(0.5, 3.5, -0.5, -3.5), Theme::badgeRadius,
                                    Theme::badgeRadius);
        }
        const bool isQuiet = !m_isCurrent && !underMouse() && !isDown();
        painter.setPen(theme.colour(isQuiet ? Theme::Colour::secondary : Theme::Colour::text));
        painter.setFont(stepFont());
        const QRect room = rect().adjusted(Theme::gap / 2, 0, -Theme::gap / 2, 0);
        painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter,
                         painter.fontMetrics().elidedText(text(), Qt::ElideMiddle, room.width()));
    }

private:
    [[nodiscard]] QFont stepFont() const
    {
        return m_isCurrent ? Theme::shared().title() : Theme::shared().body();
    }

    bool m_isCurrent;
};

} // namespace

Breadcrumb::Breadcrumb(QWidget* parent)
    : QWidget(parent), m_hiddenSteps(new BreadcrumbStep(QStringLiteral("…"), false, this))
{
    setAccessibleName(QStringLiteral("Chemin"));
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_hiddenSteps->setAccessibleName(QStringLiteral("Dossiers intermédiaires"));
    auto* const menu = new QMenu(m_hiddenSteps);
    connect(m_hiddenSteps, &QAbstractButton::clicked, menu, [this, menu] {
        fillMenu();
        menu->popup(m_hiddenSteps->mapToGlobal(QPoint{0, m_hiddenSteps->height()}));
    });
    connect(menu, &QMenu::triggered, this, [this](const QAction* action) {
        Q_EMIT selected(m_items.at(static_cast<std::size_t>(action->data().toInt())).url);
    });
    m_hiddenSteps->hide();
}

void Breadcrumb::setItems(std::vector<BreadcrumbItem> items)
{
    // The button that was pressed is among these: it must live until its click is over.
    std::ranges::for_each(m_steps, [](QAbstractButton* step) {
        step->hide();
        step->deleteLater();
    });
    m_steps.clear();
    m_items = std::move(items);
    for (std::size_t index = 0; index < m_items.size(); ++index) {
        const bool isCurrent = index + 1 == m_items.size();
        auto* const step = new BreadcrumbStep(FileUrlText::display(m_items[index].name), isCurrent, this);
        step->setToolTip(plainToolTip(FileUrlText::display(m_items[index].url)));
        connect(step, &QAbstractButton::clicked, this,
                [this, url = m_items[index].url] { Q_EMIT selected(url); });
        m_steps.push_back(step);
    }
    updateGeometry();
    arrange();
}

QSize Breadcrumb::sizeHint() const
{
    int steps = 0;
    for (const QAbstractButton* const step : m_steps) {
        steps += step->sizeHint().width();
    }
    return {steps + chevronWidth * static_cast<int>(m_steps.size()), Theme::controlHeight};
}

QSize Breadcrumb::minimumSizeHint() const
{
    return {smallestStep, Theme::controlHeight};
}

/// How many steps after the root have to go so that the rest fits.
int Breadcrumb::firstVisible() const
{
    int needed = sizeHint().width() - chevronWidth;
    int first = 1;
    const int last = static_cast<int>(m_steps.size()) - 1;
    while (needed > width() && first < last) {
        needed -= m_steps[static_cast<std::size_t>(first)]->sizeHint().width() + chevronWidth;
        if (first == 1) {
            needed += m_hiddenSteps->sizeHint().width() + chevronWidth;
        }
        ++first;
    }
    return first;
}

void Breadcrumb::arrange()
{
    const int first = firstVisible();
    const int count = static_cast<int>(m_steps.size());
    m_chevrons.clear();
    m_hiddenSteps->setVisible(first > 1);
    int x = 0;
    const auto place = [&](QAbstractButton* step, bool isLast) {
        const int room = std::max(width() - x, 0);
        const int stepWidth = isLast ? std::min(step->sizeHint().width(), room) : step->sizeHint().width();
        step->setGeometry(x, 0, stepWidth, height());
        x += stepWidth;
        if (!isLast) {
            m_chevrons.emplace_back(x, 0, chevronWidth, height());
            x += chevronWidth;
        }
    };
    for (int index = 0; index < count; ++index) {
        QAbstractButton* const step = m_steps[static_cast<std::size_t>(index)];
        const bool isHidden = index >= 1 && index < first;
        step->setVisible(!isHidden);
        if (isHidden) {
            if (index == 1) {
                place(m_hiddenSteps, false);
            }
            continue;
        }
        place(step, index + 1 == count);
    }
    update();
}

void Breadcrumb::fillMenu()
{
    auto* const menu = m_hiddenSteps->findChild<QMenu*>();
    menu->clear();
    for (int index = 1; index < firstVisible(); ++index) {
        // A menu takes "&" for a mark of its own.
        QString name = FileUrlText::display(m_items[static_cast<std::size_t>(index)].name);
        menu->addAction(name.replace(QLatin1Char{'&'}, QStringLiteral("&&")))->setData(index);
    }
}

void Breadcrumb::resizeEvent(QResizeEvent* /*event*/)
{
    arrange();
}

void Breadcrumb::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter{this};
    for (const QRect& chevron : m_chevrons) {
        SymbolIcon::paint(painter, chevron, "chevron.right", Theme::shared().colour(Theme::Colour::secondary),
                          Theme::smallIconSize);
    }
}

} // namespace tallyroom
