#include "Settings/RecentFolders.h"

#include "Settings/Settings.h"
#include "Support/TemporaryTree.h"

#include <QFile>
#include <QTemporaryDir>

#include <filesystem>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const QString recentsKey = QStringLiteral("recentFolders.test");

class RecentFoldersTest : public testing::Test {
protected:
    RecentFoldersTest() { Settings::store().remove(recentsKey); }

    ~RecentFoldersTest() override { Settings::store().remove(recentsKey); }

    /// What the next start of the program would read from the file.
    static std::vector<FileUrl> reloaded()
    {
        Settings::store().sync();
        const QSettings file{Settings::store().fileName(), Settings::format()};
        Settings::write(recentsKey, file.value(recentsKey));
        return RecentFolders{recentsKey}.urls();
    }
};

TEST_F(RecentFoldersTest, KeepsTheLastEightMostRecentFirstAndEachOnce)
{
    RecentFolders recents{recentsKey};
    for (const char* path : {"/1", "/2", "/3", "/4", "/5", "/6", "/7", "/8", "/2/", "/9", "/x/../4"}) {
        recents.add(FileUrl{path});
    }
    EXPECT_THAT(recents.urls(), ElementsAre(FileUrl{"/4"}, FileUrl{"/9"}, FileUrl{"/2"}, FileUrl{"/8"},
                                            FileUrl{"/7"}, FileUrl{"/6"}, FileUrl{"/5"}, FileUrl{"/3"}));
    EXPECT_EQ(reloaded(), recents.urls());
}

TEST_F(RecentFoldersTest, EveryNameSurvivesARestart)
{
    for (const char* path : {"/a,b", "/\xff\xfe", "/100%41", "/line\nbreak", "/ été \"; #", "/@Invalid()",
                             "/file:", "/\xed\xa0\x80"}) {
        Settings::store().remove(recentsKey);
        RecentFolders{recentsKey}.add(FileUrl{path});
        EXPECT_THAT(reloaded(), ElementsAre(FileUrl{path}));
    }
}

TEST_F(RecentFoldersTest, AnythingButAListOfPathsIsAnEmptyList)
{
    EXPECT_THAT(RecentFolders{recentsKey}.urls(), IsEmpty());
    for (const QVariant& stored : {QVariant{42}, QVariant{QStringLiteral("garbage")}, QVariant{QStringList{}},
                                   QVariant{QStringList{QStringLiteral("relative/folder"), {}}},
                                   QVariant{QByteArray{"\xff\x00", 2}}}) {
        Settings::write(recentsKey, stored);
        EXPECT_THAT(reloaded(), IsEmpty());
    }
}

TEST(Settings, AWrongValueReadsAsTheDefault)
{
    const std::vector<std::tuple<QVariant, std::int64_t, std::int64_t>> cases{
        {{}, 100, 1'048'576},
        {250, 250, 250},
        {12.9, 100, 12},
        {-0.5, 100, 0},
        {5e9, 5'000'000'000, 5'000'000'000},
        {1e300, 100, 1'048'576},
        {true, 100, 1'048'576},
        {QStringLiteral("250"), 100, 1'048'576},
        {QStringList{QStringLiteral("1"), QStringLiteral("2")}, 100, 1'048'576},
    };
    for (const auto& [stored, limit, minimumSize] : cases) {
        SCOPED_TRACE(stored.toString().toStdString());
        Settings::write(QStringLiteral("lf.limit"), stored);
        Settings::write(QStringLiteral("dup.minSize"), stored);
        EXPECT_EQ(Settings::largeFilesLimit(), limit);
        EXPECT_EQ(Settings::duplicatesMinSize(), minimumSize);
        EXPECT_EQ(Settings::flag(QStringLiteral("lf.limit"), false), stored.typeId() == QMetaType::Bool);
    }
}

TEST(Settings, ADamagedFileReadsAsEmptyAndIsWrittenAnew)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("settings.json"));
    for (const QByteArray& damaged :
         {QByteArray{}, QByteArray{"[General]\nlf.limit=250\n"}, QByteArray{"[250]"},
          QByteArray{"{\"lf.limit\": 250"}, QByteArray{4000, '['}}) {
        SCOPED_TRACE(damaged.toStdString());
        QFile file{path};
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(damaged);
        file.close();
        {
            QSettings settings{path, Settings::format()};
            EXPECT_THAT(settings.allKeys(), IsEmpty());
            settings.setValue(QStringLiteral("lf.limit"), 500);
        }
        EXPECT_EQ(QSettings(path, Settings::format()).value(QStringLiteral("lf.limit")), 500);
    }
}

TEST(Settings, WhatIsNoFileInTheSettingsPlaceNeitherBlocksNorGoes)
{
    const TemporaryTree tree{fifo("settings.json"), folder("folder.json")};
    for (const char* const name : {"settings.json", "folder.json"}) {
        const auto settings = Settings::open(QString::fromStdString(tree.path(name)));
        settings->setValue(QStringLiteral("kept"), 1);
        settings->sync();
        EXPECT_EQ(settings->value(QStringLiteral("kept")), 1);
    }
    EXPECT_THAT(tree.names(), testing::ElementsAre("folder.json", "settings.json"));
    EXPECT_TRUE(std::filesystem::is_fifo(tree.path("settings.json")));
}

} // namespace

} // namespace tallyroom
