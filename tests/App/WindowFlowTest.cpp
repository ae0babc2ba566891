#include "App/WindowScene.h"
#include "Controls/Spinner.h"
#include "Deletion/DeleteConfirmation.h"
#include "Shell/WorkReports.h"
#include "Text/SizeText.h"

#include <QListWidget>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTextDocumentFragment>

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <latch>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

/// Removes nothing, one item after the other, once the test lets it.
struct Gate {
    RemovalOperations operations()
    {
        return {[this](std::span<const Entry> entries, bool, const FileRemover::BatchOptions& options) {
                    FileRemover::RemovalResult result;
                    for (const Entry& entry : entries) {
                        if (options.stop.stop_requested()) {
                            break;
                        }
                        if (result.removed.empty()) {
                            isInHand.count_down();
                        }
                        mayGoOn.wait();
                        result.removed.push_back(entry.url);
                    }
                    return result;
                },
                {}};
    }

    std::latch isInHand{1};
    std::latch mayGoOn{1};
};

/// What removals and odd names come to in the whole window.
class WindowFlowTest : public WindowScene {
protected:
    static std::vector<std::string> names(const ScanToolViewModel& tool)
    {
        std::vector<std::string> all;
        tool.forEachEntry([&all](const Entry& entry) { all.push_back(entry.name); });
        return all;
    }

    /// Begins to remove the files "a", "b" and "c" of the tree for good, until `gate` has the first in hand.
    void removeThree(Gate& gate, const TemporaryTree& tree)
    {
        open(gate.operations());
        scan("disk-usage", tree.url());
        store().diskUsage.deleteSelected({tree.url("a"), tree.url("b"), tree.url("c")}, true);
        gate.isInHand.wait();
    }

    [[nodiscard]] static bool waitForSize(const ListToolViewModel& tool, std::string_view name,
                                          std::int64_t size)
    {
        return waitUntil(&tool, &ListToolViewModel::progressChanged, [&] {
            return std::ranges::any_of(tool.entries(), [&](const Entry& entry) {
                return entry.name == name && entry.sizeBytes == size;
            });
        });
    }
};

TEST_F(WindowFlowTest, ToolsHearOfEachOthersRemovalsAndRestores)
{
    const TemporaryTree tree{file("films/a.mkv", 400'000), file("films/b.mkv", 200'000),
                             file("c.iso", 100'000), file("d.iso", 100'000)};
    scan(store().diskUsage, tree.url());
    scan(store().largeFiles, tree.url());
    scan(store().duplicates, tree.url());
    const std::vector<std::string> copies = names(store().duplicates);
    const QSignalSpy volumes{&store().dashboard, &DashboardViewModel::isRefreshingChanged};

    remove(store().largeFiles, {tree.url("films/a.mkv"), tree.url("c.iso")});
    EXPECT_THAT(names(store().diskUsage), ElementsAre("films", "d.iso"));
    EXPECT_THAT(names(store().duplicates), testing::IsEmpty()) << "one copy is no duplicate";
    EXPECT_TRUE(waitForSize(store().diskUsage, "films", allocated(tree.path("films/b.mkv"))));
    EXPECT_FALSE(volumes.isEmpty()) << "the volumes have more room";
    undo(store().largeFiles);
    EXPECT_THAT(names(store().diskUsage), UnorderedElementsAre("films", "c.iso", "d.iso"));
    EXPECT_EQ(names(store().duplicates), copies);
    EXPECT_TRUE(waitForSize(store().diskUsage, "films",
                            allocated(tree.path("films/a.mkv")) + allocated(tree.path("films/b.mkv"))));

    remove(store().diskUsage, {tree.url("films")});
    EXPECT_THAT(names(store().largeFiles), UnorderedElementsAre("c.iso", "d.iso"))
        << "what lay below goes too";
    undo(store().diskUsage);
    EXPECT_THAT(names(store().largeFiles), UnorderedElementsAre("a.mkv", "b.mkv", "c.iso", "d.iso"));
}

TEST_F(WindowFlowTest, AListOpenedThroughALinkHearsOfRemovalsToo)
{
    const TemporaryTree tree{file("data/films/a", 400'000), file("data/films/b", 200'000),
                             link("way", "data")};
    scan(store().diskUsage, tree.url("data"));
    scan(store().largeFiles, tree.url("way"));
    remove(store().largeFiles, {tree.url("way/films/a")});
    EXPECT_TRUE(waitForSize(store().diskUsage, "films", allocated(tree.path("data/films/b"))));
    remove(store().diskUsage, {tree.url("data/films")});
    EXPECT_THAT(names(store().largeFiles), testing::IsEmpty());
    undo(store().diskUsage);
    EXPECT_THAT(names(store().largeFiles), ElementsAre("b"));
}

TEST_F(WindowFlowTest, AFolderRemovedInPartSaysSoAndIsMeasuredAgain)
{
    const TemporaryTree tree{file("folder/gone", 400'000), file("folder/stays", 100'000)};
    const std::int64_t freed = allocated(tree.path("folder/gone"));
    RemovalOperations operations = RemovalOperations::real();
    operations.remove = [&](std::span<const Entry> entries, bool, const FileRemover::BatchOptions&) {
        std::filesystem::remove(tree.path("folder/gone"));
        return FileRemover::RemovalResult{
            .removed = {}, .failures = {{entries.front().url, "stays", freed}}, .trashed = {}};
    };
    open(operations);
    scan(store().diskUsage, tree.url());
    remove(store().diskUsage, {tree.url("folder")}, true);
    EXPECT_TRUE(waitForSize(store().diskUsage, "folder", allocated(tree.path("folder/stays"))));
    const std::string report = store().diskUsage.statusMessage().value_or(QString{}).toStdString();
    EXPECT_THAT(report, testing::StartsWith("0 supprimé(s) définitivement, 1 en échec."));
    EXPECT_THAT(report,
                testing::EndsWith("1 supprimé en partie · " + sizeText(freed).toStdString() + " libérés."));
}

TEST_F(WindowFlowTest, ClosingDuringADeletionAsksOnceAndStopsItWhenTold)
{
    const TemporaryTree tree{file("a", 10), file("b", 10), file("c", 10)};
    Gate gate;
    removeThree(gate, tree);
    window->close();
    window->close();
    EXPECT_TRUE(window->isVisible());
    ASSERT_EQ(window->findChildren<QMessageBox*>().size(), 1);
    answer<QMessageBox>("Continuer");
    EXPECT_FALSE(store().deletions.progress()->isStopping);

    window->close();
    answer<QMessageBox>("Arrêter et quitter");
    EXPECT_TRUE(store().deletions.progress()->isStopping);
    EXPECT_TRUE(window->isVisible()) << "the item in hand is waited for";
    gate.mayGoOn.count_down();
    waitForRemoval();
    EXPECT_FALSE(window->isVisible());
    EXPECT_THAT(names(store().diskUsage), testing::SizeIs(2));
}

TEST_F(WindowFlowTest, EscapeAndTheBannerStopADeletionWhichKeepsTheRest)
{
    for (const bool byKey : {true, false}) {
        const TemporaryTree tree{file("a", 10), file("b", 10), file("c", 10)};
        Gate gate;
        removeThree(gate, tree);
        if (byKey) {
            press(Qt::Key_Escape);
        } else {
            ASSERT_TRUE(QTest::qWaitFor([&] { return shows("Suppression en cours… 0/3"); }, 20'000));
            EXPECT_EQ(button(QStringLiteral("Fermer le message")), nullptr);
            click("Arrêter");
        }
        EXPECT_TRUE(store().deletions.progress()->isStopping);
        gate.mayGoOn.count_down();
        waitForRemoval();
        EXPECT_THAT(names(store().diskUsage), testing::SizeIs(2));
        EXPECT_TRUE(store().diskUsage.statusMessage()->endsWith(
            QStringLiteral(" Interrompu : 2 éléments non traités.")));
    }
}

TEST_F(WindowFlowTest, LongWorkIsReportedWhereNobodyLooksAndItsProgressGoesWithIt)
{
    const TemporaryTree tree{file("a", 10), file("b", 10)};
    std::latch mayGoOn{1};
    open({[&mayGoOn](std::span<const Entry> entries, bool, const FileRemover::BatchOptions&) {
              mayGoOn.wait();
              FileRemover::RemovalResult result;
              std::ranges::transform(entries, std::back_inserter(result.removed), &Entry::url);
              return result;
          },
          {}});
    scan("disk-usage", tree.url());
    QStringList news;
    QStringList unwanted;
    std::vector<std::optional<double>> progress;
    const auto add = [](QStringList& list) {
        return [&list](const QString& title, const QString& body) { list << title << body; };
    };
    const WorkReports hasty{store().deletions,
                            {add(news), [&](const auto& part) { progress.push_back(part); }},
                            std::chrono::seconds{0}};
    const WorkReports patient{store().deletions, {add(unwanted), [](const auto&) {}}};
    window->hide();
    ASSERT_TRUE(QTest::qWaitFor([] { return QApplication::activeWindow() == nullptr; }));
    store().diskUsage.deleteSelected({tree.url("a"), tree.url("b")}, true);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !progress.empty(); }, 20'000));
    mayGoOn.count_down();
    waitForRemoval();
    EXPECT_EQ(progress, (std::vector<std::optional<double>>{0.0, std::nullopt}));
    EXPECT_EQ(news, (QStringList{QStringLiteral("Suppression terminée"), QStringLiteral("2 éléments")}));
    EXPECT_EQ(unwanted, QStringList{}) << "it was not long";
}

TEST_F(WindowFlowTest, TheConfirmationNamesTheDoubtfulThenTheLargestAndWhereTheyAre)
{
    std::vector<Entry> entries{{FileUrl{"/x/film"}, "film", 9'000, false},
                               {FileUrl{"/y/film"}, "film", 8'000, false}};
    for (int rank = 0; rank < 5; ++rank) {
        const std::string name = "note" + std::to_string(rank);
        entries.push_back({FileUrl{"/z/" + name}, name, 10 - rank, false});
    }
    entries.back().set(EntryMark::toVerify, true);
    const DeleteConfirmation asking{entries, DeleteConfirmation::Default::trash, {}, nullptr};
    const std::string said = asking.accessibleDescription().toStdString();
    EXPECT_THAT(said, testing::StartsWith("7 éléments · 17 Ko\n\n« Mettre à la corbeille » est réversible."));
    EXPECT_THAT(said,
                testing::HasSubstr("• note4 dans /z (6 o, à vérifier)\n• film dans /x (9 Ko)\n• film dans /y "
                                   "(8 Ko)\n• note0 dans /z (10 o)\n• note1 dans /z (9 o)\net 2 autres"));
    entries.erase(entries.begin(), entries.begin() + 4);
    const DeleteConfirmation inOneFolder{entries, DeleteConfirmation::Default::trash, {}, nullptr};
    EXPECT_THAT(
        inOneFolder.accessibleDescription().toStdString(),
        testing::HasSubstr("\n\nDans /z :\n• note4 (6 o, à vérifier)\n• note2 (8 o)\n• note3 (7 o)\n"));
}

/// Who clicks twice on what opens a question, or keeps Enter down, has not read it.
TEST_F(WindowFlowTest, TheSecondClickOfTwoAndAKeyKeptDownAnswerNoQuestion)
{
    const std::vector<Entry> entries{{FileUrl{"/x/film"}, "film", 9'000, false}};
    auto* const asking =
        new DeleteConfirmation(entries, DeleteConfirmation::Default::permanent, {}, window.get());
    const QSignalSpy confirmed{asking, &DeleteConfirmation::confirmed};
    asking->open();
    activate(*asking);
    for (const char* const text : {"Mettre à la corbeille", "Supprimer définitivement", "Annuler"}) {
        QAbstractButton* const choice = visibleButton(*asking, QString::fromUtf8(text));
        const QPointF middle = QRectF{choice->rect()}.center();
        QMouseEvent second{QEvent::MouseButtonDblClick,      middle,
                           choice->mapToGlobal(middle),      Qt::LeftButton,
                           Qt::MouseButtons{Qt::LeftButton}, {}};
        QTest::mousePress(choice, Qt::LeftButton);
        QApplication::sendEvent(choice, &second);
        QTest::mouseRelease(choice, Qt::LeftButton);
        choice->setFocus();
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
            QKeyEvent repeated{QEvent::KeyPress, key, {}, {}, true};
            QApplication::sendEvent(choice, &repeated);
            for (const QEvent::Type type : {QEvent::KeyRelease, QEvent::KeyPress}) {
                QKeyEvent unmarked{type, key, {}};
                unmarked.setTimestamp(7);
                QApplication::sendEvent(choice, &unmarked);
            }
        }
        ASSERT_TRUE(asking->isVisible()) << text;
    }
    EXPECT_EQ(confirmed.count(), 0);
    QTest::keyClick(visibleButton(*asking, QStringLiteral("Supprimer définitivement")), Qt::Key_Return);
    EXPECT_EQ(confirmed.count(), 1);
}

TEST_F(WindowFlowTest, AReportDoesNotFollowIntoAnotherFolder)
{
    const TemporaryTree tree{file("a", 10), folder("folder")};
    scan("disk-usage", tree.url());
    remove(store().diskUsage, {tree.url("a")});
    EXPECT_NE(button(QStringLiteral("Fermer le message")), nullptr);
    store().diskUsage.navigateViaBreadcrumb(tree.url("folder"));
    EXPECT_EQ(button(QStringLiteral("Fermer le message")), nullptr);
    EXPECT_TRUE(store().diskUsage.statusMessage());
    EXPECT_FALSE(store().diskUsage.canUndo());
}

TEST_F(WindowFlowTest, ASpinnerTurnsBesideAToolWhileItScans)
{
    const auto spinners = shown<QListWidget>().findChildren<Spinner*>();
    const std::vector<FolderTool*> tools{&store().dashboard, &store().diskUsage};
    for (std::size_t row = 0; row < tools.size(); ++row) {
        const Spinner* const spinner = spinners[static_cast<qsizetype>(row)];
        EXPECT_FALSE(spinner->isVisible());
        tools[row]->handleImport(std::vector{FileUrl{"/nowhere"}});
        EXPECT_FALSE(spinner->visibleRegion().isEmpty());
        waitForScan(*tools[row]);
        EXPECT_FALSE(spinner->isVisible());
    }
}

/// What a tool tip or a label with this text shows: the toolkit guesses.
QString guessed(const QString& text)
{
    return Qt::mightBeRichText(text) ? QTextDocumentFragment::fromHtml(text).toPlainText() : text;
}

/// Every text of the widgets and rows below `top` that the toolkit may take for markup, as it is shown.
QStringList guessedTexts(const QWidget& top)
{
    QStringList texts;
    for (const QWidget* const widget : top.findChildren<QWidget*>()) {
        texts += guessed(widget->toolTip());
        const auto* const label = qobject_cast<const QLabel*>(widget);
        if (label != nullptr) {
            texts += label->textFormat() == Qt::PlainText ? label->text() : guessed(label->text());
        }
        const auto* const view = qobject_cast<const QAbstractItemView*>(widget);
        for (int row = 0; view != nullptr && view->model() != nullptr && row < view->model()->rowCount();
             ++row) {
            for (int column = 0; column < view->model()->columnCount(); ++column) {
                texts += guessed(view->model()->index(row, column).data(Qt::ToolTipRole).toString());
            }
        }
    }
    return texts;
}

TEST_F(WindowFlowTest, NamesThatLookLikeMarkupAreShownLetterByLetter)
{
    const std::string image = "<img src=file:x>";
    const std::string escaped = "a&amp;b";
    const std::string root = image + "/" + escaped;
    const TemporaryTree tree{file(root + "/node_modules/x", "copy of x"), file(root + "/y", "copy of x"),
                             file(root + "/.git/HEAD", "z"), file(root + "/target/x", "other")};
    QStringList texts;
    for (const ToolDescriptor& descriptor : ToolRegistry::all()) {
        window->selectTool(descriptor.id);
        FolderTool& tool = descriptor.tool(store());
        tool.handleImport(std::vector{tree.url(root)});
        ASSERT_TRUE(waitUntil(&tool, &FolderTool::stateChanged, [&] { return !tool.isScanning(); }));
        texts += guessedTexts(*window);
    }
    store().diskUsage.tell(QString::fromStdString(image), ReportTone::done);
    texts += guessedTexts(*window);
    int found = 0;
    for (const QString& text : texts) {
        found += text.contains(QString::fromStdString(root)) ? 1 : 0;
        EXPECT_FALSE(text.contains(QStringLiteral("&amp;amp;")) || text.contains(QStringLiteral("&lt;")))
            << text.toStdString();
    }
    EXPECT_GE(found, 6) << "the folder's name in titles, steps and rows";
}

} // namespace

} // namespace tallyroom
