#pragma once

#include "Controls/MenuButton.h"
#include "Model/FileUrl.h"

class QAction;

namespace tallyroom {

/// A button that leads to another folder: its menu holds the chooser and the recent folders, those that have
/// vanished marked as such. Main thread.
class FolderButton : public MenuButton {
    Q_OBJECT

public:
    explicit FolderButton(QWidget* parent = nullptr);

Q_SIGNALS:
    /// The user wants the chooser.
    void folderRequested();
    void recentRequested(const tallyroom::FileUrl& folder);

private:
    void fillMenu();
    void addRecent(const FileUrl& folder);
};

} // namespace tallyroom
