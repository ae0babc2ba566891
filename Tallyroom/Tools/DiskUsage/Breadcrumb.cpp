#include "Tools/DiskUsage/Breadcrumb.h"

#include "Text/FileUrlText.h"
#include "Text/PlainText.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>

#include <algorithm>

namespace tallyroom {

namespace {

constexpr int chevronWidth = Theme::gap * 2;
constexpr int mostNeeded = Theme::gap * 22; // long names are cut before the header takes another row

/// One step: its name, quiet until the mouse is over it, semibold where one is.
class BreadcrumbStep : public QAbstractButton {
public:
    enum class Rank { above, usual, current };

    BreadcrumbStep(const QString& name, Rank rank, QWidget* parent) : QAbstractButton(parent), m_rank(rank)
    {
        setText(name);
        setAccessibleName(name);
        setFocusPolicy(rank == Rank::current ? Qt::NoFocus : Qt::TabFocus);
        setAttribute(Qt::WA_Hover);
    }

    [[nodiscard]] QSize sizeHint() const override
    {
        // A little more than the letters take, so that rounding cuts no name short.
        return {QFontMetrics{stepFont()}.horizontalAdvance(text()) + Theme::gap + Theme::gap / 4,
                Theme::controlHeight};
    }

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
            click();
        } else {
            QAbstractButton::keyPressEvent(event);
        }
    }

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
        const bool isQuiet = m_rank != Rank::current && !underMouse() && !isDown();
        painter.setPen(theme.colour(isQuiet ? Theme::Colour::secondary : Theme::Colour::text));
        painter.setFont(stepFont());
        const QRect room = rect().adjusted(Theme::gap / 2, 0, -Theme::gap / 2, 0);
        painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter,
                         painter.fontMetrics().elidedText(text(), Qt::ElideMiddle, room.width()));
    }

private:
    [[nodiscard]] QFont stepFont() const
    {
        switch (m_rank) {
        case Rank::above:
            return Theme::shared().small();
        case Rank::usual:
            return Theme::shared().body();
        case Rank::current:
            break;
        }
        return Theme::shared().title();
    }

    Rank m_rank;
};

} // namespace

Breadcrumb::Breadcrumb(QWidget* parent)
    : QWidget(parent),
      m_hiddenSteps(new BreadcrumbStep(QStringLiteral("…"), BreadcrumbStep::Rank::usual, this))
{
    setAccessibleName(QStringLiteral("Chemin"));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
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

void Breadcrumb::setItems(std::vector<BreadcrumbItem> items, const std::vector<BreadcrumbItem>& above)
{
    // The button that was pressed is among these: it must live until its click is over.
    std::ranges::for_each(m_steps, [](QAbstractButton* step) {
        step->hide();
        step->deleteLater();
    });
    m_steps.clear();
    m_above = above.size();
    m_items = std::move(items);
    m_items.insert(m_items.begin(), above.begin(), above.end());
    for (std::size_t index = 0; index < m_items.size(); ++index) {
        const auto rank = index < m_above               ? BreadcrumbStep::Rank::above
                          : index + 1 == m_items.size() ? BreadcrumbStep::Rank::current
                                                        : BreadcrumbStep::Rank::usual;
        auto* const step = new BreadcrumbStep(FileUrlText::display(m_items[index].name), rank, this);
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
    // The steps above the root take only what room is left.
    const int menu = m_above > 0 ? m_hiddenSteps->sizeHint().width() + chevronWidth : 0;
    return {menu + widthFrom(m_above), Theme::controlHeight};
}

QSize Breadcrumb::minimumSizeHint() const
{
    // The folder on screen and the one around it.
    int last = 0;
    const std::size_t own = m_steps.size() - m_above;
    for (std::size_t back = 1; back <= std::min<std::size_t>(own, 2); ++back) {
        last += m_steps[m_steps.size() - back]->sizeHint().width() + chevronWidth;
    }
    const int hidden = own > 2 || m_above > 0 ? m_hiddenSteps->sizeHint().width() + chevronWidth : 0;
    return {std::min({hidden + last, sizeHint().width(), mostNeeded}), Theme::controlHeight};
}

int Breadcrumb::widthFrom(std::size_t first) const
{
    int width = 0;
    for (std::size_t step = first; step < m_steps.size(); ++step) {
        width += widthOf(step) + chevronWidth;
    }
    return width;
}

int Breadcrumb::widthOf(std::size_t step) const
{
    return m_steps[step]->sizeHint().width();
}

/// The last two stay, then the root, then what is near the end, then what is near the root.
Breadcrumb::Hidden Breadcrumb::hiddenSteps() const
{
    const std::size_t count = m_steps.size();
    const std::size_t kept = std::min<std::size_t>(count - m_above, 2);
    int needed = widthFrom(0) - chevronWidth;
    if (needed <= width() || count == kept) {
        return {};
    }
    needed += m_hiddenSteps->sizeHint().width() + chevronWidth;
    for (std::size_t above = 0; above < m_above; ++above) {
        needed -= widthOf(above) + chevronWidth;
        if (needed <= width()) {
            return {above + 1, 0, 0};
        }
    }
    for (const std::size_t first : {m_above + 1, m_above}) {
        int rest = needed;
        for (std::size_t end = first; end < count - kept;) {
            rest -= widthOf(end) + chevronWidth;
            ++end;
            if (rest <= width()) {
                return {m_above, first, end};
            }
        }
    }
    return {m_above, m_above, count - kept};
}

void Breadcrumb::arrange()
{
    const Hidden hidden = hiddenSteps();
    const std::size_t count = m_steps.size();
    m_chevrons.clear();
    m_hiddenSteps->setVisible(hidden.above > 0 || hidden.first < hidden.end);
    int x = 0;
    const auto place = [&](QAbstractButton* step, int stepWidth, bool isLast) {
        step->setGeometry(x, 0, stepWidth, height());
        x += stepWidth;
        if (!isLast) {
            m_chevrons.emplace_back(x, 0, chevronWidth, height());
            x += chevronWidth;
        }
    };
    for (std::size_t index = 0; index < count; ++index) {
        const bool isHidden = hidden.contains(index);
        m_steps[index]->setVisible(!isHidden);
        if (isHidden && index == hidden.place()) {
            place(m_hiddenSteps, m_hiddenSteps->sizeHint().width(), false);
        } else if (!isHidden) {
            place(m_steps[index], std::min(widthOf(index), roomFor(index, width() - x)), index + 1 == count);
        }
    }
    update();
}

/// Of the room that is left: where the last two do not fit, each has half of it at least.
int Breadcrumb::roomFor(std::size_t step, int room) const
{
    if (step + 2 != m_steps.size()) {
        return std::max(room, 0);
    }
    const int both = std::max(room - chevronWidth, 0);
    return std::max(both - widthOf(step + 1), both / 2);
}

void Breadcrumb::fillMenu()
{
    auto* const menu = m_hiddenSteps->findChild<QMenu*>();
    menu->clear();
    const Hidden hidden = hiddenSteps();
    for (std::size_t index = 0; index < hidden.end || index < hidden.above; ++index) {
        if (!hidden.contains(index)) {
            continue;
        }
        // A menu takes "&" for a mark of its own.
        QString name = FileUrlText::display(m_items[index].name);
        menu->addAction(name.replace(QLatin1Char{'&'}, QStringLiteral("&&")))
            ->setData(static_cast<int>(index));
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
