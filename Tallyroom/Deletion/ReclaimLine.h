#pragma once

#include "Model/Entry.h"
#include "Removal/ReclaimEstimate.h"

#include <QLabel>

#include <cstdint>
#include <stop_token>
#include <vector>

namespace tallyroom {

/// What would come back if items were deleted for good. Measures it off the main thread and says it when it
/// is known; going away ends the measurement. Main thread.
class ReclaimLine : public QLabel {
    Q_OBJECT

public:
    explicit ReclaimLine(std::vector<Entry> entries, QWidget* parent = nullptr);
    ~ReclaimLine() override;

    /// The line for items of `size` bytes in all.
    [[nodiscard]] static QString sentence(const Reclaim& reclaim, std::int64_t size);

Q_SIGNALS:
    /// It says what comes back now.
    void measured();

private:
    std::stop_source m_stop;
};

} // namespace tallyroom
