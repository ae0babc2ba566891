#pragma once

#include <QKeySequence>

#include <functional>

class QWidget;

namespace tallyroom {

/// Runs `act` on `keys` while `screen` is on show and no text field wants them. Main thread.
void addShortcut(QWidget* screen, const QKeySequence& keys, const std::function<void()>& act);

} // namespace tallyroom
