#include "Controls/OptionMenu.h"

#include "Theme/Theme.h"

#include <QActionGroup>
#include <QMenu>

namespace tallyroom {

OptionMenu::OptionMenu(Choices choices, std::function<QString()> title, QWidget* parent)
    : QPushButton(parent), m_title(std::move(title)), m_group(new QActionGroup(this))
{
    m_group->setExclusionPolicy(choices == Choices::one ? QActionGroup::ExclusionPolicy::Exclusive
                                                        : QActionGroup::ExclusionPolicy::None);
    Theme::dress(this, Theme::Button::plain);
    setMenu(new QMenu(this));
    showTitle();
}

void OptionMenu::showTitle()
{
    const QString title = m_title();
    setText(title + QStringLiteral(" ▾"));
    setAccessibleName(title);
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
