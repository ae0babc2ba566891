#pragma once

#include "Deletion/DeleteConfirmation.h"

#include <QWidget>

#include <vector>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace tallyroom {

class DashboardViewModel;
class RecoveryLine;
class RecoveryViewModel;
class StatusBanner;
class ToolTitle;

/// The last part of the dashboard: a search for room in a folder, what it has found, and after a removal what
/// the volume has gained. Hidden while no tool takes part. Main thread.
class RecoveryPanel : public QWidget {
    Q_OBJECT

public:
    /// `dashboard` must outlive the panel.
    explicit RecoveryPanel(DashboardViewModel& dashboard, QWidget* parent = nullptr);

Q_SIGNALS:
    /// The trash of a volume shall be emptied.
    void emptyRequested(const tallyroom::FileUrl& mountPoint);

private:
    [[nodiscard]] QWidget* makeHeader();
    [[nodiscard]] QWidget* makeCard();
    [[nodiscard]] QWidget* makeGain();
    void connectBanner();
    void addLines();
    void chooseFolder();
    void showEverything();
    void showButtons();
    void showLines();
    [[nodiscard]] QString message() const;
    void showGain();
    void showBanner();
    void ask(std::size_t place);
    void askFinalDeletion();
    void requestEmptying();

    DashboardViewModel& m_dashboard;
    RecoveryViewModel& m_recovery;
    ToolTitle* m_title;
    QPushButton* m_search;
    QPushButton* m_stop;
    QLabel* m_message;
    QVBoxLayout* m_column;
    std::vector<RecoveryLine*> m_lines; // one a tool, in their order
    RecoveryLine* m_trash = nullptr;
    QWidget* m_gain;
    QLabel* m_gained;
    QPushButton* m_empty;
    StatusBanner* m_banner;
};

} // namespace tallyroom
