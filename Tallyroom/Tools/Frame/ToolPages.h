#pragma once

#include "Tools/Frame/ScanToolViewModel.h"
#include "Welcome/ToolWelcome.h"

#include <QStackedWidget>

class QPushButton;

namespace tallyroom {

class MessagePage;
class ScanningView;

/// The middle of a tool's screen: the list, or the page in its place before, during and after a scan.
/// Main thread.
class ToolPages : public QStackedWidget {
    Q_OBJECT

public:
    /// `tool` must outlive the pages; `emptyMessage` is for a finished scan that found nothing.
    ToolPages(ScanToolViewModel& tool, const ToolWelcome::Content& welcome, const QString& emptyMessage,
              QWidget* parent = nullptr);

    /// Adds a view of the list; the first one is shown until `showList`.
    void addList(QWidget* list);

    void showList(QWidget* list);

    /// The view of the list that is shown when there is something to list.
    [[nodiscard]] QWidget* list() const { return m_lists->currentWidget(); }

    /// Gives the list the keyboard, or the first button of the page in its place; false where neither is.
    bool takeKeyboard();

    /// Chooses the page. `isPatient`: the scan began a moment ago and is not worth a word yet.
    /// `hidesEverything`: the filter lets no entry through.
    void showPage(bool isPatient, bool hidesEverything);

    // In a low window the list gives way, not what can be done with it; and the highest of the pages, on show
    // or not, is no measure.
    [[nodiscard]] QSize minimumSizeHint() const override;

    [[nodiscard]] bool hasHeightForWidth() const override { return false; }

Q_SIGNALS:
    void folderRequested();

private:
    void makeMessages();
    void showRecents();
    [[nodiscard]] QWidget* page(bool isPatient, bool hidesEverything) const;

    ScanToolViewModel& m_tool;
    QString m_emptyMessage;
    ToolWelcome* m_welcome;
    ScanningView* m_scanning;
    QStackedWidget* m_lists;
    MessagePage* m_empty;
    QPushButton* m_retry = nullptr; // there, for a folder that cannot be read
    MessagePage* m_noMatch;
    MessagePage* m_error;
};

} // namespace tallyroom
