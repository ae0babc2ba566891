#include "Shell/TallyroomApp.h"
#include "Support/Cases.h"
#include "Text/AgeText.h"
#include "Text/FileUrlText.h"
#include "Text/NodeModulesProgress.h"
#include "Text/NumberText.h"
#include "Text/RecoveryText.h"
#include "Text/TextFilter.h"
#include "Text/TreemapText.h"

#include <gtest/gtest.h>
#include <map>

namespace tallyroom {

namespace {

TEST(FileUrlText, ShowsWhatCannotBeDrawn)
{
    for (const auto& row : cases("texts that can be drawn")) {
        EXPECT_EQ(FileUrlText::display(row[0]).toStdString(), row[1]);
    }
}

TEST(FileUrlText, TakesPathsAndUrlsWithoutLosingAByte)
{
    qputenv("HOME", "/home/moi");
    for (const auto& row : cases("locations")) {
        const auto url = FileUrlText::parse(row[0], FileUrl{"/base"});
        EXPECT_EQ(url ? url->path() : "none", row[1]) << row[0];
    }
    EXPECT_EQ(FileUrlText::fromUrl(QUrl::fromEncoded("file:///a%20b/%FF%23/")), FileUrl{"/a b/\xff#"});
    EXPECT_EQ(FileUrlText::fromUrl(QUrl{QStringLiteral("https://a/b")}), std::nullopt);
    EXPECT_EQ(FileUrlText::displayFromHome(FileUrl{"/home/moi/é"}), QStringLiteral("~/é"));
    EXPECT_EQ(FileUrlText::displayFromHome(FileUrl{"/home/moins"}), QStringLiteral("/home/moins"));
}

TEST(Texts, CountNoneAsOneAndNameWhatIsTooSmallForFigures)
{
    EXPECT_EQ(RecoveryText::caches(0, 3), QStringLiteral("aucun cache sans risque sur 3"));
    EXPECT_EQ(RecoveryText::caches(2, 3), QStringLiteral("2 caches sans risque sur 3"));
    EXPECT_EQ(NumberText::examinedFiles(0), QStringLiteral("0 fichier examiné"));
    EXPECT_EQ(NumberText::examinedFiles(1), QStringLiteral("1 fichier examiné"));
    EXPECT_EQ(NumberText::examinedFiles(12'345), QStringLiteral("12\u202f345 fichiers examinés"));
    const Entry entry{FileUrl{"/b"}, "b", 1, false, {}};
    EXPECT_EQ(TreemapText::facts(entry, {0.0001, QStringLiteral("a"), 0.0625}, {}),
              QStringLiteral("1 o · moins de 0,1 % de « a » · 6,3 % du total · date inconnue"));
    EXPECT_EQ(TreemapText::noTiles(1, false), QStringLiteral("1 élément trop petit pour être dessiné"));
    EXPECT_EQ(TreemapText::noTiles(2, false), QStringLiteral("2 éléments trop petits pour être dessinés"));
    EXPECT_EQ((NodeModulesProgress{true, 7, 0, 0}.text()),
              QStringLiteral("Recherche… 7 node_modules trouvés"));
    EXPECT_EQ((NodeModulesProgress{false, 7, 3, 3.0 / 7}.text()), QStringLiteral("Mesure des tailles… 3/7"));
}

TEST(TextFilter, FindsWhateverTheCaseAndTheAccents)
{
    for (const auto& row : cases("filters")) {
        EXPECT_EQ(TextFilter{QString::fromStdString(row[0])}.matches(row[1]), row[2] == "yes") << row[0];
    }
}

TEST(TallyroomApp, ReadsItsArgumentsAsBytes)
{
    for (const auto& row : cases("command lines of the window")) {
        std::vector<const char*> arguments;
        const QByteArrayList words = QByteArray::fromStdString(row[0]).split(' ');
        for (const QByteArray& word : words) {
            word.isEmpty() ? void() : arguments.push_back(word.constData());
        }
        const auto invocation = TallyroomApp::parse(arguments, FileUrl{"/here"});
        using enum TallyroomApp::Invocation::Kind;
        const std::map<TallyroomApp::Invocation::Kind, std::string> kinds{
            {window, "window"}, {help, "help"}, {version, "version"}, {mistake, "mistake"}};
        EXPECT_EQ(kinds.at(invocation.kind), row[1]) << row[0];
        const FileUrl folder = invocation.folder.value_or(FileUrl{});
        EXPECT_TRUE(row[1] != "window" || folder == FileUrl{row.size() > 2 ? row[2] : ""}) << row[0];
        EXPECT_EQ(invocation.mistake.isEmpty(), row[1] != "mistake") << row[0];
    }
}

TEST(AgeText, SaysHowLongAgoInWords)
{
    using namespace std::chrono;
    const Timestamp now{days{20'000}};
    for (const auto& row : cases("ages in words")) {
        EXPECT_EQ(ageText(now - days{std::stoi(row[0])}, now).toStdString(), row[1]);
    }
    EXPECT_EQ(ageText({}, now), QStringLiteral("date inconnue"));
    EXPECT_EQ(modifiedAtSortKey(Entry{}), 0.0);
}

} // namespace

} // namespace tallyroom
