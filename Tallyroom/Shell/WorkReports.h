#pragma once

#include "Deletion/DeletionRunner.h"
#include "Settings/Settings.h"
#include "Tools/Frame/FolderTool.h"

#include <QElapsedTimer>
#include <QTimer>

#include <chrono>
#include <functional>
#include <map>
#include <optional>

namespace tallyroom {

/// Tells the desktop of long scans and removals: how far they are, in the task bar, and their end, by a
/// notification when nobody looks at the window. Main thread.
class WorkReports : public QObject {
    Q_OBJECT

public:
    /// Where the news go.
    struct Desk {
        std::function<void(const QString& title, const QString& body)> notify;
        std::function<void(const std::optional<double>& fraction)> showProgress;

        [[nodiscard]] static Desk real();
    };

    /// `deletions` must outlive it. Work that is over before `patience` is not worth a notification.
    explicit WorkReports(const DeletionRunner& deletions, Desk desk = Desk::real(),
                         std::chrono::seconds patience = std::chrono::seconds{Settings::longWorkSeconds()});

    /// Reports the scans of `tool`, which must outlive it and is called `name`.
    void follow(const FolderTool& tool, const QString& name);

private:
    [[nodiscard]] bool isWorth(const QElapsedTimer& since) const;
    void scanChanged(const FolderTool& tool, const QString& name);
    void removalChanged();
    void showProgress();
    [[nodiscard]] std::optional<double> fraction();

    const DeletionRunner& m_deletions;
    Desk m_desk;
    std::chrono::seconds m_patience;
    std::map<const FolderTool*, QElapsedTimer> m_scans; // the running ones
    QElapsedTimer m_removal;                            // of the running one
    RemovalProgress m_removed;                          // what was last heard of it
    std::optional<double> m_shown;
    QTimer m_clock;
};

} // namespace tallyroom
