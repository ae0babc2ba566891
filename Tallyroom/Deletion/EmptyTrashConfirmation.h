#pragma once

#include "Deletion/DeletionQuestion.h"
#include "Removal/TrashContents.h"

namespace tallyroom {

/// Asks whether a volume's trash shall be emptied, and names what goes. "Annuler" is what Enter takes. Main
/// thread.
class EmptyTrashConfirmation : public DeletionQuestion {
    Q_OBJECT

public:
    /// `volume`: its name, as it is drawn.
    EmptyTrashConfirmation(const TrashContents& contents, const QString& volume, QWidget* parent);
};

} // namespace tallyroom
