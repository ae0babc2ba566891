#pragma once

#include "Removal/TrashContents.h"

#include <QDialog>

namespace tallyroom {

/// Asks whether a volume's trash shall be emptied, and names what goes. "Annuler" is what Enter takes. Main
/// thread.
class EmptyTrashConfirmation : public QDialog {
    Q_OBJECT

public:
    /// `volume`: its name, as it is drawn.
    EmptyTrashConfirmation(const TrashContents& contents, const QString& volume, QWidget* parent);
};

} // namespace tallyroom
