#include "App/DuplicatesScene.h"
#include "Tools/Duplicates/DuplicateTableModel.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(DuplicatesTest, ListsGroupsByWasteAndCountsHardLinksAsNoGain)
{
    scan();
    EXPECT_THAT(listed(), ElementsAre("a/big,b/big", "c/medium,x/medium,x/medium link", "d/small,e/small"));
    EXPECT_EQ(tool->totalWasted(), 1'000 + 600 + 1);
    EXPECT_EQ(tool->totalReclaimable(), 1'000 + 300 + 1);
    EXPECT_EQ(tool->scanned(), 8);
    EXPECT_FALSE(tool->isHashing());
    EXPECT_EQ(tool->allEntries().size(), 7U);
}

TEST_F(DuplicatesTest, TheFilterKeepsGroupsWholeAndChecksCopiesThatItDoesNotMatch)
{
    scan();
    tool->setSearchText(QStringLiteral("B/BIG"));
    EXPECT_THAT(tool->filteredGroups(), ElementsAre(0));
    EXPECT_EQ(tool->redundantURLs(), urls({"b/big"}));
    tool->setSearchText(QStringLiteral("a/big"));
    EXPECT_EQ(tool->redundantURLs(), urls({"b/big"}));
    EXPECT_EQ(tool->totalWasted(), 1'601); // of all groups
    tool->setSearchText({});
    EXPECT_EQ(tool->redundantURLs(), urls({"b/big", "x/medium", "x/medium link", "e/small"}));
}

TEST_F(DuplicatesTest, WhatWasTrashedComesBackWithItsGroups)
{
    scan();
    const std::vector<DuplicateGroup> before = tool->groups();
    remove({"b/big", "x/medium", "d/small"});
    EXPECT_THAT(listed(), ElementsAre("c/medium,x/medium link"));
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("3 élément(s) · 1 Ko mis à la corbeille."));
    EXPECT_FALSE(exists("b/big"));
    ASSERT_TRUE(tool->canUndo());

    tool->undoDeletion();
    waitForRemoval();
    EXPECT_EQ(tool->groups(), before);
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("Suppression annulée."));
    EXPECT_TRUE(exists("b/big") && exists("x/medium") && exists("d/small"));
    EXPECT_FALSE(tool->canUndo());
    // What came back is known as the very file that was digested: it may go again.
    remove({"b/big", "e/small"});
    EXPECT_THAT(tool->failures(), IsEmpty());
    write("b/big", "occupied");
    tool->undoDeletion();
    waitForRemoval();
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("Restauration partielle : 1 en échec."));
    EXPECT_THAT(listed(), ElementsAre("c/medium,x/medium,x/medium link", "d/small,e/small"));
}

TEST_F(DuplicatesTest, APermanentRemovalEndsTheUndoOfTheOneBefore)
{
    scan();
    remove({"b/big"});
    remove({"e/small"}, true);
    EXPECT_FALSE(tool->canUndo());
    EXPECT_THAT(listed(), ElementsAre("c/medium,x/medium,x/medium link"));
    write("b/big", big);
    scan();
    EXPECT_THAT(listed(), testing::Contains("a/big,b/big")) << "it is there again";
}

TEST_F(DuplicatesTest, ARemovalThatEndsDuringTheNextScanLeavesNothingGoneInItsList)
{
    scan();
    tool->deleteSelected(urls({"b/big"}), false);
    tool->refresh();
    waitForRemoval();
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("1 élément(s) · 1 Ko mis à la corbeille."));
    waitForScan();
    EXPECT_THAT(listed(), ElementsAre("c/medium,x/medium,x/medium link", "d/small,e/small"));
    EXPECT_FALSE(tool->canUndo());
}

TEST_F(DuplicatesTest, AnotherFolderIsToldOnce)
{
    tree.add({sparseFile("huge1", 100'000_MiB), sparseFile("huge2", 100'000_MiB)});
    tool->open(tree.url());
    ASSERT_TRUE(
        waitUntil(tool.get(), &DuplicatesViewModel::progressChanged, [this] { return tool->isHashing(); }));
    const QSignalSpy progress{tool.get(), &DuplicatesViewModel::progressChanged};
    tool->open(m_trash.url());
    EXPECT_EQ(progress.count(), 1);
}

TEST_F(DuplicatesTest, WhatIsSaidOfLinksAndOfTheTrashIsWhatIsChecked)
{
    const std::string text = std::string(2'000, 't');
    tree.add({file("0data/Trash/files/text", text), folder("0data/Trash/info"), link("data", "0data"),
              file("docs/text", text), hardLink("docs/text link", "docs/text"), file("other/text", text)});
    const ScopedVariable dataHome{"XDG_DATA_HOME", tree.path("data")};
    scan();
    tool->setSearchText(QStringLiteral("docs"));
    EXPECT_EQ(tool->redundantURLs(), urls({"other/text"}));
    EXPECT_EQ(tool->groupsLosingAllCopies(urls({"docs/text", "docs/text link", "other/text"})), 1U);

    DuplicateTableModel model;
    model.setGroups(tool->sharedGroups(), tool->filteredGroups());
    const auto said = [&model](int row) {
        std::string texts;
        for (const EntryBadge& badge : model.badges(row)) {
            texts += (texts.empty() ? "" : ", ") + badge.text.toStdString();
        }
        return texts;
    };
    model.toggleGroup(0);
    EXPECT_EQ(model.selection().urls(), urls({"other/text"}));
    EXPECT_EQ(said(1), "conservé, dans la corbeille");
    EXPECT_EQ(said(2), "conservé");
    EXPECT_EQ(said(3), "conservé, lien physique, rien à récupérer");
    EXPECT_EQ(said(4), "");
    model.checkOthers(*model.entryAt(4));
    EXPECT_EQ(model.selection().urls(), urls({"docs/text", "docs/text link"}))
        << "the one to keep is not checked";
    EXPECT_EQ(said(4), "conservé");
    model.toggleGroup(0);
    model.toggleGroup(0);
    EXPECT_THAT(model.selection().urls(), IsEmpty());
    EXPECT_EQ(said(4), "") << "nothing is kept where nothing is checked";
}

TEST_F(DuplicatesTest, StoppingKeepsTheToolUsableAndAScanForgetsTheUndo)
{
    scan();
    remove({"b/big"});
    tool->refresh();
    EXPECT_TRUE(tool->isScanning());
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_FALSE(tool->canUndo());
    tool->cancelScan();
    EXPECT_EQ(tool->state(), ToolState::loaded());
    EXPECT_FALSE(tool->isHashing());
    tool->deleteSelected(urls({"a/big"}), true); // no longer listed
    EXPECT_FALSE(tool->removal().has_value());
    EXPECT_TRUE(exists("a/big"));
}

} // namespace

} // namespace tallyroom
