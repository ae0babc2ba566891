#pragma once

#include "App/EventWait.h"
#include "App/ScreenWords.h"
#include "Deletion/DeletionRunner.h"
#include "Scanning/FileScanner.h"
#include "Settings/Settings.h"
#include "Support/Isolation.h"
#include "Support/ListWords.h"
#include "Support/TemporaryTree.h"
#include "Tools/Frame/ScanToolViewModel.h"

namespace tallyroom {

/// Tools on real trees, with settings and a trash of their own.
class ToolScene : public testing::Test {
protected:
    ToolScene()
    {
        Settings::store().clear();
        FileScanner::clearCache();
    }

    static void scan(FolderTool& tool, const FileUrl& folder)
    {
        tool.handleImport(std::vector{folder});
        waitForScan(tool);
    }

    static void waitForScan(FolderTool& tool)
    {
        ASSERT_TRUE(waitUntil(&tool, &FolderTool::stateChanged, [&] { return !tool.isScanning(); }));
    }

    static void waitForRemoval(ScanToolViewModel& tool)
    {
        ASSERT_TRUE(waitUntil(&tool, &ScanToolViewModel::removalChanged, [&] { return !tool.removal(); }));
    }

    TemporaryTree trash;
    ScopedVariable dataHome{"XDG_DATA_HOME", trash.path()};
    DeletionRunner deletions;
};

} // namespace tallyroom
