#pragma once

#include "Controls/MenuButton.h"

namespace tallyroom {

/// The button at the top right of the window, with what concerns all tools. Main thread.
class WindowMenu : public MenuButton {
    Q_OBJECT

public:
    explicit WindowMenu(QWidget* parent = nullptr);

Q_SIGNALS:
    void folderRequested();
    void keysRequested();
    void preferencesRequested();
    void aboutRequested();
};

} // namespace tallyroom
