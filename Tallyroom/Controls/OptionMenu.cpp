#include "Controls/OptionMenu.h"

#include "Theme/SymbolIcon.h"

#include <QActionGroup>
#include <QMenu>
#include <QStyleOptionButton>
#include <QStylePainter>

#include <algorithm>
#include <utility>

namespace tallyroom {

OptionMenu::OptionMenu(Option option, QWidget* parent)
    : MenuButton(parent), m_option(std::move(option)), m_group(new QActionGroup(this))
{
    m_group->setExclusionPolicy(m_option.isOfMany ? QActionGroup::ExclusionPolicy::None
                                                  : QActionGroup::ExclusionPolicy::Exclusive);
    Theme::style(this, Theme::Button::menu);
    std::ranges::for_each(m_option.choices, [this](const Option::Choice& choice) { addChoice(choice); });
    connect(menu(), &QMenu::aboutToShow, this, &OptionMenu::showChoices);
    showTitle();
}

void OptionMenu::showTitle()
{
    const QString title = m_option.title();
    setText(title);
    setAccessibleName(title);
}

void OptionMenu::paintEvent(QPaintEvent* /*event*/)
{
    const Theme& theme = Theme::shared();
    QStylePainter painter{this};
    QStyleOptionButton ground;
    initStyleOption(&ground);
    ground.text.clear(); // the toolkit would set it into the middle of the whole, mark included
    painter.drawControl(QStyle::CE_PushButton, ground);
    painter.setPen(theme.colour(isEnabled() ? Theme::Colour::text : Theme::Colour::secondary));
    painter.drawText(rect().adjusted(Theme::gap + Theme::gap / 2, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                     text());
    const QRect mark{width() - Theme::gap - Theme::sortMarkSize, 0, Theme::sortMarkSize, height()};
    SymbolIcon::paint(painter, mark, "chevron.down", theme.colour(Theme::Colour::secondary),
                      Theme::sortMarkSize);
}

void OptionMenu::addChoice(const Option::Choice& choice)
{
    QAction* const action = menu()->addAction(choice.name);
    action->setCheckable(true);
    m_group->addAction(action);
    connect(action, &QAction::triggered, this, [take = choice.take](bool isOn) { take(isOn); });
}

/// As they are now, since a choice is not only made here. Lets the keyboard begin at the one that is on, else
/// at the first one.
void OptionMenu::showChoices()
{
    const QList<QAction*> actions = m_group->actions();
    for (qsizetype place = 0; place < actions.size(); ++place) {
        actions[place]->setChecked(m_option.choices[static_cast<std::size_t>(place)].isOn());
    }
    QAction* const chosen = m_group->checkedAction();
    menu()->setActiveAction(chosen != nullptr ? chosen : actions.value(0));
}

} // namespace tallyroom
