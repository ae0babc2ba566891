#pragma once

#include <QString>

#include <functional>
#include <string>

class QWidget;

namespace tallyroom {

/// Asks over `parent`'s window where to save a list and writes there what `text` makes of it, whole or not at
/// all; `text` is called off the main thread. `defaultName` is the file name to propose, without extension.
/// A failure is told in a dialog. Main thread.
void exportAsCSV(QWidget* parent, std::function<std::string()> text, const QString& defaultName);

} // namespace tallyroom
