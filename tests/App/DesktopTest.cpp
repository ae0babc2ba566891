#include "Bridge/Desktop.h"

#include "App/EventWait.h"
#include "App/ScreenWords.h"
#include "Support/TemporaryTree.h"

#include <QFileDialog>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

/// The chooser of the toolkit, which desktops without one of their own show.
class ChooserTest : public testing::Test {
protected:
    QFileDialog* choose(const FileUrl& start)
    {
        Desktop::chooseFolder(&m_window, start, [this](const FolderChoice& choice) { m_choice = choice; });
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
    dialog->selectFile(QStringLiteral("Albumé"));
    QAbstractButton* const accept = visibleButton(*dialog, QStringLiteral("Choisir"));
    ASSERT_NE(accept, nullptr);
    QTest::mouseClick(accept, Qt::LeftButton);
    ASSERT_TRUE(waitUntil(dialog, &QObject::destroyed, [&] { return m_choice.has_value(); }));
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

} // namespace

} // namespace tallyroom
