#pragma once

#include <QPushButton>

namespace tallyroom {

/// A button that opens a menu; whoever derives from it fills the menu. Main thread.
class MenuButton : public QPushButton {
    Q_OBJECT

public:
    explicit MenuButton(QWidget* parent = nullptr);

private:
    void forgetMouse();
};

} // namespace tallyroom
