#pragma once

#include "Shell/SessionStore.h"
#include "Shell/ToolDescriptor.h"
#include "Shell/WorkReports.h"

#include <QPointer>
#include <QWidget>

#include <unordered_map>

class QMessageBox;
class QStackedWidget;

namespace tallyroom {

class DropHint;
class MessagePage;
class Sidebar;
class WindowMenu;

/// The window: the tools on the left, the selected one's screen beside them. Remembers its size, takes
/// dropped folders, and reports long work that ends while nobody looks. Main thread.
class ContentView : public QWidget {
    Q_OBJECT

public:
    /// Deletes by `operations`.
    explicit ContentView(RemovalOperations operations = RemovalOperations::real());

    /// Shows the tool of that id; a placeholder for any other text.
    void selectTool(const QString& id);

    [[nodiscard]] const QString& selectedToolID() const { return m_selectedToolID; }

    [[nodiscard]] SessionStore& store() { return m_store; }

    /// Selects the tool of large files for those of a kind below `folder`.
    void openLargestOf(const FileUrl& folder, FileKind kind);

    /// Selects the disk-usage explorer and opens `folder` in it.
    void openFolder(const FileUrl& folder);

Q_SIGNALS:
    void selectedToolChanged();

protected:
    void closeEvent(QCloseEvent* event) override;
    bool focusNextPrevChild(bool isForward) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void makeLayout();
    void addShortcuts();
    void connectMenu();
    void chooseFolder();
    void showKeys();
    void showPreferences();
    void showAbout();
    void followScanRules();
    void restoreSize();
    void askToLeave();
    void leave();
    void watch(const ToolDescriptor& descriptor);
    void showTool();

    SessionStore m_store;
    QString m_selectedToolID;
    WorkReports m_reports;
    std::unordered_map<const ToolDescriptor*, QWidget*> m_screens; // those once on show
    bool m_isLeaving = false;                                      // though a removal may still run
    QPointer<QMessageBox> m_leaveQuestion;
    Sidebar* m_sidebar;
    WindowMenu* m_menu;
    QStackedWidget* m_detail;
    MessagePage* m_placeholder;
    DropHint* m_dropHint;
};

} // namespace tallyroom
