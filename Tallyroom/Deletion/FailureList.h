#pragma once

#include "Controls/TellingDialog.h"
#include "Removal/FileRemover.h"

#include <vector>

namespace tallyroom {

/// Says of each item that a removal or an undo left as it was why it did, and what else there is to know of
/// it. Main thread.
class FailureList : public TellingDialog {
    Q_OBJECT

public:
    FailureList(const std::vector<FileRemover::RemovalFailure>& failures, const QString& note,
                QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;
};

} // namespace tallyroom
