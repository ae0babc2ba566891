#pragma once

#include "Deletion/DeletionRunner.h"

#include <QString>
#include <QTimer>
#include <QWidget>

#include <optional>
#include <vector>

class QLabel;
class QPushButton;

namespace tallyroom {

class Spinner;

/// The line that reports a deletion or an undo, offers to take a deletion back, and says how far one has come
/// that takes long, which can be stopped. Hidden while there is nothing to say. Main thread.
class StatusBanner : public QWidget {
    Q_OBJECT

public:
    explicit StatusBanner(QWidget* parent = nullptr);

    /// `failures` are what the message says went wrong; the reasons are a click away, and so is the `note`.
    void showMessage(const std::optional<QString>& message, ReportTone tone = ReportTone::done,
                     const std::vector<FileRemover::RemovalFailure>& failures = {}, const QString& note = {});

    /// Offers to take trashed items back, or, while the message says that they went there, to delete them.
    void showUndo(bool isOffered, bool isTold = true);
    void showRemoval(const std::optional<RemovalProgress>& progress);

Q_SIGNALS:
    void undoRequested();
    /// What lies in the trash is to be deleted for good.
    void finalDeletionRequested();
    void stopRequested();
    /// The content or the visibility changed.
    void contentChanged();
    void dismissed();

private:
    void showContent();
    void showSymbol();
    void tellFailures();

    std::optional<QString> m_message;
    ReportTone m_tone = ReportTone::done;
    std::vector<FileRemover::RemovalFailure> m_failures;
    QString m_note;
    std::optional<RemovalProgress> m_progress;
    bool m_isUndoOffered = false;
    bool m_isTrashTold = false;
    QTimer m_patience; // short removals end before they are worth a word
    QLabel* m_symbol;
    Spinner* m_spinner;
    QLabel* m_text;
    QPushButton* m_details;
    QPushButton* m_undo;
    QPushButton* m_deleteTrashed;
    QPushButton* m_stop;
    QPushButton* m_close;
};

} // namespace tallyroom
