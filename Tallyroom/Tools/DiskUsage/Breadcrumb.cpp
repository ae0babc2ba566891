#include "Tools/DiskUsage/Breadcrumb.h"

#include "Bridge/FileUrlText.h"
#include "Components/SymbolIcon.h"
#include "Components/Theme.h"

#include <QMenu>
#include <QPainter>
#include <QPushButton>

#include <algorithm>
#include <numeric>

namespace tallyroom {

namespace {

constexpr int chevronWidth = Theme::gap * 2;
constexpr int smallestStep = Theme::gap * 5;

int widthOf(const QPushButton* step)
{
    return step->fontMetrics().horizontalAdvance(step->text()) + Theme::gap;
}

/// The text of a button takes "&" for a mark of its own.
QString buttonText(const std::string& name)
{
    return FileUrlText::display(name).replace(QLatin1Char{'&'}, QStringLiteral("&&"));
}

} // namespace

Breadcrumb::Breadcrumb(QWidget* parent) : QWidget(parent), m_hiddenSteps(new QPushButton(this))
{
    setAccessibleName(QStringLiteral("Chemin"));
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_hiddenSteps->setText(QStringLiteral("…"));
    m_hiddenSteps->setAccessibleName(QStringLiteral("Dossiers intermédiaires"));
    Theme::dress(m_hiddenSteps, Theme::Button::quiet);
    auto* const menu = new QMenu(m_hiddenSteps);
    connect(m_hiddenSteps, &QPushButton::clicked, menu, [this, menu] {
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
    std::ranges::for_each(m_steps, [](QPushButton* step) {
        step->hide();
        step->deleteLater();
    });
    m_steps.clear();
    m_items = std::move(items);
    for (std::size_t index = 0; index < m_items.size(); ++index) {
        const bool isCurrent = index + 1 == m_items.size();
        auto* const step = new QPushButton(buttonText(m_items[index].name), this);
        step->setToolTip(FileUrlText::display(m_items[index].url));
        Theme::dress(step, Theme::Button::quiet);
        step->setFont(isCurrent ? Theme::shared().title() : Theme::shared().body());
        step->setFocusPolicy(isCurrent ? Qt::NoFocus : Qt::TabFocus);
        connect(step, &QPushButton::clicked, this,
                [this, url = m_items[index].url] { Q_EMIT selected(url); });
        m_steps.push_back(step);
    }
    updateGeometry();
    arrange();
}

QSize Breadcrumb::sizeHint() const
{
    const int steps = std::transform_reduce(m_steps.begin(), m_steps.end(), 0, std::plus{}, widthOf);
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
        needed -= widthOf(m_steps[static_cast<std::size_t>(first)]) + chevronWidth;
        if (first == 1) {
            needed += widthOf(m_hiddenSteps) + chevronWidth;
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
    const auto place = [&](QPushButton* step, bool isLast) {
        const int room = std::max(width() - x, 0);
        const int stepWidth = isLast ? std::min(widthOf(step), room) : widthOf(step);
        step->setGeometry(x, 0, stepWidth, height());
        x += stepWidth;
        if (!isLast) {
            m_chevrons.emplace_back(x, 0, chevronWidth, height());
            x += chevronWidth;
        }
    };
    for (int index = 0; index < count; ++index) {
        QPushButton* const step = m_steps[static_cast<std::size_t>(index)];
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
        menu->addAction(buttonText(m_items[static_cast<std::size_t>(index)].name))->setData(index);
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
