#pragma once

#include <QPushButton>

#include <functional>

class QActionGroup;

namespace tallyroom {

/// A button that opens a menu of choices, and says what is chosen. Main thread.
class OptionMenu : public QPushButton {
    Q_OBJECT

public:
    /// Whether one choice excludes the others.
    enum class Choices { one, many };

    /// `title` makes the text of the button; a small arrow is added.
    OptionMenu(Choices choices, std::function<QString()> title, QWidget* parent = nullptr);

    /// Shows the title as it is now.
    void showTitle();

    /// Adds a choice. `chosen(isOn)` is called when the user takes it, or, of many, leaves it.
    void addChoice(const QString& text, bool isOn, std::function<void(bool isOn)> chosen);

private:
    std::function<QString()> m_title;
    QActionGroup* m_group;
};

} // namespace tallyroom
