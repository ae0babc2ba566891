#pragma once

#include "Tools/Frame/ListToolScreen.h"
#include "Tools/NodeModules/NodeModulesViewModel.h"

class QPushButton;

namespace tallyroom {

class OptionMenu;

/// The screen of the `node_modules` folders: the common frame, the age threshold, and the way to delete all
/// old ones in one go. Main thread.
class NodeModulesView : public ListToolScreen {
    Q_OBJECT

public:
    /// `tool` must outlive the screen.
    explicit NodeModulesView(NodeModulesViewModel& tool, QWidget* parent = nullptr);

protected:
    [[nodiscard]] QString summary() const override;
    void showEntries() override;

private:
    void showThreshold();
    void showOld();
    void askDeletionOfOld();

    NodeModulesViewModel& m_nodeModules;
    OptionMenu* m_threshold;
    QPushButton* m_deleteOld;
};

} // namespace tallyroom
