#pragma once

#include "Shell/SessionStore.h"
#include "Shell/ToolDescriptor.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QWidget>

#include <unordered_map>

class QMessageBox;
class QStackedWidget;

namespace tallyroom {

class MessagePage;
class Sidebar;

/// The window: the tools on the left, the selected one's screen beside them. Remembers its size, takes
/// dropped folders, and reports long scans that end while nobody looks. Main thread.
class ContentView : public QWidget {
    Q_OBJECT

public:
    /// Deletes by `operations`.
    explicit ContentView(RemovalOperations operations = RemovalOperations::real());

    /// Shows the tool of that id; a placeholder for any other text.
    void selectTool(const QString& id);

    [[nodiscard]] const QString& selectedToolID() const { return m_selectedToolID; }

    [[nodiscard]] SessionStore& store() { return m_store; }

    /// Selects the disk-usage explorer and opens `folder` in it.
    void openFolder(const FileUrl& folder);

Q_SIGNALS:
    void selectedToolChanged();

protected:
    void closeEvent(QCloseEvent* event) override;
    bool focusNextPrevChild(bool isForward) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void makeLayout();
    void addShortcuts();
    void restoreSize();
    void askToLeave();
    void leave();
    void watch(const ToolDescriptor& descriptor);
    void showTool();

    SessionStore m_store;
    QString m_selectedToolID;
    std::unordered_map<const ToolDescriptor*, QElapsedTimer> m_scansSince; // the running ones
    std::unordered_map<const ToolDescriptor*, QWidget*> m_screens;         // those once on show
    bool m_isLeaving = false;                                              // though a removal may still run
    QPointer<QMessageBox> m_leaveQuestion;
    Sidebar* m_sidebar;
    QStackedWidget* m_detail;
    MessagePage* m_placeholder;
};

} // namespace tallyroom
