#include "Model/AgeThreshold.h"
#include "Model/CheckedArithmetic.h"
#include "Model/Ecosystem.h"
#include "Model/FileKind.h"
#include "Text/CSVExport.h"
#include "Text/SizeFormatter.h"
#include "Text/SizeProportion.h"
#include "Text/Utf8.h"

#include <gmock/gmock.h>
#include <limits>

namespace tallyroom {

namespace {

using namespace std::chrono_literals;

TEST(FileUrl, TakesPathsApartByTheirBytes)
{
    struct Case {
        std::string path, standardized, name, extension;
    };

    for (const Case& c :
         {Case{"/", "/", "/", ""}, Case{"/a/b.tar.gz/", "/a/b.tar.gz", "b.tar.gz", "gz"},
          Case{"/a/./b/../c", "/a/c", "c", ""}, Case{"/../../x", "/x", "x", ""},
          Case{"//a///b", "/a/b", "b", ""}, Case{"/a/.zshrc", "/a/.zshrc", ".zshrc", ""},
          Case{"/a/end.", "/a/end.", "end.", ""}, Case{"/a.d/plain", "/a.d/plain", "plain", ""},
          Case{"/\xff.\xfe", "/\xff.\xfe", "\xff.\xfe", "\xfe"}, Case{"", "", "", ""}}) {
        const FileUrl url{c.path};
        EXPECT_EQ(url.standardized().path(), c.standardized) << c.path;
        EXPECT_EQ(url.lastPathComponent(), c.name) << c.path;
        EXPECT_EQ(url.pathExtension(), c.extension) << c.path;
    }
    EXPECT_TRUE(FileUrl{"/a/b"}.isInside(FileUrl{"/a/"}));
    EXPECT_TRUE(FileUrl{"/a"}.isInside(FileUrl{"/"}));
    EXPECT_FALSE(FileUrl{"/ab"}.isInside(FileUrl{"/a"}));
    EXPECT_FALSE(FileUrl{"/a"}.isInside(FileUrl{}));
    EXPECT_FALSE(FileUrl{}.isInside(FileUrl{"/"}));
    EXPECT_EQ(FileUrl{"/a/b//"}.parent().path(), "/a");
    EXPECT_EQ(FileUrl{"/a"}.parent().path(), "/");
}

TEST(FileUrl, PercentEncodingLosesNoByte)
{
    std::string everyByte = "/";
    for (int byte = 1; byte < 256; ++byte) {
        everyByte.push_back(static_cast<char>(byte));
    }
    const std::string encoded = FileUrl{everyByte}.percentEncoded();
    EXPECT_TRUE(std::ranges::all_of(encoded, [](char c) { return c > 0x20 && c < 0x7F; }));
    EXPECT_EQ(percentDecodedPath(std::string_view{encoded}.substr(7)), everyByte);
    EXPECT_EQ(percentDecodedPath("100%"), "100%");
    EXPECT_EQ(percentDecodedPath("%4"), "%4");
    EXPECT_EQ(percentDecodedPath("%zz%41"), "%zzA");
}

TEST(FileKind, GoesByTheLastExtensionInAnyCaseAndByNothingElse)
{
    const auto kindOf = [](const std::string& path, bool isFolder = false) {
        return FileKind::of(Entry{FileUrl{path}, {}, 0, isFolder, {}});
    };
    EXPECT_EQ(kindOf("/x/Photo.JPG"), FileKind::image);
    EXPECT_EQ(kindOf("/x/archive.TAR.GZ"), FileKind::archive);
    EXPECT_EQ(kindOf("/x/Makefile"), FileKind::other);
    EXPECT_EQ(kindOf("/x/notes.key"), FileKind::document);
    EXPECT_EQ(kindOf("/x/conf.yml"), FileKind::code);
    EXPECT_EQ(kindOf("/x/app.pkg", true), FileKind::folder);
    EXPECT_EQ(kindOf("/x/app.pkg"), FileKind::diskImage);
    EXPECT_EQ(kindOf("/x/table.sqlite3"), FileKind::data);
    EXPECT_EQ(kindOf("/x/table.numbers"), FileKind::spreadsheet);
    EXPECT_EQ(kindOf("/x/a.verylongextension"), FileKind::other);
    EXPECT_EQ(FileKind::of(".png"), FileKind::other);
    EXPECT_EQ(FileKind::fromRawValue("diskImage"), FileKind::diskImage);
    EXPECT_EQ(FileKind::fromRawValue("DiskImage"), std::nullopt);
}

TEST(SizeFormatter, RoundsAfterItHasChosenTheUnit)
{
    const std::string& comma = SizeFormatter::decimalSeparator();
    const std::vector<std::pair<std::int64_t, std::string>> cases{
        {0, "0 o"},
        {999, "999 o"},
        {1000, "1 Ko"},
        {1049, "1 Ko"},
        {1050, "1" + comma + "1 Ko"},
        {1949, "1" + comma + "9 Ko"},
        {1950, "2 Ko"},
        {123'456'789, "123" + comma + "5 Mo"},
        {1'500'000, "1" + comma + "5 Mo"},
        {999'950, "1000 Ko"},
        {1'000'000'000'000'000'000, "1000 Po"},
        {std::numeric_limits<std::int64_t>::max(), "9223" + comma + "4 Po"},
        {-2048, "-2048 o"},
        {std::numeric_limits<std::int64_t>::min(), "-9223372036854775808 o"}};
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(SizeFormatter::string(bytes), text);
    }
}

TEST(SizeProportion, IsRelativeToTheLargestAndNeverLeavesZeroToOne)
{
    const auto entry = [](const std::string& path, std::int64_t size) {
        return Entry{FileUrl{path}, path, size, false, {}};
    };
    const std::vector entries{entry("/a", 10), entry("/b", 5), entry("/c", 0), entry("/d", -3),
                              entry("/b", 1)};
    const auto fractions = SizeProportion::fractions(entries);
    EXPECT_EQ(fractions.at(FileUrl{"/a"}), 1.0);
    EXPECT_EQ(fractions.at(FileUrl{"/b"}), 0.1) << "the later entry of one location counts";
    EXPECT_EQ(fractions.at(FileUrl{"/c"}), 0.0);
    EXPECT_EQ(fractions.at(FileUrl{"/d"}), 0.0);
    EXPECT_THAT(SizeProportion::fractions(std::vector<Entry>{}), testing::IsEmpty());
    EXPECT_EQ(SizeProportion::fractions(std::vector{entry("/z", 0)}).at(FileUrl{"/z"}), 0.0);
    EXPECT_EQ(SizeProportion::fraction(5, 0), 0.0);
    EXPECT_EQ(SizeProportion::fraction(20, 10), 1.0);
}

TEST(Entry, ASumThatLeavesTheRangeEndsTheProcess)
{
    EXPECT_DEATH({ std::ignore = checkedSum(std::numeric_limits<std::int64_t>::max(), 1); }, "64 bits");
}

TEST(CSVExport, QuotesExactlyWhatNeedsItAndKeepsEveryByte)
{
    const std::vector<std::pair<std::string, std::string>> cases{
        {"plain", "plain"},   {"a,b", "\"a,b\""}, {"a\"b", "\"a\"\"b\""},
        {"a\nb", "\"a\nb\""}, {"a\rb", "a\rb"},   {"a\r\nb", "a\r\nb"},
        {"\xff", "\xff"},     {"", ""},           {"a\r\n\nb", "\"a\r\n\nb\""}};
    for (const auto& [field, text] : cases) {
        EXPECT_EQ(CSVExport::escape(field), text);
    }
    const Timestamp moment = std::chrono::sys_days{std::chrono::May / 1 / 2024} + 12h + 34min + 56s + 999ms;
    const std::vector entries{
        Entry{.url = FileUrl{"/p/a,b.txt"}, .name = "a,b.txt", .sizeBytes = 1500, .modifiedAt = moment},
        Entry{FileUrl{"/p/d"}, "d", -1, true, {}}};
    const std::string& comma = SizeFormatter::decimalSeparator();
    const std::string size = comma == "," ? "\"1,5 Ko\"" : "1" + comma + "5 Ko";
    EXPECT_EQ(CSVExport::string(entries), "Nom,Chemin,Taille (octets),Taille,Type,Modifié\n"
                                          "\"a,b.txt\",\"/p/a,b.txt\",1500," +
                                              size +
                                              ",Fichier,2024-05-01T12:34:56Z\n"
                                              "d,/p/d,-1,-1 o,Dossier,");
    EXPECT_EQ(CSVExport::string(std::vector<Entry>{}), CSVExport::header);
    EXPECT_EQ(CSVExport::internetDateTime(Timestamp{-1ns}), "1969-12-31T23:59:59Z");
}

TEST(Utf8, AcceptsTheWellFormedFormsOnlyAndReadsThem)
{
    for (const auto& [text, code] :
         std::vector<std::pair<std::string, char32_t>>{{"a", U'a'},
                                                       {"é", U'é'},
                                                       {"日", U'日'},
                                                       {"\xed\x9f\xbf", 0xD7FF},
                                                       {"\xf4\x8f\xbf\xbf", 0x10FFFF}}) {
        EXPECT_EQ(Utf8::codePoint(text), code) << text;
    }
    for (const std::string text : {"", "é", "\xed\x9f\xbf", "\xf4\x8f\xbf\xbf", "日本"}) {
        EXPECT_TRUE(Utf8::isValid(text)) << text;
    }
    for (const std::string text :
         {"\xff", "\xc0\x80", "\xe0\x80\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xc3", "a\xe2\x82"}) {
        EXPECT_FALSE(Utf8::isValid(text)) << text;
    }
}

TEST(Ecosystem, AFolderBelongsToTheFirstThatMakesIt)
{
    EXPECT_EQ(Ecosystem::first("build"), Ecosystem::javascript);
    EXPECT_EQ(Ecosystem::first("DerivedData"), Ecosystem::xcode);
    EXPECT_EQ(Ecosystem::first("deriveddata"), std::nullopt);
    EXPECT_EQ(Ecosystem::first(""), std::nullopt) << "rows are not all of one length";
    EXPECT_THAT(Ecosystem::ruleNames({Ecosystem::python, Ecosystem::rust}),
                testing::ElementsAre(".venv", "__pycache__", "target"));
    EXPECT_THAT(Ecosystem::ruleNames({}), testing::IsEmpty());
    for (const Ecosystem ecosystem : Ecosystem::all) {
        EXPECT_EQ(Ecosystem::fromRawValue(ecosystem.rawValue()), ecosystem);
    }
}

TEST(AgeThreshold, ExactlyTheAgeIsNotOldAndNeitherIsWhatHasNoDate)
{
    const Timestamp now = std::chrono::sys_days{std::chrono::year{2024} / 3 / 1};
    for (const auto& [raw, days] : std::vector<std::pair<std::string, int>>{
             {"oneWeek", 7}, {"oneMonth", 30}, {"threeMonths", 90}, {"sixMonths", 180}, {"oneYear", 365}}) {
        const AgeThreshold threshold = AgeThreshold::fromRawValue(raw).value();
        const Timestamp limit = now - std::chrono::days{days};
        EXPECT_FALSE(threshold.isOld(limit, now)) << raw;
        EXPECT_TRUE(threshold.isOld(limit - 1ns, now)) << raw;
        EXPECT_FALSE(threshold.isOld(std::nullopt, now)) << raw;
    }
    EXPECT_TRUE(AgeThreshold{AgeThreshold::oneYear}.isOld(Timestamp::min(), now)) << "no overflow";
    EXPECT_FALSE(AgeThreshold::fromRawValue("1 mois").has_value());
}

} // namespace

} // namespace tallyroom
