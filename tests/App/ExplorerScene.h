#pragma once

#include "App/NavigatorScene.h"
#include "App/ScreenWords.h"
#include "Rows/EntryTable.h"
#include "Tools/DiskUsage/DiskUsageView.h"

#include <gtest/gtest.h>

namespace tallyroom {

/// The explorer's screen in a window of its own, on listings that the test feeds by hand.
class ExplorerScene : public testing::Test {
protected:
    ExplorerScene()
    {
        view.resize(900, 600);
        view.show();
        activate(view);
    }

    [[nodiscard]] EntryTable& table() { return *view.findChild<EntryTable*>(); }

    NavigatorScene scene;
    DiskUsageView view{*scene.navigator};
};

} // namespace tallyroom
