#pragma once

#include "Controls/MenuButton.h"

#include <functional>

class QActionGroup;

namespace tallyroom {

/// A button that opens a menu of choices, and says what is chosen. Main thread.
class OptionMenu : public MenuButton {
    Q_OBJECT

public:
    /// Whether one choice excludes the others.
    enum class Choices { one, many };

    /// `title` makes the text of the button.
    OptionMenu(Choices choices, std::function<QString()> title, QWidget* parent = nullptr);

    /// Shows the title as it is now.
    void showTitle();

    /// Adds a choice. `chosen(isOn)` is called when the user takes it, or, of many, leaves it.
    void addChoice(const QString& text, bool isOn, std::function<void(bool isOn)> chosen);

    /// Adds a choice for each value, called `name(value)`, on where `isOn(value)` says so. `choose(value,
    /// isOn)` is called as above.
    template <class Values, class Name, class IsOn, class Choose>
    void addChoices(const Values& values, Name name, IsOn isOn, Choose choose)
    {
        for (const auto& value : values) {
            addChoice(name(value), isOn(value), [choose, value](bool isNowOn) { choose(value, isNowOn); });
        }
    }

    /// Updates the title when `tool` says that the choice has changed.
    template <class Tool>
    void follow(const Tool& tool, void (Tool::*choiceChanged)())
    {
        connect(&tool, choiceChanged, this, &OptionMenu::showTitle);
    }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void showCurrent();

    std::function<QString()> m_title;
    QActionGroup* m_group;
};

} // namespace tallyroom
