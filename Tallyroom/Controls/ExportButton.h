#pragma once

#include <QPushButton>

#include <cstddef>

namespace tallyroom {

/// "Exporter": emits `clicked`; disabled while there is nothing to export. Main thread.
class ExportButton : public QPushButton {
    Q_OBJECT

public:
    explicit ExportButton(QWidget* parent = nullptr);

    /// How many entries an export would hold.
    void setEntryCount(std::size_t count);
};

} // namespace tallyroom
