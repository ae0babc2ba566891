#pragma once

#include "Model/Ecosystem.h"
#include "Tools/Frame/ListToolViewModel.h"

namespace tallyroom {

class ListToolScreen;

/// The folders below a folder of code that build tools can make again. Main thread.
class BuildCachesViewModel : public ListToolViewModel {
    Q_OBJECT
    Q_PROPERTY(std::set<tallyroom::Ecosystem> enabledEcosystems READ enabledEcosystems WRITE
                   setEnabledEcosystems NOTIFY remarksChanged)

public:
    explicit BuildCachesViewModel(DeletionRunner& deletions);

    /// The ecosystems that are looked for; survive a restart.
    [[nodiscard]] const std::set<Ecosystem>& enabledEcosystems() const { return m_enabled.value(); }

    /// Stores another set and scans again for it.
    void setEnabledEcosystems(const std::set<Ecosystem>& ecosystems) { m_enabled.set(ecosystems); }

    [[nodiscard]] Recovery recovery() const override;

protected:
    [[nodiscard]] FileScanner::ScanStream startStream() override;

private:
    ToolOption<std::set<Ecosystem>, Ecosystem> m_enabled;
};

/// Their screen.
/// `tool` must outlive it. Main thread.
[[nodiscard]] ListToolScreen* makeBuildCachesScreen(BuildCachesViewModel& tool);

} // namespace tallyroom
