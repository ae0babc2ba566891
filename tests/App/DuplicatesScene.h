#pragma once

#include "App/EventWait.h"
#include "Scanning/FileScanner.h"
#include "Settings/Settings.h"
#include "Support/Isolation.h"
#include "Support/ListWords.h"
#include "Support/TemporaryTree.h"
#include "Tools/Duplicates/DuplicatesViewModel.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace tallyroom {

/// A tool on a tree of three groups, the most wasteful first: a big pair, three medium files of which two are
/// one file, and a small pair.
class DuplicatesTest : public testing::Test {
protected:
    void SetUp() override
    {
        Settings::store().clear();
        FileScanner::clearCache();
        tool = std::make_unique<DuplicatesViewModel>(m_deletions);
        tool->setMinimumSize(1);
    }

    void scan()
    {
        tool->open(tree.url());
        waitForScan();
    }

    void waitForScan() const
    {
        ASSERT_TRUE(waitUntil(tool.get(), &FolderTool::stateChanged, [this] { return !tool->isScanning(); }));
    }

    /// "a,b" for each group.
    [[nodiscard]] std::vector<std::string> listed() const
    {
        std::vector<std::string> groups;
        for (const DuplicateGroup& group : tool->groups()) {
            std::string names;
            for (const std::string& name : below(tree, group.entries)) {
                names += (names.empty() ? "" : ",") + name;
            }
            groups.push_back(names);
        }
        return groups;
    }

    UrlSet urls(std::initializer_list<std::string_view> names) const
    {
        UrlSet set;
        for (const std::string_view name : names) {
            set.insert(tree.url(name));
        }
        return set;
    }

    void waitForRemoval()
    {
        ASSERT_TRUE(
            waitUntil(tool.get(), &ScanToolViewModel::removalChanged, [this] { return !tool->removal(); }));
    }

    void remove(std::initializer_list<std::string_view> names, bool permanently = false)
    {
        tool->deleteSelected(urls(names), permanently);
        waitForRemoval();
    }

    [[nodiscard]] bool exists(std::string_view name) const
    {
        return std::filesystem::exists(tree.url(name).path());
    }

    void write(std::string_view name, const std::string& content) const
    {
        std::ofstream{tree.url(name).path()} << content;
    }

    TemporaryTree m_trash;
    ScopedVariable m_dataHome{"XDG_DATA_HOME", m_trash.path()};
    DeletionRunner m_deletions;
    const std::string big = std::string(1'000, 'b');
    TemporaryTree tree{file("a/big", big),
                       file("b/big", big),
                       file("c/medium", std::string(300, 'm')),
                       file("d/small", "s"),
                       file("e/small", "s"),
                       file("lonely", "l..."),
                       file("x/medium", std::string(300, 'm')),
                       hardLink("x/medium link", "x/medium")};
    std::unique_ptr<DuplicatesViewModel> tool;
};

} // namespace tallyroom
