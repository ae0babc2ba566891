#pragma once

#include "Model/FileUrl.h"

#include <QString>

#include <functional>
#include <string>

class QWidget;

namespace tallyroom {

/// Asks over `parent`'s window where to save a list and writes there what `text` makes of it, whole or not at
/// all; `text` is called off the main thread. A link in the file's place is replaced when the user says so,
/// and never written through. `defaultName` is the file name to propose, without extension. `written` hears
/// where the list is; a failure is told in a dialog. Main thread.
void exportAsCSV(QWidget* parent, std::function<std::string()> text, const QString& defaultName,
                 std::function<void(const FileUrl& file)> written);

} // namespace tallyroom
