#pragma once

#include <QScrollArea>
#include <QTimer>

class QLabel;
class QPushButton;

namespace tallyroom {

class DashboardViewModel;
class FileUrl;
class StatusBanner;
class VolumeGrid;

/// The screen of the dashboard: the volumes as cards, and below them the breakdown of a folder by kind of
/// file. The whole page scrolls where the window is small. Main thread.
class DashboardView : public QScrollArea {
    Q_OBJECT

public:
    /// `dashboard` must outlive the screen.
    explicit DashboardView(DashboardViewModel& dashboard, QWidget* parent = nullptr);

    /// Opens the folder chooser.
    void chooseFolder();

private:
    void makeLayout();
    [[nodiscard]] QWidget* makeHeader();
    [[nodiscard]] QWidget* makeVolumes();
    void addShortcuts();
    void connectTrash();
    void showVolumes();
    void showTrashes();
    void showBanner();
    void askToEmpty(const FileUrl& mountPoint);
    void showReading();
    void showNotices();

    DashboardViewModel& m_dashboard;
    QTimer m_patience; // volumes that answer at once are not worth a word
    QPushButton* m_reload;
    VolumeGrid* m_volumes;
    QLabel* m_noVolume;
    QLabel* m_unanswered;
    StatusBanner* m_banner;
};

} // namespace tallyroom
