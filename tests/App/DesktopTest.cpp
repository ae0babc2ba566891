#include "Bridge/Desktop.h"

#include "Support/Isolation.h"
#include "Support/TemporaryTree.h"

#include <QTest>

#include <gmock/gmock.h>

namespace tallyroom {

namespace {

TEST(Desktop, AnAnswerSaysWhatIsNoFolder)
{
    const TemporaryTree tree{folder("folder"), file("file", 1), link("to folder", "folder"),
                             link("lost", "x"), fifo("fifo")};
    const QString isNone = QStringLiteral("ce n’est pas un dossier.");
    for (const auto& [name, error] : {std::pair{"folder", QString{}},
                                      {"to folder", QString{}},
                                      {"file", isNone},
                                      {"fifo", isNone},
                                      {"lost", QStringLiteral("le dossier n’existe pas.")}}) {
        QObject context;
        std::optional<FolderChoice> choice;
        Desktop::examine(&context, tree.url(name), [&](const FolderChoice& answer) { choice = answer; });
        ASSERT_TRUE(QTest::qWaitFor([&] { return choice.has_value(); }, 20'000));
        EXPECT_EQ(choice->has_value() ? QString{} : choice->error(), error) << name;
    }
}

TEST(Desktop, WithoutAFileManagerTheFolderIsOpenedAndARefusalIsSaid)
{
    TemporaryTree tree{file("Album é/photo.jpg", 1)};
    QStringList refusals;
    const QObject context;
    QObject::connect(&DesktopRefusals::shared(), &DesktopRefusals::refused, &context,
                     [&refusals](const QString& words) { refusals << words; });
    const ScopedVariable path{"PATH", tree.path("bin") + ":/usr/bin:/bin"};
    const std::string script = "#!/bin/sh\necho \"$1\" >>'" + tree.path("opened") + "'\n";
    tree.add(file("bin/xdg-open", script).withMode(0755));
    Desktop::reveal(tree.url("Album é/photo.jpg"));
    const std::string opened = tree.url("Album é").percentEncoded() + "\n";
    EXPECT_TRUE(QTest::qWaitFor([&] { return tree.content("opened") == opened; }, 20'000));
    EXPECT_TRUE(refusals.isEmpty());

    tree.add(file("other/xdg-open", script + "exit 3\n").withMode(0755));
    const ScopedVariable otherPath{"PATH", tree.path("other") + ":/usr/bin:/bin"};
    Desktop::reveal(tree.url("Album é/photo.jpg"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !refusals.isEmpty(); }, 20'000));
    EXPECT_EQ(refusals, QStringList{QStringLiteral("Aucun gestionnaire de fichiers n’a répondu.")});
}

TEST(Desktop, AFolderOnADeadMountHoldsUpNothing)
{
    const TemporaryTree tree{folder("dead"), folder("local")};
    const TemporaryMount mount = TemporaryMount::silent(tree.path("dead"));
    if (!mount.isMounted()) {
        GTEST_SKIP() << mount.refusal();
    }
    QObject context;
    std::vector<std::string> answered;
    for (const char* const name : {"dead", "local"}) {
        Desktop::examine(&context, tree.url(name),
                         [&answered, name](const FolderChoice&) { answered.emplace_back(name); });
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return !answered.empty(); }, 20'000));
    EXPECT_THAT(answered, testing::ElementsAre("local"));
}

} // namespace

} // namespace tallyroom
