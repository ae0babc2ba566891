#include "Removal/FileRemover.h"
#include "Support/Cases.h"
#include "Support/Interception.h"
#include "Support/Isolation.h"
#include "Support/ListWords.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <regex>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

/// A tree with a home folder and a trash of its own: no test comes near the real one.
class TrashTest : public testing::Test {
protected:
    FileRemover::RemovalResult trash(const std::vector<FileUrl>& urls)
    {
        return FileRemover::moveToTrash(urls);
    }

    FileRemover::RemovalResult trash(const std::string& relative) { return trash({tree.url(relative)}); }

    /// The name under which the item lies in the home trash; fails the test when it does not.
    std::string nameInTrash(const FileRemover::RemovalResult& result, std::size_t index = 0)
    {
        EXPECT_THAT(result.failures, IsEmpty()) << result.failures.front().message;
        return result.trashed.size() > index ? std::string{result.trashed[index].inTrash.lastPathComponent()}
                                             : "";
    }

    std::string record(const std::string& name)
    {
        return tree.content("data/Trash/info/" + name + ".trashinfo");
    }

    TemporaryTree tree{folder("home"), folder("data")};
    ScopedVariable home{"HOME", tree.path("home")};
    ScopedVariable dataHome{"XDG_DATA_HOME", tree.path("data")};
};

TEST_F(TrashTest, RecordsTheResolvedPathEncodedFromItsBytesAndThePersonsTime)
{
    tree.add({file("real/été 100%\n\xff.txt", "x"), link("route", "real")});
    const ScopedVariable zone{"TZ", "<+14>-14"}; // far from Greenwich
    ::tzset();
    const auto head = [this] {
        std::time_t now = std::time(nullptr) + 14 * 3600;
        std::array<char, 32> date{};
        std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", std::gmtime(&now)); // NOLINT: one thread
        return "[Trash Info]\nPath=" + tree.path("real/") +
               "%C3%A9t%C3%A9%20100%25%0A%FF.txt\nDeletionDate=" + date.data() + "\n";
    };
    const std::string before = head();
    const std::string name = nameInTrash(trash("route/../real/été 100%\n\xff.txt"));
    EXPECT_EQ(name, "été 100%\n\xff.txt");
    EXPECT_THAT(record(name), testing::AllOf(testing::Ge(before), testing::Le(head())));
    EXPECT_THAT(tree.names("real"), IsEmpty());
}

TEST_F(TrashTest, NamesThatClashAreOddOrLieFarDownComeBackWhole)
{
    const std::string far = chain(std::string(200, 'd'), 30) + "/";
    const std::regex repeated{"(.)\\*(\\d+)"};
    const auto spelt = [&repeated](std::string name) {
        for (std::smatch found; std::regex_search(name, found, repeated);) {
            name = found.prefix().str() + std::string(std::stoul(found[2]), found[1].str()[0]) +
                   found.suffix().str();
        }
        return name;
    };
    for (const auto& row : cases("names that clash in a trash")) {
        const std::string name = spelt(row[0]);
        const std::string second = spelt(row[1]);
        tree.add({file("a/" + name, "first"), file(far + name, "second")});
        const auto result = trash({tree.url("a/" + name), tree.url(far + name)});
        EXPECT_EQ(nameInTrash(result, 1), second);
        EXPECT_EQ(tree.content("data/Trash/files/" + nameInTrash(result)), "first") << name;
        EXPECT_EQ(tree.content("data/Trash/files/" + second), "second") << name;
        EXPECT_THAT(record(second), HasSubstr("Path=" + tree.path(far)));
        EXPECT_TRUE(FileRemover::restore(result.trashed).allSucceeded());
        EXPECT_EQ(tree.content("a/" + name) + tree.content(far + name), "firstsecond") << name;
    }
    EXPECT_THAT(tree.names("data/Trash/info"), IsEmpty());
    EXPECT_THAT(tree.names("data/Trash/files"), IsEmpty());
}

TEST_F(TrashTest, NeitherAnItemWithoutRecordNorARecordWithoutItemIsOverwritten)
{
    tree.add({file("data/Trash/files/photo", "old"), file("data/Trash/info/photo.2.trashinfo", "old record"),
              file("photo", "new")});
    const std::string name = nameInTrash(trash("photo"));
    EXPECT_EQ(name, "photo.3");
    EXPECT_EQ(tree.content("data/Trash/files/photo"), "old");
    EXPECT_EQ(record("photo.2"), "old record");
    EXPECT_THAT(tree.names("data/Trash/info"), ElementsAre("photo.2.trashinfo", "photo.3.trashinfo"));
}

TEST_F(TrashTest, AnUndoPutsBackTheVeryItemIntoTheVeryFolderAndNeverOverwrites)
{
    const std::string nested = tree.path("b/notes").substr(1); // its path ends like that of the other notes
    tree.add({file(nested, "first"), file("b/notes", "second"), file("a/bare", "third"), file("a/gone", "g"),
              file("c/moved", "m"), file("a/taken", "old"), file("e/inner", "i"), file("a/emptied", "e"),
              link("a/shortcut", "bare")});
    auto undone =
        trash({tree.url(nested), tree.url("a/bare"), tree.url("a/gone"), tree.url("c/moved"),
               tree.url("a/taken"), tree.url("e/inner"), tree.url("a/emptied"), tree.url("a/shortcut/")})
            .trashed;
    ASSERT_THAT(undone, SizeIs(8));
    undone.front().item.reset(); // known by its record alone
    for (const auto* path : {"files/notes", "info/notes.trashinfo", "info/bare.trashinfo", "files/gone"}) {
        tree.remove(std::string{"data/Trash/"} + path);
    }
    const std::vector gone{tree.url("e"), tree.url("data/Trash/files/emptied")};
    ASSERT_TRUE(FileRemover::remove(gone, true).allSucceeded());
    tree.rename("c", "d");
    tree.add({folder("c"), file("a/taken", "new")});
    const auto stranger = trash("b/notes");
    ASSERT_EQ(nameInTrash(stranger), "notes");
    const auto result = FileRemover::restore(undone);
    EXPECT_THAT(result.removed, ElementsAre(tree.url("a/bare"), tree.url("a/shortcut/")));
    EXPECT_THAT(told(tree, result.failures),
                ElementsAre(nested + ": Un autre élément porte maintenant ce nom dans la corbeille.",
                            "a/gone: Cet élément n'est plus dans la corbeille.",
                            "c/moved: Le dossier d'origine a été remplacé par un autre.",
                            "a/taken: Un élément de ce nom existe déjà.",
                            "e/inner: Cet élément n'existe plus.",
                            "a/emptied: Cet élément n'est plus dans la corbeille."));
    EXPECT_FALSE(result.canUndo());
    EXPECT_THAT(tree.names("a"), ElementsAre("bare", "shortcut", "taken"));
    EXPECT_EQ(tree.content("a/taken") + tree.content("a/shortcut"), "newbare");
    EXPECT_THAT(tree.names("c"), IsEmpty());
    EXPECT_EQ(tree.content("data/Trash/files/moved"), "m");
    EXPECT_TRUE(FileRemover::restore(stranger.trashed).allSucceeded());
    EXPECT_EQ(tree.content("b/notes"), "second");
    EXPECT_THAT(tree.names("data/Trash/files"), ElementsAre("inner", "moved", "taken"));
    EXPECT_THAT(tree.names("data/Trash/info"),
                ElementsAre("gone.trashinfo", "inner.trashinfo", "moved.trashinfo", "taken.trashinfo"))
        << "the record of what is deleted in the trash goes along";
}

TEST_F(TrashTest, DeletingFromItTakesTheVeryItemsWithTheirRecordsAndNoOthers)
{
    tree.add({file("home/a", "a"), file("home/b", "b"), file("home/c/deep", "c"), file("home/kept", "k")});
    trash("home/kept");
    auto trashed = trash({tree.url("home/a"), tree.url("home/b"), tree.url("home/c")}).trashed;
    tree.remove("data/Trash/files/b");
    tree.add(file("data/Trash/files/b", "of somebody else"));
    trashed.push_back({tree.url("home/kept"), tree.url("data/Trash/files/kept")}); // nobody knows which it is
    std::size_t told = 0;
    FileRemover::BatchOptions options;
    options.progress = [&told](std::size_t completed, std::size_t) { told = completed; };
    const auto result = FileRemover::deleteTrashed(trashed, options);
    EXPECT_THAT(result.removed, ElementsAre(tree.url("data/Trash/files/a"), tree.url("data/Trash/files/c")));
    ASSERT_THAT(result.failures, SizeIs(2));
    EXPECT_EQ(result.failures[0], (FileRemover::RemovalFailure{tree.url("data/Trash/files/b"),
                                                               "Cet élément a changé depuis l'analyse."}));
    EXPECT_EQ(told, 4U);
    EXPECT_THAT(tree.names("data/Trash/files"), ElementsAre("b", "kept"));
    EXPECT_THAT(tree.names("data/Trash/info"), ElementsAre("b.trashinfo", "kept.trashinfo"));
}

TEST_F(TrashTest, ProcessesThatTrashTheSameNamesAtOnceLoseNothing)
{
    constexpr int itemsEach = 40;
    constexpr int processes = 4;
    for (int process = 0; process < processes; ++process) {
        for (int i = 0; i < itemsEach; ++i) {
            const std::string place = std::to_string(process) + "/" + std::to_string(i);
            tree.add(file(place + "/node_modules/which", place));
        }
    }
    const std::vector<int> codes = inChildProcesses(processes, [&](int process) {
        std::vector<FileUrl> urls;
        for (int i = 0; i < itemsEach; ++i) {
            urls.push_back(tree.url(std::to_string(process) + "/" + std::to_string(i) + "/node_modules"));
        }
        return static_cast<int>(trash(urls).failures.size());
    });
    EXPECT_THAT(codes, testing::Each(0));
    const auto names = tree.names("data/Trash/files");
    EXPECT_THAT(names, SizeIs(itemsEach * processes));
    EXPECT_THAT(tree.names("data/Trash/info"), SizeIs(itemsEach * processes));
    for (const std::string& name : names) {
        const std::string place = tree.content("data/Trash/files/" + name + "/which");
        EXPECT_THAT(record(name), HasSubstr("Path=" + tree.path(place + "/node_modules") + "\n"));
    }
}

TEST_F(TrashTest, OtherProgramsSeeWhatLiesInIt)
{
    tree.add({file("été 100% #1.txt", "x"), file("dossier/-rf", "x")});
    ASSERT_TRUE(trash({tree.url("été 100% #1.txt"), tree.url("dossier")}).allSucceeded());
    const auto outputOf = [this](const std::string& command) { // empty when it is not installed or fails
        std::ignore = std::system((command + " >" + tree.path("output") + " 2>/dev/null").c_str()); // NOLINT
        return tree.content("output");
    };
    const std::string trashList = outputOf("LC_ALL=C.UTF-8 trash-list");
    const std::string gio = outputOf("LC_ALL=C.UTF-8 dbus-run-session -- gio trash --list");
    if (trashList.empty() && gio.empty()) {
        GTEST_SKIP() << "neither trash-list nor gio can list a trash here";
    }
    if (!trashList.empty()) {
        EXPECT_THAT(trashList, HasSubstr(tree.path("été 100% #1.txt") + "\n"));
        EXPECT_THAT(trashList, HasSubstr(tree.path("dossier") + "\n"));
    }
    if (!gio.empty()) { // gio escapes what is not ASCII
        EXPECT_THAT(gio, HasSubstr("trash:///%C3%A9t%C3%A9%20100%25%20%231.txt\t" + tree.path()));
        EXPECT_THAT(gio, HasSubstr("trash:///dossier\t" + tree.path("dossier") + "\n"));
    }
}

TEST_F(TrashTest, TheTrashItselfAndWhatLiesInItStay)
{
    tree.add(file("photo", "p"));
    ASSERT_EQ(nameInTrash(trash("photo")), "photo");
    for (const char* const relative : {"data", "data/Trash", "data/Trash/files", "data/Trash/files/photo"}) {
        EXPECT_THAT(trash(relative).failures, SizeIs(1)) << relative;
    }
    EXPECT_THAT(tree.names("data/Trash/files"), ElementsAre("photo"));
    EXPECT_THAT(tree.names("data/Trash/info"), ElementsAre("photo.trashinfo"));
}

TEST_F(TrashTest, AnItemThatCannotGoStaysAndItsRecordIsTakenBack)
{
    const int code = asUnprivilegedUser([] {
        TemporaryTree own{file("locked/photo", "p"), file("photo", "p"), folder("readonly/Trash/files"),
                          folder("readonly/Trash/info"), folder("nowhere")};
        own.add({folder("locked").withMode(0555), folder("readonly/Trash/info").withMode(0555),
                 folder("nowhere").withMode(0555)});
        const ScopedVariable openHome{"XDG_DATA_HOME", own.path("data")};
        bool isRight = FileRemover::moveToTrash(own.url("locked/photo")).error().message == "Accès refusé." &&
                       own.exists("locked/photo") && own.names("data/Trash/info").empty();
        for (const char* const closed : {"readonly", "nowhere/data"}) {
            const ScopedVariable closedHome{"XDG_DATA_HOME", own.path(closed)};
            isRight = isRight && !FileRemover::moveToTrash(own.url("photo")) && own.content("photo") == "p";
        }
        return isRight ? 0 : 1;
    });
    EXPECT_EQ(code, 0);
}

/// A volume of its own below the tree, with the trash folders that only it can have.
class VolumeTrashTest : public TrashTest {
protected:
    void SetUp() override
    {
        SKIP_UNLESS_MOUNTED(volume);
        tree.add(file("volume/album/été", "p"));
    }

    FileRemover::RemovalResult trashPhoto() { return trash("volume/album/été"); }

    const std::string own = ".Trash-" + std::to_string(::getuid());
    const std::string ownShared = ".Trash/" + std::to_string(::getuid());
    const bool isMade = (tree.add(folder("volume")), true);
    TemporaryMount volume = TemporaryMount::memory(tree.path("volume"), "size=1m");
};

TEST_F(VolumeTrashTest, ItemsStayOnTheirVolumeWithPathsRelativeToIt)
{
    const auto result = trashPhoto();
    ASSERT_EQ(nameInTrash(result), "été");
    EXPECT_EQ(result.trashed.front().inTrash, tree.url("volume/" + own + "/files/été"));
    EXPECT_THAT(tree.content("volume/" + own + "/info/été.trashinfo"),
                StartsWith("[Trash Info]\nPath=album/%C3%A9t%C3%A9\nDeletionDate="));
    EXPECT_THAT(tree.names("data/Trash/files"), IsEmpty());
    struct stat status = {};
    ASSERT_EQ(::stat(tree.path("volume/" + own).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
    EXPECT_TRUE(FileRemover::restore(result.trashed).allSucceeded());
    EXPECT_EQ(tree.content("volume/album/été"), "p");
    EXPECT_THAT(tree.names("volume/" + own + "/info"), IsEmpty());
}

TEST_F(VolumeTrashTest, AStatThatFailsMakesNoTrashWhereNobodyLooksForOne)
{
    const std::string deep = "volume/album/of/photos";
    tree.add({file(deep + "/photo", "p"), folder("volume/data")});
    for (const bool homeIsOnTheVolume : {false, true}) {
        const ScopedVariable anotherHome{"XDG_DATA_HOME",
                                         tree.path(homeIsOnTheVolume ? "volume/data" : "data")};
        for (int failing = 1; failing < 60; ++failing) {
            FileRemover::RemovalResult result;
            {
                int count = 0;
                const Interception faults{[&count, failing](const InterceptedCall& call) {
                    return call.kind == InterceptedCall::Kind::statx && ++count == failing ? EIO : 0;
                }};
                result = trash(deep + "/photo");
            }
            EXPECT_THAT(tree.names(deep), testing::Each(std::string{"photo"}));
            EXPECT_THAT(tree.names("volume/album/of"), ElementsAre("photos"));
            EXPECT_THAT(tree.names("volume/album"), ElementsAre("of", "été"));
            if (homeIsOnTheVolume) {
                EXPECT_FALSE(tree.exists("volume/" + own)) << failing;
            }
            EXPECT_TRUE(FileRemover::restore(result.trashed).allSucceeded());
            ASSERT_EQ(tree.content(deep + "/photo"), "p") << failing;
        }
        std::ignore = FileRemover::deletePermanently(tree.url("volume/" + own));
    }
}

TEST_F(VolumeTrashTest, TheSharedTrashIsUsedOnlyWhenItIsSafe)
{
    const auto placeAfter = [this](const TreeItem& shared) {
        tree.add(shared);
        const auto result = trashPhoto();
        EXPECT_THAT(result.failures, IsEmpty());
        EXPECT_TRUE(FileRemover::restore(result.trashed).allSucceeded());
        ::unlink(tree.path("volume/.Trash").c_str());
        return result.trashed.empty() ? "" : result.trashed.front().inTrash.parent().parent().path();
    };
    tree.add(folder("volume/elsewhere").withMode(01777));
    EXPECT_EQ(placeAfter(link("volume/.Trash", "elsewhere")), tree.path("volume/" + own));
    EXPECT_EQ(placeAfter(folder("volume/.Trash").withMode(0777)), tree.path("volume/" + own));
    EXPECT_EQ(placeAfter(folder("volume/.Trash").withMode(01777)), tree.path("volume/" + ownShared));
}

TEST_F(VolumeTrashTest, ATrashThatAnotherHasLaidOutIsRefused)
{
    tree.add({folder("elsewhere"), link("volume/" + own, tree.path("elsewhere"))});
    EXPECT_THAT(trashPhoto().failures, SizeIs(1));
    tree.remove("volume/" + own);
    if (::getuid() == 0) {
        tree.add(folder("volume/" + own).ownedBy(unprivilegedUser));
        EXPECT_THAT(trashPhoto().failures, SizeIs(1));
    }
    EXPECT_EQ(tree.content("volume/album/été"), "p");
    EXPECT_THAT(tree.names("elsewhere"), IsEmpty());
}

TEST_F(VolumeTrashTest, AFullOrReadOnlyVolumeLosesNothing)
{
    const auto filled = trashPhoto();
    ASSERT_TRUE(filled.allSucceeded());
    tree.add(file("volume/album/second", "s"));
    {
        const FileDescriptor ballast{
            ::open(tree.path("volume/ballast").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600)};
        const std::string block(4096, 'b');
        while (::write(ballast.get(), block.data(), block.size()) > 0) {
        }
    }
    const std::string second = "volume/album/second";
    EXPECT_THAT(told(tree, trash(second).failures), ElementsAre(second + ": Le volume est plein."));
    ASSERT_TRUE(volume.makeReadOnly());
    EXPECT_THAT(told(tree, trash(second).failures),
                ElementsAre(second + ": Ce volume est en lecture seule."));
    EXPECT_EQ(tree.content("volume/album/second"), "s");
    EXPECT_THAT(tree.names("volume/" + own + "/info"), ElementsAre("été.trashinfo"));
}

TEST_F(VolumeTrashTest, TheVolumesOwnTrashServesWhereTheHomesCannotBeReached)
{
    const std::string itsTrash = own + "/files/photo";
    tree.add({file("disk/photo", "p"), folder("window"), file("volume/photo", "p")});
    const auto bound = TemporaryMount::bind(tree.path("disk"), tree.path("window"));
    ASSERT_TRUE(bound.isMounted()) << bound.refusal();
    const auto bind = trash("window/photo");
    ASSERT_EQ(nameInTrash(bind), "photo");
    EXPECT_EQ(bind.trashed.front().inTrash, tree.url("window/" + itsTrash));
    EXPECT_TRUE(FileRemover::restore(bind.trashed).allSucceeded());
    EXPECT_EQ(tree.content("disk/photo"), "p");

    tree.add(folder("volume/data"));
    const ScopedVariable homeOnTheVolume{"XDG_DATA_HOME", tree.path("volume/data")};
    int renames = 0;
    const Interception divided{[&renames](const InterceptedCall& call) {
        return call.kind == InterceptedCall::Kind::rename && ++renames == 1 ? EXDEV : 0;
    }};
    const auto refused = trash("volume/photo"); // as where one mount shows several subvolumes
    ASSERT_EQ(nameInTrash(refused), "photo");
    EXPECT_EQ(refused.trashed.front().inTrash, tree.url("volume/" + itsTrash));
}

} // namespace

} // namespace tallyroom
