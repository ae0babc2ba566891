#include "Caches/FindInspectors.h"
#include "Model/Ecosystem.h"
#include "Recovery/SafeRemoval.h"
#include "Scanning/FileScanner.h"
#include "Support/CacheTree.h"
#include "Support/Isolation.h"

#include <cstdlib>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <spawn.h>
#include <sys/wait.h>

namespace tallyroom {

namespace {

using testing::UnorderedElementsAre;

std::map<std::string, Entry> cachesIn(const TemporaryTree& tree, const FileUrl& root)
{
    FileScanner::clearCache();
    auto stream = FileScanner::findDirectoriesStream(
        Ecosystem::ruleNames({Ecosystem::all.begin(), Ecosystem::all.end()}), root,
        FindInspectors::ofCaches());
    ScanProgress last;
    while (auto record = stream.next()) {
        last = std::move(*record);
    }
    std::map<std::string, Entry> caches;
    for (const Entry& entry : last.entries) {
        caches[entry.url.path().substr(tree.path().size() + 1)] = entry;
    }
    return caches;
}

std::vector<std::string> inUse(const std::map<std::string, Entry>& caches)
{
    std::vector<std::string> paths;
    for (const auto& [path, entry] : caches) {
        if (entry.has(EntryMark::inUse)) {
            paths.push_back(path);
        }
    }
    return paths;
}

/// Another program that holds a file open.
class Holder {
public:
    explicit Holder(const std::string& file)
    {
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_addopen(&actions, 0, file.c_str(), O_RDONLY, 0);
        std::string program = "sleep";
        std::string time = "60";
        char* const arguments[] = {program.data(), time.data(), nullptr};
        EXPECT_EQ(::posix_spawnp(&m_process, "sleep", &actions, nullptr, arguments, environ), 0);
        ::posix_spawn_file_actions_destroy(&actions);
    }

    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    ~Holder()
    {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }

private:
    pid_t m_process = -1;
};

TEST(CacheInspection, TellsCachesFromFoldersThatAreOnlyCalledLikeThem)
{
    const CacheTree tree;
    std::map<std::string, std::string> found;
    for (const auto& [path, entry] : cachesIn(tree, tree.url())) {
        EXPECT_FALSE(entry.has(EntryMark::inUse)) << path;
        found[path] = (entry.has(EntryMark::toVerify) ? "?" : "") +
                      std::string{Ecosystem::of(entry).value_or(Ecosystem::xcode).rawValue()};
    }
    std::map<std::string, std::string> truth;
    for (const auto& row : cases("whose caches they are")) {
        truth[row[0]] = row[1];
    }
    EXPECT_EQ(found, truth);
}

TEST(CacheInspection, TheSearchedFolderItselfIsInspectedToo)
{
    const CacheTree tree;
    const auto proven = cachesIn(tree, tree.url("android/build"));
    EXPECT_EQ(Ecosystem::of(proven.at("android/build")), Ecosystem{Ecosystem::jvm});
    EXPECT_EQ(proven.at("android/build").marks, 0);
    const auto doubtful = cachesIn(tree, tree.url("Documents/Maison/build"));
    EXPECT_TRUE(doubtful.at("Documents/Maison/build").has(EntryMark::toVerify));
}

TEST(CacheInspection, AWriteWithinTenMinutesMeansInUse)
{
    CacheTree tree;
    const std::int64_t now = std::time(nullptr);
    tree.add(file("site/node_modules/a/b/c/new.js", 9).modifiedAt(now - 9 * 60));
    tree.add(file("crate/target/debug/older", 9).modifiedAt(now - 11 * 60));
    tree.add(file("shop/vendor/future", 9).modifiedAt(now + 86'400));
    tree.add(folder("site/node_modules/a/b/c").modifiedAt(1'600'000'000));
    for (const char* const path : {"site/node_modules/a/b", "site/node_modules/a", "site/node_modules",
                                   "crate/target/debug", "crate/target", "shop/vendor"}) {
        tree.add(folder(path).modifiedAt(1'600'000'000));
    }
    EXPECT_THAT(inUse(cachesIn(tree, tree.url())), UnorderedElementsAre("site/node_modules"));
}

TEST(CacheInspection, AFileThatAnotherProgramHoldsOpenMeansInUseAlsoThroughALink)
{
    CacheTree tree;
    tree.add(link("shortcut", "crate"));
    const Holder holder{tree.path("crate/target/debug/app")};
    EXPECT_THAT(inUse(cachesIn(tree, tree.url())), UnorderedElementsAre("crate/target"));
    EXPECT_THAT(inUse(cachesIn(tree, tree.url("shortcut"))), UnorderedElementsAre("shortcut/target"));
}

TEST(CacheInspection, WhatGitTracksIsNeverProposed)
{
    CacheTree tree;
    tree.add({file("app/package.json", "{}"), file("app/.next/BUILD_ID", 9),
              file("app/web/.next/BUILD_ID", 9), file("app/web/package.json", "{}"),
              file("app/.next-notes", 9), file("app/odd/package.json", "{}"),
              file("app/odd/.next/BUILD_ID", 9), file("app/odd/.git/index", "no index"),
              file("app/own/Cargo.toml", 9), file("app/own/target/.git", "gitdir: ../../elsewhere"),
              file("app/node_modules/tool/index.js", 9), file("app/web/node_modules/a", 9)});
    const std::string git = "git -C " + tree.path("app") + " -c core.safecrlf=false ";
    ASSERT_EQ(std::system((git + "init -q && " + git +
                           "add -f .next-notes package.json web/.next node_modules/tool/index.js")
                              .c_str()),
              0);
    dateAll(tree, 1'600'000'000);
    tree.add(link("shortcut", "app/web"));
    auto found = cachesIn(tree, tree.url("app"));
    found.merge(cachesIn(tree, tree.url("shortcut")));
    for (const char* const path : {"app/web/.next", "shortcut/.next", "app/odd/.next", "app/own/target"}) {
        EXPECT_FALSE(SafeRemoval::isSafeCache(found.at(path))) << path;
    }
    EXPECT_TRUE(SafeRemoval::isSafeCache(found.at("app/.next")));
    const SafeRemoval::NodeProject project{std::nullopt, true};
    const auto isSafe = SafeRemoval::safeNodeModules(AgeThreshold::oneMonth);
    EXPECT_FALSE(isSafe(found.at("app/node_modules"), project));
    EXPECT_TRUE(isSafe(found.at("app/web/node_modules"), project));
}

TEST(ProgramInspection, NodeModulesAreInUseWhileAProgramWorksInTheirProject)
{
    const TemporaryTree tree{file("served/index.js", 9), file("served/node_modules/a", 9),
                             file("served/inner/node_modules/a", 9), file("left/node_modules/a", 9)};
    const Holder holder{tree.path("served/index.js")};
    auto stream = FileScanner::findNodeModulesStream(tree.url(), FindInspectors::ofNodeModules());
    ScanProgress last;
    while (auto record = stream.next()) {
        last = std::move(*record);
    }
    ASSERT_EQ(last.entries.size(), 3U);
    for (const Entry& entry : last.entries) {
        EXPECT_EQ(entry.has(EntryMark::inUse), entry.url == tree.url("served/node_modules"))
            << entry.url.path();
    }
}

/// What was found an hour ago may be in use when it is to go.
TEST(SafeRemoval, WhatAProgramHasBegunToUseIsRefusedNodeModulesWithTheirProject)
{
    const TemporaryTree tree{file("served/index.js", 9), folder("served/node_modules"),
                             folder("served/target"), folder("left/node_modules")};
    const Holder holder{tree.path("served/index.js")};
    const FileRemover::Screening isRefused = SafeRemoval::refuseInUse();
    std::vector<std::string> refused;
    for (const std::string path : {"served/node_modules", "served/target", "left/node_modules", "served"}) {
        const FileUrl url = tree.url(path);
        if (isRefused({.url = url, .name = std::string{url.lastPathComponent()}}, {}).refusal) {
            refused.push_back(path);
        }
    }
    EXPECT_THAT(refused, UnorderedElementsAre("served/node_modules", "served"));
}

TEST(SafeRemoval, ACacheThatAProjectMayKeepIsNeverProposed)
{
    for (const std::string name : {"dist", "build", "vendor", ".venv", "node_modules"}) {
        EXPECT_FALSE(SafeRemoval::isSafeCache({.name = name})) << name;
    }
    Entry cache{.name = "target"};
    EXPECT_TRUE(SafeRemoval::isSafeCache(cache));
    cache.unread = 1;
    EXPECT_FALSE(SafeRemoval::isSafeCache(cache));
}

TEST(ProgramInspection, NodeModulesOfProgramsAreToldFromThoseOfProjects)
{
    const ScopedVariable home{"HOME", "/tmp/somebody"};
    for (const auto& row : cases("node_modules of programs")) {
        const FileUrl url{row[0].starts_with('~') ? "/tmp/somebody" + row[0].substr(1) : row[0]};
        EXPECT_EQ(FindInspectors::isOfInstalledProgram(url), row[1] == "yes") << row[0];
    }
}

} // namespace

} // namespace tallyroom
