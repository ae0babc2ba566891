#include "Controls/Shortcut.h"

#include <QAction>
#include <QWidget>

namespace tallyroom {

void addShortcut(QWidget* screen, const QKeySequence& keys, const QString& name,
                 const std::function<void()>& act)
{
    // A hidden screen's shortcuts are asleep, and a text field takes the keys it edits with first.
    auto* const action = new QAction(name, screen);
    action->setShortcut(keys);
    QObject::connect(action, &QAction::triggered, screen, act);
    screen->addAction(action);
}

} // namespace tallyroom
