#include "Shell/WorkReports.h"

#include "Text/NumberText.h"
#include "Tools/Frame/ScanToolViewModel.h"

#include <QApplication>

#include <utility>

namespace tallyroom {

namespace {

constexpr std::chrono::milliseconds progressInterval{500};

} // namespace

WorkReports::Desk WorkReports::Desk::real()
{
    return {Desktop::notify, Desktop::showProgress};
}

WorkReports::WorkReports(const DeletionRunner& deletions, Desk desk, std::chrono::seconds patience)
    : m_deletions(deletions), m_desk(std::move(desk)), m_patience(patience)
{
    m_clock.setInterval(progressInterval);
    connect(&m_clock, &QTimer::timeout, this, &WorkReports::showProgress);
    connect(&deletions, &DeletionRunner::isRunningChanged, this, &WorkReports::removalChanged);
}

void WorkReports::follow(const FolderTool& tool, const QString& name)
{
    connect(&tool, &FolderTool::stateChanged, this, [this, &tool, name] { scanChanged(tool, name); });
}

bool WorkReports::isWorth(const QElapsedTimer& since) const
{
    return std::chrono::milliseconds{since.elapsed()} >= m_patience &&
           QApplication::activeWindow() == nullptr;
}

void WorkReports::scanChanged(const FolderTool& tool, const QString& name)
{
    const auto running = m_scans.find(&tool);
    if (tool.isScanning() && running == m_scans.end()) {
        m_scans[&tool].start();
        m_clock.start();
    } else if (!tool.isScanning() && running != m_scans.end()) {
        if (isWorth(running->second)) {
            m_desk.notify(name + QStringLiteral(" : analyse terminée"), tool.scanReport());
        }
        m_scans.erase(running);
        showProgress();
    }
}

void WorkReports::removalChanged()
{
    if (m_deletions.isRunning()) {
        m_removal.start();
        m_removed = m_deletions.progress().value_or(RemovalProgress{});
        m_clock.start();
        return;
    }
    if (m_removal.isValid() && isWorth(m_removal)) {
        m_desk.notify(m_removed.isRestoring ? QStringLiteral("Restauration terminée")
                                            : QStringLiteral("Suppression terminée"),
                      NumberText::plural(m_removed.total, QStringLiteral("élément")));
    }
    m_removal.invalidate();
    showProgress();
}

/// Of a removal, else of the scan whose end is known.
std::optional<double> WorkReports::fraction()
{
    if (const auto progress = m_deletions.progress()) {
        m_removed = *progress;
        return progress->total == 0 ? std::nullopt
                                    : std::optional{static_cast<double>(progress->completed) /
                                                    static_cast<double>(progress->total)};
    }
    for (const auto& [tool, since] : m_scans) {
        const auto* const scan = qobject_cast<const ScanToolViewModel*>(tool);
        if (const auto part = scan != nullptr ? scan->scanLine().fraction : std::nullopt) {
            return part;
        }
    }
    return std::nullopt;
}

void WorkReports::showProgress()
{
    const std::optional<double> now = fraction();
    if (std::exchange(m_shown, now) != now) {
        m_desk.showProgress(now);
    }
    if (m_scans.empty() && !m_deletions.isRunning()) {
        m_clock.stop();
    }
}

} // namespace tallyroom
