#include "App/WindowScene.h"
#include "Bridge/Desktop.h"
#include "Deletion/StatusBanner.h"
#include "Theme/Theme.h"

#include <QDialog>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

#include <functional>

namespace tallyroom {

namespace {

/// What goes on around the list: the banner, and where the keyboard is.
class ToolScreenTest : public WindowScene {
protected:
    ToolScreenTest() { scan("disk-usage", tree.url()); }

    void deleteChecked(const char* how) const
    {
        click("Supprimer…");
        const QPointer<QDialog> asking = dialog<QDialog>(); // may go by itself first
        ASSERT_NE(asking, nullptr);
        visibleButton(*asking, QString::fromUtf8(how))->click();
        waitForRemoval();
        delete asking.data();
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
        {"put back", Theme::Colour::done,
         [&] {
             tool.undoDeletion();
             waitForRemoval();
         }},
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
