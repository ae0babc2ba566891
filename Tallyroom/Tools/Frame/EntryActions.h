#pragma once

#include "Model/Entry.h"

#include <functional>
#include <optional>

class QWidget;

namespace tallyroom {

class EntryRows;

/// What rows offer for an entry that changes nothing on the disk. Main thread.
namespace EntryActions {

/// Lets the menu of `rows` open and reveal entries, open a terminal beside them, copy their paths and show
/// their properties, and adds the keys for it to `screen`, which holds the rows. `current` tells the entry
/// that the keyboard is on.
void install(QWidget& screen, EntryRows& rows, const std::function<std::optional<Entry>()>& current);

} // namespace EntryActions

} // namespace tallyroom
