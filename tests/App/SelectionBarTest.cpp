#include "Controls/SelectionBar.h"

#include "Controls/ScanProgressBar.h"
#include "Controls/SelectionCheckbox.h"
#include "Theme/Theme.h"

#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

QString textsOf(const QWidget& widget)
{
    QStringList texts;
    for (const QLabel* const label : widget.findChildren<QLabel*>()) {
        if (!label->text().isEmpty()) {
            texts += label->text();
        }
    }
    return texts.join(QLatin1Char{' '});
}

std::vector<QPushButton*> buttonsOf(const SelectionBar& bar)
{
    const auto buttons = bar.findChildren<QPushButton*>();
    return {buttons.begin(), buttons.end()};
}

TEST(SelectionBar, GroupsDigitsAndOffersToDeleteWhatIsChecked)
{
    SelectionBar bar;
    bar.setSelection(12'345, 3'000'000);
    EXPECT_EQ(textsOf(bar), QStringLiteral("12\u202f345 sélectionnés · 3 Mo"));
    EXPECT_TRUE(buttonsOf(bar).back()->isEnabled());
    bar.setSelection(0, 0);
    EXPECT_FALSE(buttonsOf(bar).back()->isEnabled());
}

TEST(SelectionBar, IsOneLineWithNothingCutInAnyWindow)
{
    SelectionBar bar;
    bar.show();
    QStringList words;
    for (const int width : {500, 644, 684, 900, 1700}) {
        bar.resize(width, bar.sizeHint().height());
        for (const std::int64_t count : {0, 1, 300'000}) {
            bar.setSelection(count, count * 1'000'000);
            bar.layout()->activate();
            EXPECT_EQ(bar.height(), Theme::selectionBarHeight) << width;
            for (const QWidget* const part : bar.findChildren<QWidget*>()) {
                const QString name = part->accessibleName();
                EXPECT_GE(part->width(), part->isVisible() ? part->sizeHint().width() : 0) << width;
                EXPECT_TRUE(bar.rect().contains(part->geometry())) << width << name.toStdString();
            }
            words += buttonsOf(bar).front()->text();
        }
    }
    const QString all = QStringLiteral("Tout sélectionner");
    EXPECT_EQ(words.mid(0, 3), (QStringList{{}, {}, {}})) << "icons, whatever is checked";
    EXPECT_EQ(words.mid(12), (QStringList{all, all, all}));
}

TEST(ScanProgressBar, CutsThePercentageAndGroupsNoDigits)
{
    ScanProgressBar bar;
    bar.setProgress(0.999, 123'456, 123'580);
    EXPECT_EQ(textsOf(bar), QStringLiteral("Analyse en cours… 123456/123580 99 %"));
    bar.setProgress(1.25, 5, 4); // folders appear while they are counted
    EXPECT_EQ(textsOf(bar), QStringLiteral("Analyse en cours… 5/4 125 %"));
}

TEST(SelectionCheckbox, AsksForTheChangeOnceAndShowsTheSelectionWithoutAsking)
{
    const FileUrl url{"/tri/\xff"};
    SelectionCheckbox box{url};
    std::vector<std::pair<FileUrl, bool>> asked;
    QObject::connect(
        &box, &SelectionCheckbox::checkRequested, &box,
        [&asked](const FileUrl& which, bool isChecked) { asked.emplace_back(which, isChecked); });
    box.showSelection({url});
    EXPECT_TRUE(box.isChecked());
    EXPECT_THAT(asked, testing::IsEmpty());
    QTest::mouseClick(&box, Qt::LeftButton, {}, box.rect().center());
    QTest::keyClick(&box, Qt::Key_Space);
    EXPECT_THAT(asked, testing::ElementsAre(std::pair{url, false}, std::pair{url, true}));
}

} // namespace

} // namespace tallyroom
