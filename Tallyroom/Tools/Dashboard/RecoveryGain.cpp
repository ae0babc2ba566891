#include "Tools/Dashboard/RecoveryGain.h"

#include "Bridge/AskApart.h"

#include <utility>
#include <vector>

namespace tallyroom {

namespace {

/// One record; dropping the stream stops the measurement.
ProgressStream<Reclaim> measureApart(std::vector<Entry> entries)
{
    auto [sender, stream] = makeProgressStream<Reclaim>();
    runApart([entries = std::move(entries),
              sender = std::make_unique<ProgressSender<Reclaim>>(std::move(sender))]() mutable {
        sender->send(measureReclaim(entries, sender->stopToken()));
        sender.reset();
    });
    return std::move(stream);
}

} // namespace

RecoveryGain::RecoveryGain(std::function<void()> known) : m_known(std::move(known)) {}

const std::optional<Reclaim>& RecoveryGain::of(const EntryList& proposed)
{
    if (m_pump == nullptr || m_proposed != proposed) {
        m_reclaim.reset();
        m_proposed = proposed;
        m_pump = std::make_unique<StreamPump<Reclaim>>(
            measureApart(proposed.toVector()),
            [this](const Reclaim& reclaim) {
                m_reclaim = reclaim;
                m_known();
            },
            [] {});
    }
    return m_reclaim;
}

void RecoveryGain::forget()
{
    m_pump.reset();
    m_reclaim.reset();
    m_proposed = {};
}

} // namespace tallyroom
