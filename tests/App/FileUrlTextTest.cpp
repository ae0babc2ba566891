#include "Text/FileUrlText.h"

#include "Text/NumberText.h"
#include "Text/TextFilter.h"
#include "Text/TreemapText.h"

#include <gtest/gtest.h>

namespace tallyroom {

namespace {

TEST(FileUrlText, ShowsWhatCannotBeDrawn)
{
    struct Case {
        std::string_view name;
        QString text;
    };

    const std::vector<Case> cases{
        {"été 👩‍👧", QStringLiteral("été 👩‍👧")},
        {"a\nb\x7f", QStringLiteral("a␊b␡")},
        {"\xff\xc3", QStringLiteral("\\xFF\\xC3")},
        {"invoice\u202Efdp.exe", QStringLiteral("invoice\\u202Efdp.exe")},
        {"\u2028", QStringLiteral("\\u2028")},
        {"\u0085", QStringLiteral("\\u0085")},
        {"\uFEFF", QStringLiteral("\\uFEFF")},
        {"\uFEFFa\xff", QStringLiteral("\\uFEFFa\\xFF")},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(FileUrlText::display(one.name).toStdString(), one.text.toStdString());
    }
}

TEST(FileUrlText, TakesPathsAndUrlsWithoutLosingAByte)
{
    qputenv("HOME", "/home/moi");

    struct Case {
        std::string_view text;
        std::optional<std::string> path;
    };

    const std::vector<Case> cases{
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
    for (const Case& one : cases) {
        const auto url = FileUrlText::parse(one.text, FileUrl{"/base"});
        EXPECT_EQ(url ? std::optional{url->path()} : std::nullopt, one.path) << one.text;
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
    EXPECT_TRUE(TreemapText::toolTip(entry, 0.0001).contains(QStringLiteral("1 o · moins de 0,1 %")));
    EXPECT_EQ(TreemapText::noTiles(1, false), QStringLiteral("1 élément trop petit pour être dessiné"));
    EXPECT_EQ(TreemapText::noTiles(2, false), QStringLiteral("2 éléments trop petits pour être dessinés"));
}

TEST(TextFilter, FindsWhateverTheCaseAndTheAccents)
{
    struct Case {
        QString search;
        std::string_view name;
        bool matches;
    };

    const std::vector<Case> cases{
        {QStringLiteral("PHOTO"), "mes Photos", true},
        {QStringLiteral("ÉTÉ"), "été", true},
        {QStringLiteral("été"), "e\u0301te\u0301", true},
        {QStringLiteral("tele"), "Téléchargements", true},
        {QStringLiteral("TÉLÉ"), "telecharge", true},
        {QStringLiteral("\u0301"), "te", false},
        {QStringLiteral("\u0301"), "te\u0301 \u0301", true},
        {QStringLiteral("ß"), "Straße", true},
        {QStringLiteral("b"),
         "\xff"
         "B",
         true},
        {QStringLiteral(" "), "ab", false},
        {QString{}, "\xff", true},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(TextFilter{one.search}.matches(one.name), one.matches) << one.search.toStdString();
    }
}

} // namespace

} // namespace tallyroom
