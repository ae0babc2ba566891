#pragma once

#include "Controls/MenuButton.h"
#include "Controls/Option.h"

class QActionGroup;

namespace tallyroom {

/// A button that opens a menu of choices, and says what is chosen. Main thread.
class OptionMenu : public MenuButton {
    Q_OBJECT

public:
    explicit OptionMenu(Option option, QWidget* parent = nullptr);

    /// Shows the title as it is now.
    void showTitle();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void addChoice(const Option::Choice& choice);
    void showChoices();

    Option m_option;
    QActionGroup* m_group;
};

} // namespace tallyroom
