#include "Bridge/Desktop.h"

#include "App/ScreenWords.h"
#include "Support/Isolation.h"
#include "Support/TemporaryTree.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QTest>

#include <gmock/gmock.h>

namespace tallyroom {

namespace {

/// The chooser of the toolkit, which desktops without one of their own show.
class ChooserTest : public testing::Test {
protected:
    QFileDialog* choose(const FileUrl& start)
    {
        Desktop::chooseFolder(&m_window, start, [this](const FolderChoice& choice) { m_choice = choice; });
        const auto isShown = [this] { return m_window.findChild<QFileDialog*>() != nullptr; };
        EXPECT_TRUE(QTest::qWaitFor(isShown, 20'000));
        return m_window.findChild<QFileDialog*>();
    }

    QWidget m_window;
    std::optional<FolderChoice> m_choice;
};

TEST_F(ChooserTest, AFolderChosenWithTheMouseIsHandedOn)
{
    const TemporaryTree tree{folder("Album\xC3\xA9"), file("note", 10)};
    QFileDialog* const dialog = choose(tree.url());
    ASSERT_NE(dialog, nullptr);
    dialog->findChild<QLineEdit*>()->setText(QString::fromStdString(tree.path("Album\xC3\xA9")));
    QAbstractButton* const accept = visibleButton(*dialog, QStringLiteral("Choisir"));
    ASSERT_NE(accept, nullptr);
    QTest::mouseClick(accept, Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_choice.has_value(); }, 20'000));
    ASSERT_TRUE(m_choice->has_value());
    EXPECT_THAT(**m_choice, testing::ElementsAre(tree.url("Album\xC3\xA9")));
}

TEST_F(ChooserTest, DismissingChoosesNothing)
{
    const TemporaryTree tree;
    QFileDialog* const dialog = choose(tree.url());
    ASSERT_NE(dialog, nullptr);
    QTest::keyClick(dialog, Qt::Key_Escape);
    EXPECT_TRUE(dialog->isHidden());
    EXPECT_FALSE(m_choice.has_value());
}

TEST(Desktop, AnAnswerSaysWhatIsNoFolder)
{
    const TemporaryTree tree{folder("folder"), file("file", 1), link("to folder", "folder"),
                             link("lost", "x"), fifo("fifo")};
    const std::vector<std::pair<const char*, QString>> cases{
        {"folder", {}},
        {"to folder", {}},
        {"file", QStringLiteral("ce n’est pas un dossier.")},
        {"fifo", QStringLiteral("ce n’est pas un dossier.")},
        {"lost", QStringLiteral("le dossier n’existe pas.")},
    };
    for (const auto& [name, error] : cases) {
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
