#include "App/WindowScene.h"
#include "Bridge/Desktop.h"
#include "Deletion/DeleteConfirmation.h"
#include "Deletion/FailureList.h"
#include "Deletion/ReclaimLine.h"
#include "Deletion/StatusBanner.h"
#include "Text/SizeText.h"
#include "Theme/Theme.h"

#include <QDialog>
#include <QLabel>
#include <QPlainTextEdit>

#include <algorithm>
#include <functional>
#include <gmock/gmock.h>
#include <iterator>

namespace tallyroom {

namespace {

using testing::ElementsAre;

/// What comes back from a deletion, from the question to the emptied trash.
class ReclaimFlowTest : public WindowScene {};

TEST_F(ReclaimFlowTest, TheTrashFreesNothingUntilItsItemsAreDeletedForGood)
{
    const TemporaryTree tree{file("store/a", 2_MiB), hardLink("project/a", "store/a"),
                             file("project/own", 1_MiB), file("other", 4_KiB)};
    scan("disk-usage", tree.url());
    remove(store().diskUsage, {tree.url("other")}); // lies in the trash when this begins

    shown<ToolScreen>().askDeletion({store().diskUsage.entries().toVector().at(0)},
                                    DeleteConfirmation::Default::trash);
    auto* question = dialog<DeleteConfirmation>();
    ASSERT_NE(question, nullptr);
    const QString own = sizeText(allocated(tree.path("project/own")));
    const QString linked = sizeText(allocated(tree.path("store/a")));
    const QString line =
        QStringLiteral("Suppression définitive : %1 libérés (%2 ont d’autres noms ailleurs)");
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return question->accessibleDescription().endsWith(line.arg(own, linked));
    })) << question->accessibleDescription().toStdString();
    answer<DeleteConfirmation>("Mettre à la corbeille");
    waitForRemoval();
    ASSERT_FALSE(tree.exists("project"));
    EXPECT_TRUE(shown<StatusBanner>().accessibleName().endsWith(
        QStringLiteral("L’espace sera libéré quand la corbeille sera vidée.")));

    click("Supprimer définitivement ces éléments");
    question = dialog<DeleteConfirmation>();
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(visibleButton(*question, QStringLiteral("Mettre à la corbeille")), nullptr);
    answer<DeleteConfirmation>("Supprimer définitivement");
    waitForRemoval();
    EXPECT_THAT(trash.names("Trash/files"), ElementsAre("other")) << "only what was just moved there";
    EXPECT_THAT(trash.names("Trash/info"), ElementsAre("other.trashinfo"));
    EXPECT_FALSE(store().diskUsage.canUndo());
    EXPECT_EQ(button(QStringLiteral("Supprimer définitivement ces éléments")), nullptr);
    EXPECT_EQ(window->focusWidget(), &shown<EntryTable>()) << "its button is gone";
}

TEST_F(ReclaimFlowTest, ItSaysWhatTheVolumeGainedWhereThatIsSomethingElse)
{
    const TemporaryTree tree{file("store/a", 32_MiB), hardLink("project/a", "store/a"),
                             file("plain", 32_MiB)};
    scan("disk-usage", tree.url());
    remove(store().diskUsage, {tree.url("plain")}, true);
    EXPECT_EQ(store().diskUsage.removalNote(), QString{});
    remove(store().diskUsage, {tree.url("project")}, true);
    const QString note = store().diskUsage.removalNote();
    EXPECT_TRUE(note.startsWith(QStringLiteral("L’espace libre "))) << note.toStdString();
    click("Détails…");
    auto* const details = dialog<FailureList>();
    ASSERT_NE(details, nullptr);
    EXPECT_EQ(details->findChild<QPlainTextEdit*>()->toPlainText(), note);
}

TEST(ReclaimLine, SaysWhatIsSureAndWhatIsNot)
{
    const QString gain = QStringLiteral("Suppression définitive : ");
    const QString shared = QStringLiteral(" (blocs partagés avec d’autres fichiers ou des instantanés)");
    const QString one = sizeText(1_MiB);
    const QString two = sizeText(2_MiB);
    EXPECT_EQ(ReclaimLine::sentence({2_MiB, 2_MiB}, 2_MiB), gain + two + QStringLiteral(" libérés"));
    EXPECT_EQ(ReclaimLine::sentence({1_MiB, 2_MiB}, 2_MiB),
              gain + QStringLiteral("au moins %1 et au plus %2 libérés").arg(one, two) + shared);
    EXPECT_EQ(ReclaimLine::sentence({0, 2_MiB}, 2_MiB),
              gain + QStringLiteral("au plus %1 libérés").arg(two) + shared);
    EXPECT_EQ(ReclaimLine::sentence({0, 0, 2_MiB}, 2_MiB),
              gain + QStringLiteral("rien n’est libéré (%1 ont d’autres noms ailleurs)").arg(two));
    EXPECT_EQ(ReclaimLine::sentence({1_MiB, 2_MiB, 0, 3}, 2_MiB),
              gain + QStringLiteral("au moins %1 libérés (3 dossiers illisibles)").arg(one));
    EXPECT_EQ(ReclaimLine::sentence({1_MiB, 2_MiB, 0, 3, true}, 2_MiB),
              gain + QStringLiteral("au moins %1 libérés (3 éléments illisibles)").arg(one));
}

/// What goes on around the list: the banner, and where the keyboard is.
class ToolScreenTest : public WindowScene {
protected:
    ToolScreenTest() { scan("disk-usage", tree.url()); }

    void deleteChecked(const char* how) const
    {
        click("Supprimer…");
        answer<QDialog>(how);
        waitForRemoval();
        activate(*window);
    }

    /// The colour of the banner's words.
    [[nodiscard]] QColor told() const
    {
        const auto labels = shown<StatusBanner>().findChildren<QLabel*>();
        const auto words =
            std::ranges::find_if(labels, [](const QLabel* one) { return !one->text().isEmpty(); });
        return words == labels.end() ? QColor{} : (*words)->palette().color(QPalette::WindowText);
    }

    TemporaryTree tree{file("a.bin", 5000), file("b.bin", 4000)};
};

TEST_F(ToolScreenTest, NoFailureIsToldInTheColourOfSuccess)
{
    struct Case {
        const char* name;
        Theme::Colour colour;
        std::function<void()> happen;
    };

    ScanToolViewModel& tool = store().diskUsage;
    const std::vector<Case> cases{
        {"the desktop refused", Theme::Colour::danger,
         [] { Q_EMIT DesktopRefusals::shared().refused(QStringLiteral("Personne.")); }},
        {"removed", Theme::Colour::done, [&] { remove(tool, {tree.url("a.bin")}); }},
        {"put back", Theme::Colour::done, [&] { undo(tool); }},
        {"it is gone already", Theme::Colour::danger,
         [&] {
             tree.remove("b.bin");
             remove(tool, {tree.url("b.bin")});
         }},
        {"removed after a failure", Theme::Colour::done, [&] { remove(tool, {tree.url("a.bin")}, true); }},
    };
    for (const Case& one : cases) {
        one.happen();
        EXPECT_EQ(told(), Theme::shared().colour(one.colour)) << one.name;
    }
}

TEST_F(ToolScreenTest, WhatLiesInTheTrashIsOfferedForDeletionOnlyBesideItsOwnReport)
{
    const QString forGood = QStringLiteral("Supprimer définitivement ces éléments");
    ScanToolViewModel& tool = store().diskUsage;
    remove(tool, {tree.url("a.bin")});
    EXPECT_NE(button(forGood), nullptr);
    tool.tell(QStringLiteral("Liste exportée."), ReportTone::done);
    EXPECT_EQ(shown<StatusBanner>().accessibleName(), QStringLiteral("Liste exportée."));
    EXPECT_EQ(button(forGood), nullptr) << "“these” would be those of the list";
    click("Annuler la suppression");
    waitForRemoval();
    EXPECT_TRUE(tree.exists("a.bin"));
}

TEST_F(ToolScreenTest, NothingIsOfferedForUndoThatHasLeftTheTrash)
{
    ScanToolViewModel& tool = store().diskUsage;
    remove(tool, {tree.url("a.bin"), tree.url("b.bin")});
    const auto goFromTrash = [&](std::size_t place) {
        UndoableDeletion one;
        one.trashed = {tool.undoable()->trashed.at(place)};
        std::ranges::copy_if(tool.undoable()->entries, std::back_inserter(one.entries),
                             [&](const Entry& entry) { return entry.url == one.trashed.front().original; });
        ASSERT_TRUE(store().deletions.deleteTrashed(
            one,
            {.context = window.get(), .progressed = [](const auto&) {}, .finished = [](const auto&) {}}));
        waitForRemoval();
    };
    const FileUrl left = tool.undoable()->trashed.at(1).original;
    goFromTrash(0); // as when another tool or the dashboard empties it
    click("Annuler la suppression");
    waitForRemoval();
    EXPECT_EQ(tool.statusMessage(), QStringLiteral("Suppression annulée · 1 élément(s) restauré(s)."));
    EXPECT_THAT(tree.names(), ElementsAre(left.lastPathComponent()));

    remove(tool, {left});
    goFromTrash(0);
    EXPECT_EQ(button(QStringLiteral("Annuler la suppression")), nullptr);
    EXPECT_FALSE(shown<StatusBanner>().accessibleName().contains(QStringLiteral("sera vidée")));
}

TEST_F(ToolScreenTest, TheKeyboardStaysAtTheListWhenItsButtonIsDisabled)
{
    const auto& list = shown<EntryTable>();
    shown<EntryTable>().selection().toggle(0);
    deleteChecked("Mettre à la corbeille");
    EXPECT_EQ(rows(), std::vector<std::string>{"b.bin"});
    EXPECT_EQ(window->focusWidget(), &list) << "“Supprimer…” is disabled now";
    shown<EntryTable>().selection().toggle(0);
    deleteChecked("Mettre à la corbeille");
    EXPECT_EQ(window->focusWidget(), button(QStringLiteral("Choisir un autre dossier…")));
    click("Annuler la suppression");
    waitForRemoval();
    EXPECT_EQ(window->focusWidget(), &list);
}

} // namespace

} // namespace tallyroom
