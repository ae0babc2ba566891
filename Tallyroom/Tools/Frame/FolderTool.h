#pragma once

#include "Bridge/Desktop.h"
#include "Model/FileKind.h"

#include <QObject>

namespace tallyroom {

/// A tool as the window knows it: something that takes a folder and may be at work on it. Main thread.
class FolderTool : public QObject {
    Q_OBJECT

public:
    /// Takes the outcome of a folder chooser: opens its first folder or shows why there is none.
    virtual void handleImport(const FolderChoice& choice) = 0;

    /// Takes a folder that may be gone, once another thread has looked at it.
    void examine(const FileUrl& folder)
    {
        Desktop::examine(this, folder, [this](const FolderChoice& choice) { handleImport(choice); });
    }

    [[nodiscard]] virtual bool isScanning() const = 0;

    /// Scans again where other folders were left out than now.
    virtual void followScanRules() = 0;

    /// The words for a finished scan, for the desktop's notification.
    [[nodiscard]] virtual QString scanReport() const = 0;

    /// Asks for `folder` to be opened in the explorer.
    void explore(const FileUrl& folder) { Q_EMIT explorationRequested(folder); }

Q_SIGNALS:
    void stateChanged();
    void explorationRequested(const tallyroom::FileUrl& folder);
    /// Asks for the largest files of a kind below `folder`.
    void largestRequested(const tallyroom::FileUrl& folder, tallyroom::FileKind kind);
};

} // namespace tallyroom
