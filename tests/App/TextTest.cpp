#include "Shell/TallyroomApp.h"
#include "Text/AgeText.h"
#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Text/TextFilter.h"
#include "Text/TreemapText.h"
#include "Tools/NodeModules/NodeModules.h"

#include <gtest/gtest.h>

namespace tallyroom {

namespace {

TEST(FileUrlText, ShowsWhatCannotBeDrawn)
{
    const std::vector<std::pair<std::string_view, QString>> cases{
        {"été 👩‍👧", QStringLiteral("été 👩‍👧")},
        {"a\nb\x7f", QStringLiteral("a␊b␡")},
        {"\xff\xc3", QStringLiteral("\\xFF\\xC3")},
        {"invoice\u202Efdp.exe", QStringLiteral("invoice\\u202Efdp.exe")},
        {"\u2028", QStringLiteral("\\u2028")},
        {"\u0085", QStringLiteral("\\u0085")},
        {"\uFEFF", QStringLiteral("\\uFEFF")},
        {"\uFEFFa\xff", QStringLiteral("\\uFEFFa\\xFF")},
    };
    for (const auto& [name, text] : cases) {
        EXPECT_EQ(FileUrlText::display(name).toStdString(), text.toStdString());
    }
}

TEST(FileUrlText, TakesPathsAndUrlsWithoutLosingAByte)
{
    qputenv("HOME", "/home/moi");

    const std::vector<std::pair<std::string_view, std::optional<std::string>>> cases{
        {"/a//b/../c/", "/a/c"},
        {"sub dir", "/base/sub dir"},
        {"..", "/"},
        {"~", "/home/moi"},
        {"~/x", "/home/moi/x"},
        {"~other", "/base/~other"},
        {"\xff", "/base/\xff"},
        {"file:///a%20b/%FF", "/a b/\xff"},
        {"file://localhost/a", "/a"},
        {"file:/a", "/a"},
        {"file://elsewhere/a", std::nullopt},
        {"file:relative", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [text, path] : cases) {
        const auto url = FileUrlText::parse(text, FileUrl{"/base"});
        EXPECT_EQ(url ? std::optional{url->path()} : std::nullopt, path) << text;
    }
    EXPECT_EQ(FileUrlText::fromUrl(QUrl::fromEncoded("file:///a%20b/%FF%23/")), FileUrl{"/a b/\xff#"});
    EXPECT_EQ(FileUrlText::fromUrl(QUrl{QStringLiteral("https://a/b")}), std::nullopt);
    EXPECT_EQ(FileUrlText::displayFromHome(FileUrl{"/home/moi/é"}), QStringLiteral("~/é"));
    EXPECT_EQ(FileUrlText::displayFromHome(FileUrl{"/home/moins"}), QStringLiteral("/home/moins"));
}

TEST(Texts, CountNoneAsOneAndNameWhatIsTooSmallForFigures)
{
    EXPECT_EQ(NumberText::examinedFiles(0), QStringLiteral("0 fichier examiné"));
    EXPECT_EQ(NumberText::examinedFiles(1), QStringLiteral("1 fichier examiné"));
    EXPECT_EQ(NumberText::examinedFiles(12'345), QStringLiteral("12\u202f345 fichiers examinés"));
    const Entry entry{FileUrl{"/<b>"}, "<b>", 1, false, {}};
    const QString tip = TreemapText::toolTip(entry, 0.0001);
    EXPECT_TRUE(tip.contains(QStringLiteral("1 o · moins de 0,1 %")));
    EXPECT_TRUE(tip.contains(QStringLiteral("&lt;b&gt;"))) << "a name is no markup";
    EXPECT_EQ(TreemapText::noTiles(1, false), QStringLiteral("1 élément trop petit pour être dessiné"));
    EXPECT_EQ(TreemapText::noTiles(2, false), QStringLiteral("2 éléments trop petits pour être dessinés"));
}

TEST(TextFilter, FindsWhateverTheCaseAndTheAccents)
{
    const std::vector<std::tuple<QString, std::string, bool>> cases{
        {QStringLiteral("PHOTO"), "mes Photos", true},
        {QStringLiteral("ÉTÉ"), "été", true},
        {QStringLiteral("été"), "e\u0301te\u0301", true},
        {QStringLiteral("tele"), "Téléchargements", true},
        {QStringLiteral("TÉLÉ"), "telecharge", true},
        {QStringLiteral("\u0301"), "te", false},
        {QStringLiteral("\u0301"), "te\u0301 \u0301", true},
        {QStringLiteral("ß"), "Straße", true},
        {QStringLiteral("b"), std::string{"\xff"} + "B", true},
        {QStringLiteral(" "), "ab", false},
        {QString{}, "\xff", true},
    };
    for (const auto& [search, name, matches] : cases) {
        EXPECT_EQ(TextFilter{search}.matches(name), matches) << search.toStdString();
    }
}

TEST(TallyroomApp, ReadsItsArgumentsAsBytes)
{
    using TallyroomApp::Invocation;

    const std::vector<std::tuple<std::vector<const char*>, Invocation::Kind, std::optional<FileUrl>>> cases{
        {std::vector<const char*>{}, Invocation::Kind::window, std::nullopt},
        {{"\xff"}, Invocation::Kind::window, FileUrl{"/here/\xff"}},
        {{"--", "-x"}, Invocation::Kind::window, FileUrl{"/here/-x"}},
        {{"/a", "--help"}, Invocation::Kind::help, std::nullopt},
        {{"--version"}, Invocation::Kind::version, std::nullopt},
        {{"--unknown"}, Invocation::Kind::mistake, std::nullopt},
        {{"/a", "/b"}, Invocation::Kind::mistake, FileUrl{"/a"}},
        {{"file://elsewhere/a"}, Invocation::Kind::mistake, std::nullopt},
    };
    for (const auto& [arguments, kind, folder] : cases) {
        const Invocation invocation = TallyroomApp::parse(arguments, FileUrl{"/here"});
        EXPECT_EQ(invocation.kind, kind) << testing::PrintToString(arguments);
        EXPECT_TRUE(invocation.kind != Invocation::Kind::window || invocation.folder == folder);
        EXPECT_EQ(invocation.mistake.isEmpty(), kind != Invocation::Kind::mistake);
    }
}

TEST(AgeText, SaysHowLongAgoInWords)
{
    using namespace std::chrono;
    const Timestamp now{days{20'000}};
    const std::vector<std::pair<std::int64_t, QString>> cases{
        {0, QStringLiteral("aujourd’hui")},    {1, QStringLiteral("hier")},
        {7, QStringLiteral("il y a 7 jours")}, {14, QStringLiteral("il y a 2 semaines")},
        {60, QStringLiteral("il y a 2 mois")}, {729, QStringLiteral("il y a 24 mois")},
        {730, QStringLiteral("il y a 2 ans")}, {-1, QStringLiteral("dans le futur")}};
    for (const auto& [age, words] : cases) {
        EXPECT_EQ(ageText(now - days{age}, now), words) << age;
    }
    EXPECT_EQ(ageText({}, now), QStringLiteral("date inconnue"));
    EXPECT_EQ(modifiedAtSortKey(Entry{}), 0.0);
}

TEST(NodeModulesProgress, TellsWhatIsFoundAndThenWhatIsMeasured)
{
    EXPECT_EQ((NodeModulesProgress{true, 7, 0, 0}.text()),
              QStringLiteral("Recherche… 7 node_modules trouvés"));
    EXPECT_EQ((NodeModulesProgress{false, 7, 3, 3.0 / 7}.text()), QStringLiteral("Mesure des tailles… 3/7"));
}

} // namespace

} // namespace tallyroom
