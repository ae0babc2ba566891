#pragma once

#include "Deletion/DeletionSupport.h"

#include <QDialog>

class QPushButton;

namespace tallyroom {

/// Asks how to delete: to the trash, for good, or not at all. Main thread.
class DeleteConfirmation : public QDialog {
    Q_OBJECT

public:
    /// The choice that Enter takes.
    enum class Default { trash, permanent };

    /// `warning`, when there is one, stands below the question.
    DeleteConfirmation(PendingDeletion pending, Default choice, const QString& warning, QWidget* parent);

    [[nodiscard]] const PendingDeletion& pending() const { return m_pending; }

Q_SIGNALS:
    /// The user chose a way to delete; the dialog closes.
    void confirmed(const tallyroom::UrlSet& urls, bool permanently);

private:
    [[nodiscard]] QString message() const;
    QPushButton* addChoice(const QString& text, bool permanently);

    PendingDeletion m_pending;
};

} // namespace tallyroom
