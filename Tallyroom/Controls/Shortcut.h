#pragma once

#include <QKeySequence>
#include <QString>

#include <functional>

class QWidget;

namespace tallyroom {

/// Runs `act` on `keys` while `screen` is on show and no text field wants them. `name` says what for in the
/// list of all keys, which leaves out those without one. Main thread.
void addShortcut(QWidget* screen, const QKeySequence& keys, const QString& name,
                 const std::function<void()>& act);

} // namespace tallyroom
