#pragma once

#include <QTimer>
#include <QWidget>

class QLabel;
class QPushButton;
class QScrollArea;

namespace tallyroom {

class DashboardViewModel;
class FileUrl;
class StatusBanner;
class VolumeGrid;

/// The screen of the dashboard: the volumes as cards, and below them the breakdown of a folder by kind of
/// file. All below the title scrolls where the window is small. Main thread.
class DashboardView : public QWidget {
    Q_OBJECT

public:
    /// `dashboard` must outlive the screen.
    explicit DashboardView(DashboardViewModel& dashboard, QWidget* parent = nullptr);

    /// Opens the folder chooser.
    void chooseFolder();

protected:
    bool focusNextPrevChild(bool next) override;

private:
    void makeLayout();
    void makePage();
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
    QScrollArea* m_scroll;
    QTimer m_patience; // volumes that answer at once are not worth a word
    QPushButton* m_reload;
    VolumeGrid* m_volumes;
    QLabel* m_noVolume;
    QLabel* m_unanswered;
    StatusBanner* m_banner;
};

} // namespace tallyroom
