#include "Tools/Frame/ExportFlow.h"

#include "App/WindowScene.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QThreadPool>

#include <filesystem>
#include <gmock/gmock.h>
#include <latch>

namespace tallyroom {

namespace {

/// Lists that are saved while files and the program's end are in the way.
class ExportFlow : public WindowScene {};

TEST_F(ExportFlow, AnExportReplacesALinkOnlyWhenToldAndNeverWritesThroughIt)
{
    const TemporaryTree tree{file("a", 10)};
    const TemporaryTree place{link("list.csv", "keys")};
    scan("disk-usage", tree.url());
    auto* const screen = window->findChild<ToolScreen*>();
    for (const auto& [choice, isLink] : {std::pair{"Annuler", true}, {"Remplacer le lien", false}}) {
        screen->exportEntries();
        auto* const chooser = dialog<QFileDialog>();
        ASSERT_NE(chooser, nullptr);
        Q_EMIT chooser->fileSelected(QString::fromStdString(place.path("list.csv")));
        delete chooser;
        auto* const box = dialog<QMessageBox>();
        ASSERT_NE(box, nullptr);
        EXPECT_TRUE(box->text().contains(QStringLiteral("« keys »"))) << box->text().toStdString();
        answer<QMessageBox>(choice);
        if (!isLink) {
            ASSERT_TRUE(waitUntil(&store().diskUsage, &ScanToolViewModel::statusMessageChanged,
                                  [&] { return store().diskUsage.statusMessage().has_value(); }));
            EXPECT_TRUE(store().diskUsage.statusMessage()->contains(QStringLiteral("list.csv »")));
        }
        EXPECT_EQ(std::filesystem::is_symlink(place.path("list.csv")), isLink);
        EXPECT_THAT(place.names(), testing::ElementsAre("list.csv"));
    }
    EXPECT_THAT(place.content("list.csv"), testing::HasSubstr(tree.path("a")));
}

TEST_F(ExportFlow, LeavingDoesNotWaitForAnExportWithoutEnd)
{
    const TemporaryTree place;
    QWidget screen;
    std::latch isHeld{1};
    std::latch isReleased{1};
    bool isWritten = false;
    exportAsCSV(
        &screen,
        [&] {
            isHeld.count_down();
            isReleased.wait();
            return std::string{"text"};
        },
        QStringLiteral("list"), [&](const FileUrl&) { isWritten = true; });
    Q_EMIT screen.findChild<QFileDialog*>()->fileSelected(QString::fromStdString(place.path("list.csv")));
    ASSERT_TRUE(QTest::qWaitFor([&] { return isHeld.try_wait(); }, 20'000));
    // The program's end waits for those; the toolkit's own work there ends by itself.
    EXPECT_TRUE(QTest::qWaitFor([] { return QThreadPool::globalInstance()->activeThreadCount() == 0; }));
    isReleased.count_down();
    ASSERT_TRUE(QTest::qWaitFor([&] { return isWritten; }, 20'000));
    EXPECT_EQ(place.content("list.csv"), "text");
}

} // namespace

} // namespace tallyroom
