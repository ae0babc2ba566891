#include "Controls/OptionMenu.h"

#include "Theme/SymbolIcon.h"

#include <QActionGroup>
#include <QMenu>
#include <QPainter>

namespace tallyroom {

OptionMenu::OptionMenu(Choices choices, std::function<QString()> title, QWidget* parent)
    : MenuButton(parent), m_title(std::move(title)), m_group(new QActionGroup(this))
{
    m_group->setExclusionPolicy(choices == Choices::one ? QActionGroup::ExclusionPolicy::Exclusive
                                                        : QActionGroup::ExclusionPolicy::None);
    Theme::style(this, Theme::Button::menu);
    connect(menu(), &QMenu::aboutToShow, this, &OptionMenu::showCurrent);
    showTitle();
}

void OptionMenu::showTitle()
{
    const QString title = m_title();
    setText(title);
    setAccessibleName(title);
}

void OptionMenu::paintEvent(QPaintEvent* event)
{
    MenuButton::paintEvent(event);
    QPainter painter{this};
    const QRect mark{width() - Theme::gap - Theme::sortMarkSize, 0, Theme::sortMarkSize, height()};
    SymbolIcon::paint(painter, mark, "chevron.down", Theme::shared().colour(Theme::Colour::secondary),
                      Theme::sortMarkSize);
}

/// Lets the keyboard begin at the choice that is on, else at the first one.
void OptionMenu::showCurrent()
{
    QAction* const chosen = m_group->checkedAction();
    menu()->setActiveAction(chosen != nullptr ? chosen : menu()->actions().value(0));
}

void OptionMenu::addChoice(const QString& text, bool isOn, std::function<void(bool)> chosen)
{
    QAction* const action = menu()->addAction(text);
    action->setCheckable(true);
    action->setChecked(isOn);
    m_group->addAction(action);
    connect(action, &QAction::triggered, this,
            [chosen = std::move(chosen)](bool isNowOn) { chosen(isNowOn); });
}

} // namespace tallyroom
