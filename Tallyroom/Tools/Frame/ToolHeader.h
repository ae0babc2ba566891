#pragma once

#include "Model/FileUrl.h"

#include <QString>
#include <QWidget>

#include <array>

class QBoxLayout;
class QHBoxLayout;
class QPushButton;

namespace tallyroom {

class ExportButton;
class FlowLayout;
class FolderButton;
class LinkedLabel;
class NoticeLine;
class SearchField;

/// The top of a tool's screen: where one is, the filter, the tool's own options, "Rafraîchir" or "Arrêter",
/// "Exporter", and a line that sums up the list. Where the window is narrow, the filter and the options go
/// into a second row, and the options into rows of their own where that is not enough. Main thread.
class ToolHeader : public QWidget {
    Q_OBJECT

public:
    explicit ToolHeader(const QString& searchPlaceholder, QWidget* parent = nullptr);

    /// What stands on the left; the one before it is thrown away.
    void setLeading(QWidget* leading);

    /// A control of the tool's own, between the filter and the buttons that all tools have.
    void addOption(QWidget* option);

    /// A button that acts on the list, below the line that sums it up.
    void addAction(QWidget* action);

    /// The same for something that takes a row of its own.
    void addRow(QWidget* row);

    [[nodiscard]] SearchField& searchField() { return *m_search; }

    void showScanning(bool isScanning);
    /// `unread` ends the line, as a link to what could not be read; none where it is empty.
    void showSummary(const QString& summary, const QString& unread = {});
    /// What has to be known about the list, nothing when empty, and the button that goes with it.
    void showNotice(const QString& notice, const QString& action = {});
    void showEntryCount(std::size_t count);

Q_SIGNALS:
    void folderRequested();
    void recentRequested(const tallyroom::FileUrl& folder);
    void refreshRequested();
    void stopRequested();
    void exportRequested();
    void unreadRequested();
    void noticeActionRequested();

protected:
    bool event(QEvent* event) override;

private:
    void fold();
    /// Those that all tools have.
    [[nodiscard]] std::array<QWidget*, 4> buttons() const;
    [[nodiscard]] int buttonsWidth() const;

    QBoxLayout* m_column;
    QBoxLayout* m_row;
    QWidget* m_leading = nullptr;
    QBoxLayout* m_filters; // the search field and the options
    FlowLayout* m_options;
    SearchField* m_search;
    FolderButton* m_folder;
    QPushButton* m_refresh;
    QPushButton* m_stop;
    ExportButton* m_export;
    LinkedLabel* m_summary;
    NoticeLine* m_notice;
    QHBoxLayout* m_actions;
};

} // namespace tallyroom
