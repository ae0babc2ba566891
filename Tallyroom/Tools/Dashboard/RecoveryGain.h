#pragma once

#include "Bridge/StreamPump.h"
#include "Model/EntryList.h"
#include "Removal/ReclaimEstimate.h"

#include <functional>
#include <memory>
#include <optional>

namespace tallyroom {

/// What really comes back when all that a tool proposes is deleted for good: files may keep other names, or
/// share their blocks. Measured off the main thread. Main thread.
class RecoveryGain {
public:
    /// `known` is called when an answer has come.
    explicit RecoveryGain(std::function<void()> known);

    /// The answer about `proposed`; nothing while it is not known. Asks when this is another proposal than
    /// the last one.
    [[nodiscard]] const std::optional<Reclaim>& of(const EntryList& proposed);

    /// Forgets the answer, and stops the measurement.
    void forget();

private:
    std::function<void()> m_known;
    EntryList m_proposed;
    std::optional<Reclaim> m_reclaim;
    std::unique_ptr<StreamPump<Reclaim>> m_pump;
};

} // namespace tallyroom
