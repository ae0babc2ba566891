#pragma once

#include "Controls/TellingDialog.h"

class QTreeWidget;

namespace tallyroom {

/// All keys that do something now: those of the window, of the tool on show, of lists and of the map. Main
/// thread.
class KeysDialog : public TellingDialog {
    Q_OBJECT

public:
    /// Reads the shortcuts of `window` and of `screen`, which may be null and is called `toolName`.
    KeysDialog(const QWidget& window, const QWidget* screen, const QString& toolName, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

private:
    QTreeWidget* m_list;
};

} // namespace tallyroom
