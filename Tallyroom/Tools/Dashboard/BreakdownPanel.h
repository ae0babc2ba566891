#pragma once

#include <QTimer>
#include <QWidget>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace tallyroom {

class DashboardViewModel;
class KindBar;
class LinkedLabel;
class NoticeLine;
class RecentFolderList;
class ToolTitle;

/// The lower part of the dashboard: which kinds of files fill a folder, or what stands there before, while
/// and when nothing is found. Main thread.
class BreakdownPanel : public QWidget {
    Q_OBJECT

public:
    /// `dashboard` must outlive the panel.
    explicit BreakdownPanel(DashboardViewModel& dashboard, QWidget* parent = nullptr);

Q_SIGNALS:
    /// The user wants to choose a folder.
    void folderRequested();

private:
    [[nodiscard]] QWidget* makeHeader();
    [[nodiscard]] QWidget* makeCard();
    [[nodiscard]] QWidget* makeError();
    [[nodiscard]] QWidget* makeProgress();
    [[nodiscard]] QWidget* makeKinds();
    [[nodiscard]] QWidget* makeRecents();
    void showState();
    void showParts();
    void showProgress();
    void showKinds();
    void showRecents();
    void showErrorSymbol();
    [[nodiscard]] bool hasFolder() const;
    [[nodiscard]] bool isStopped() const;
    [[nodiscard]] QString message() const;

    DashboardViewModel& m_dashboard;
    QTimer m_patience; // analyses that end at once are not worth a word
    ToolTitle* m_title;
    QWidget* m_error;
    QLabel* m_errorSymbol;
    QLabel* m_errorText;
    QWidget* m_progress;
    QLabel* m_scanned;
    QWidget* m_kinds;
    KindBar* m_bar;
    NoticeLine* m_outdated;
    LinkedLabel* m_total;
    QVBoxLayout* m_rows;
    QLabel* m_account;
    QLabel* m_message;
    QPushButton* m_resume;
    QWidget* m_recentsPlace;
    RecentFolderList* m_recents;
};

} // namespace tallyroom
