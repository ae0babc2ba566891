#include "App/WindowScene.h"
#include "Properties/PropertiesDialog.h"
#include "Rows/Selection.h"

#include <QLineEdit>

#include <gmock/gmock.h>
#include <map>

namespace tallyroom {

namespace {

using testing::HasSubstr;

class PropertiesTest : public WindowScene {
protected:
    /// What the dialog on show says, by the names of its lines, once it says all.
    std::map<std::string, std::string> lines(int expected)
    {
        auto* const open = dialog<PropertiesDialog>();
        std::map<std::string, std::string> said;
        if (open == nullptr) {
            ADD_FAILURE() << "no dialog";
            return said;
        }
        const auto isComplete = [&] {
            said.clear();
            bool isFilled = true;
            for (const QLineEdit* const line : open->findChildren<QLineEdit*>()) {
                QString text = line->text();
                text.replace(QChar{0xa0}, u' ').replace(QChar{0x202f}, u' ');
                said[line->accessibleName().toStdString()] = text.toStdString();
                isFilled = isFilled && !text.isEmpty();
            }
            return isFilled && std::ssize(said) == expected;
        };
        EXPECT_TRUE(QTest::qWaitFor(isComplete, 20'000)) << testing::PrintToString(said);
        return said;
    }

    void close()
    {
        QTest::keyClick(dialog<PropertiesDialog>(), Qt::Key_Escape);
        ASSERT_TRUE(QTest::qWaitFor([this] { return window->findChild<PropertiesDialog*>() == nullptr; }));
    }

    TemporaryTree tree{file("<b>d/x/one", 8192), hardLink("<b>d/two", "<b>d/x/one"),
                       file("film", 4096).withMode(0640), link("way", "film")};
};

TEST_F(PropertiesTest, TellAboutTheRowOrTheSumOfWhatIsChecked)
{
    scan("disk-usage", tree.url());
    auto& table = shown<EntryTable>();
    table.setFocus();
    ASSERT_TRUE(table.setCurrentEntry(tree.url("<b>d")));
    press(Qt::Key_Return, Qt::AltModifier);
    auto said = lines(12);
    EXPECT_EQ(said["Nom"], "<b>d") << "plain text";
    EXPECT_EQ(said["Type"], "Dossier");
    EXPECT_EQ(said["Taille sur le disque"], "16,4 Ko (16 384 octets)");
    EXPECT_EQ(said["Contenu"], "2 fichiers, 1 dossier, dont 2 fichiers avec d’autres noms (liens physiques)");
    const auto words = [this] {
        return visibleTexts(*dialog<PropertiesDialog>()).join(u'|').replace(QChar{0xa0}, u' ');
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return words().contains(QStringLiteral("8,2 Ko libérés")); }, 20'000))
        << "one file with two names: " << words().toStdString();
    close();

    for (const auto& [name, line, text] :
         {std::tuple{"way", "Mène à", "film"}, std::tuple{"film", "Permissions", "rw-r----- (640)"}}) {
        ASSERT_TRUE(table.setCurrentEntry(tree.url(name)));
        Q_EMIT table.propertiesRequested(*table.currentEntry());
        EXPECT_EQ(lines(12)[line], text);
        close();
    }
    ASSERT_TRUE(table.setCurrentEntry(tree.url("<b>d")));
    for (const char* const path : {"<b>d/two", "<b>d/x/one", "<b>d/x", "<b>d"}) {
        tree.remove(path);
    }
    Q_EMIT table.propertiesRequested(*table.currentEntry());
    said = lines(7);
    EXPECT_THAT(said["Contenu"], "au moins 0 fichier, 0 dossier");
    EXPECT_NE(said["État"], "");
    close();
    tree.add({file("<b>d/x/one", 8192), hardLink("<b>d/two", "<b>d/x/one")});
    table.selection().setAll();
    Q_EMIT table.propertiesRequested(table.arrangement().entry(0));
    said = lines(5);
    EXPECT_EQ(said["Nom"], "3 éléments");
    EXPECT_THAT(said["Contenu"], HasSubstr("4 fichiers, 2 dossiers"));
    close();
}

} // namespace

} // namespace tallyroom
