#pragma once

#include "Deletion/DeletionQuestion.h"
#include "Deletion/DeletionSupport.h"

#include <QList>

namespace tallyroom {

/// Asks how to delete, to the trash, for good, or not at all, and names what goes. Main thread.
class DeleteConfirmation : public DeletionQuestion {
    Q_OBJECT

public:
    /// The choice that Enter takes. Items that lie in the trash already can only go for good, and Enter
    /// leaves them there.
    enum class Default { trash, permanent, leaveInTrash };

    /// The warning before a deletion; each part may be empty.
    struct Caution {
        QString warning;         ///< stands below the question
        QString acknowledgement; ///< what the user has to tick before anything can be deleted
    };

    DeleteConfirmation(std::vector<Entry> entries, Default choice, const Caution& caution, QWidget* parent);

    [[nodiscard]] const PendingDeletion& pending() const { return m_pending; }

Q_SIGNALS:
    /// The user chose a way to delete; the dialog closes.
    void confirmed(const std::vector<tallyroom::Entry>& entries, bool permanently);

private:
    [[nodiscard]] QString message(Default choice) const;
    QPushButton* addWay(const QString& text, bool permanently);
    void demand(const QString& acknowledgement, const QList<QPushButton*>& choices);

    std::vector<Entry> m_entries;
    PendingDeletion m_pending;
};

} // namespace tallyroom
