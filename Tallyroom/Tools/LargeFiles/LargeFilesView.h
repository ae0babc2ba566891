#pragma once

#include "Tools/Frame/ListToolScreen.h"
#include "Tools/LargeFiles/LargeFilesViewModel.h"

namespace tallyroom {

class OptionMenu;

/// The screen of the largest files: the common frame and the choice of how many. Main thread.
class LargeFilesView : public ListToolScreen {
    Q_OBJECT

public:
    /// `tool` must outlive the screen.
    explicit LargeFilesView(LargeFilesViewModel& tool, QWidget* parent = nullptr);

private:
    void showLimit();

    LargeFilesViewModel& m_largeFiles;
    OptionMenu* m_limit;
};

} // namespace tallyroom
