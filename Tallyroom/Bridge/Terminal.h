#pragma once

#include "Model/FileUrl.h"

namespace tallyroom {

/// The desktop's terminal. Main thread.
namespace Terminal {

/// Opens a terminal in a folder: the one that xdg-terminal-exec starts, else $TERMINAL, else Debian's
/// x-terminal-emulator, else one that many people have. Says so by DesktopRefusals when there is none, or the
/// folder cannot be entered.
void openIn(const FileUrl& folder);

} // namespace Terminal

} // namespace tallyroom
