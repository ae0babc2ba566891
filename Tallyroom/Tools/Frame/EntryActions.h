#pragma once

#include "Model/Entry.h"

#include <QString>

#include <functional>
#include <optional>

class QWidget;

namespace tallyroom {

class EntryRows;

/// What rows offer for an entry that changes nothing on the disk. Main thread.
namespace EntryActions {

/// What a screen says of its rows.
struct Subject {
    std::function<std::optional<Entry>()> current;        ///< the entry that the keyboard is on
    std::function<std::optional<FileUrl>()> listedFolder; ///< the folder that was scanned
    std::function<void(const QString& message)> tell;
};

/// Lets the menu of `rows` open and reveal entries, open a terminal beside them, copy their paths, exclude
/// them from scans and show their properties, and adds keys to `screen`, which holds the rows.
void install(QWidget& screen, EntryRows& rows, const Subject& subject);

} // namespace EntryActions

} // namespace tallyroom
