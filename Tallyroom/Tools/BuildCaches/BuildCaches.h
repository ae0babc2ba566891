#pragma once

#include "Model/Ecosystem.h"
#include "Tools/Frame/ListToolViewModel.h"

#include <set>

namespace tallyroom {

class ListToolScreen;

/// The folders below a folder of code that build tools can make again. Main thread.
class BuildCachesViewModel : public ListToolViewModel {
    Q_OBJECT
    Q_PROPERTY(std::set<tallyroom::Ecosystem> enabledEcosystems READ enabledEcosystems WRITE
                   setEnabledEcosystems NOTIFY enabledEcosystemsChanged)

public:
    explicit BuildCachesViewModel(DeletionRunner& deletions);

    /// The ecosystems that are looked for; survive a restart.
    [[nodiscard]] const std::set<Ecosystem>& enabledEcosystems() const { return m_enabled; }

    /// Stores another set and scans again for it.
    void setEnabledEcosystems(const std::set<Ecosystem>& ecosystems);

    /// The same with one more, or one less.
    void enable(Ecosystem ecosystem, bool isOn);

    [[nodiscard]] Recovery recovery() const override;

Q_SIGNALS:
    void enabledEcosystemsChanged();

protected:
    [[nodiscard]] FileScanner::ScanStream startStream() override;

private:
    std::set<Ecosystem> m_enabled;
};

/// Their screen: the common frame and the choice of ecosystems.
/// `tool` must outlive it. Main thread.
[[nodiscard]] ListToolScreen* makeBuildCachesScreen(BuildCachesViewModel& tool);

} // namespace tallyroom
