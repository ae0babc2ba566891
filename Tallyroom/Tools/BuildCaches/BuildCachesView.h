#pragma once

#include "Tools/BuildCaches/BuildCachesViewModel.h"
#include "Tools/Frame/ListToolScreen.h"

namespace tallyroom {

class OptionMenu;

/// The screen of the build caches: the common frame and the choice of ecosystems. Main thread.
class BuildCachesView : public ListToolScreen {
    Q_OBJECT

public:
    /// `tool` must outlive the screen.
    explicit BuildCachesView(BuildCachesViewModel& tool, QWidget* parent = nullptr);

private:
    void enable(Ecosystem ecosystem, bool isOn);
    void showEcosystems();

    BuildCachesViewModel& m_caches;
    OptionMenu* m_ecosystems;
};

} // namespace tallyroom
