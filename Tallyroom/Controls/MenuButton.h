#pragma once

#include <QPushButton>

namespace tallyroom {

/// A button that opens a menu, which derived classes fill. Main thread.
class MenuButton : public QPushButton {
    Q_OBJECT

public:
    explicit MenuButton(QWidget* parent = nullptr);

private:
    void forgetMouse();
};

} // namespace tallyroom
