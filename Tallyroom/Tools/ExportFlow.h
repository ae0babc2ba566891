#pragma once

#include "Model/EntryList.h"

#include <QString>

class QWidget;

namespace tallyroom {

/// Asks over `parent`'s window where to save `entries` and writes them there as CSV, off the main thread.
/// `defaultName` is the file name to propose, without extension. Main thread.
void exportAsCSV(QWidget* parent, const EntryList& entries, const QString& defaultName);

} // namespace tallyroom
