#include "Properties/ContentFigures.h"
#include "Properties/ItemFacts.h"
#include "Support/AllRecords.h"
#include "Support/Interception.h"
#include "Support/TemporaryTree.h"

#include <future>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace tallyroom {

namespace {

Entry chosen(const TemporaryTree& tree, const std::string& path, bool isFolder)
{
    return {.url = tree.url(path), .name = path, .isDirectory = isFolder};
}

TEST(ContentFigures, CountEachItemOnceAndFollowNoLink)
{
    const TemporaryTree tree{file("d/one", 4096),          sparseFile("d/e/sparse", 1'000'000),
                             hardLink("d/e/two", "d/one"), link("d/to out", "../out"),
                             file("out/large", 50'000),    fifo("d/e/pipe"),
                             folder("d/e/empty"),          file("alone", 4096)};
    const auto count = [](const std::vector<Entry>& entries) {
        return allRecords(countContent(entries)).back();
    };
    const std::int64_t link = static_cast<std::int64_t>(std::string{"../out"}.size());
    const ContentFigures whole{.files = 5,
                               .folders = 2,
                               .allocatedBytes = 8192,
                               .logicalBytes = 8192 + 1'000'000 + link,
                               .linkedNames = 2};
    const Entry d = chosen(tree, "d", true);
    EXPECT_EQ(count({d}), whole);
    ContentFigures withD = whole;
    ++withD.folders;
    EXPECT_EQ(count({d, chosen(tree, "d/e", true), chosen(tree, "d/one", false)}), withD)
        << "what lies in another one";
    const ContentFigures two = count({chosen(tree, "alone", false), d});
    EXPECT_EQ(two.files, 6);
    EXPECT_EQ(two.allocatedBytes, whole.allocatedBytes + 4096);
    EXPECT_EQ(count({chosen(tree, "d/to out", false)}).logicalBytes, link);
    EXPECT_EQ(count({chosen(tree, "gone", false)}),
              (ContentFigures{.files = 1, .unread = 1, .hasUnreadItems = true}));
    EXPECT_EQ(count({chosen(tree, "gone", true)}).unread, 1);
}

TEST(ContentFigures, EndWhenNobodyWaitsForThem)
{
    const TemporaryTree tree{file("d/hangs", 1), file("d/e/f/g", 1)};
    std::promise<void> gate;
    const std::shared_future<void> isOpen = gate.get_future().share();
    std::promise<void> reached;
    const auto hanging = Interception::at(InterceptedCall::Kind::statx, "hangs", [&reached, isOpen] {
        reached.set_value();
        isOpen.wait();
    });
    std::optional stream = countContent({chosen(tree, "d", true)});
    reached.get_future().wait();
    stream->cancel();
    gate.set_value();
    while (stream->next()) {
    }
}

TEST(ItemFacts, SayWhatStatSaysOfTheItemItself)
{
    const std::string odd = "-\xff\n";
    TemporaryTree tree{file("f", 5).withMode(04754).modifiedAt(1'500'000'000), hardLink("g", "f"),
                       link(odd, "no\xffwhere"), folder("sticky").withMode(01777)};
    const auto file = itemFacts(tree.url("f"));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->names, 2U);
    EXPECT_EQ(permissionLetters(file->permissions), "rwsr-xr--");
    EXPECT_EQ(file->modifiedAt, Timestamp{std::chrono::seconds{1'500'000'000}});
    EXPECT_EQ(file->owner, ::geteuid() == 0 ? "root" : file->owner);
    EXPECT_EQ(itemFacts(tree.url(odd)).value_or(ItemFacts{}).linkTarget, "no\xffwhere");
    EXPECT_EQ(permissionLetters(itemFacts(tree.url("sticky/")).value_or(ItemFacts{}).permissions),
              "rwxrwxrwt");
    EXPECT_EQ(permissionLetters(02644), "rw-r-Sr--");
    EXPECT_TRUE(itemFacts(FileUrl{"/"}));
    EXPECT_EQ(itemFacts(tree.url("gone")).error().code, ENOENT);
    const std::string deep = chain(std::string(200, 'd'), 30); // beyond PATH_MAX
    tree.add(folder(deep));
    EXPECT_TRUE(itemFacts(tree.url(deep)));
}

} // namespace

} // namespace tallyroom
