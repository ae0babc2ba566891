#include "Controls/MenuButton.h"

#include <QCursor>
#include <QMenu>

namespace tallyroom {

MenuButton::MenuButton(QWidget* parent) : QPushButton(parent)
{
    setMenu(new QMenu(this));
    connect(menu(), &QMenu::aboutToHide, this, &MenuButton::forgetMouse);
}

/// The menu gets the mouse's moves while it is open: the toolkit never tells the button that the mouse left
/// it.
void MenuButton::forgetMouse()
{
    if (!rect().contains(mapFromGlobal(QCursor::pos()))) {
        setAttribute(Qt::WA_UnderMouse, false);
        update();
    }
}

} // namespace tallyroom
