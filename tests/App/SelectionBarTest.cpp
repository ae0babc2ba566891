#include "Controls/SelectionBar.h"

#include "Controls/ScanProgressBar.h"
#include "Controls/SelectionCheckbox.h"

#include <QLabel>
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

TEST(SelectionBar, NothingIsClippedInANarrowWindow)
{
    SelectionBar bar;
    bar.setSelection(300'000, 9'223'372'036'854'775'807);
    bar.resize(480, bar.sizeHint().height());
    bar.show();
    bar.resize(480, bar.sizeHint().height());
    for (const QPushButton* const button : buttonsOf(bar)) {
        EXPECT_GE(button->width(), button->sizeHint().width()) << button->text().toStdString();
        EXPECT_TRUE(bar.rect().contains(button->geometry())) << button->text().toStdString();
    }
    for (const QLabel* const label : bar.findChildren<QLabel*>()) {
        EXPECT_GE(label->width(), label->sizeHint().width()) << label->text().toStdString();
    }
}

TEST(SelectionBar, TheFirstCheckKeepsItsHeight)
{
    SelectionBar bar;
    bar.show();
    for (int width = 500; width < 900; width += 10) {
        bar.setSelection(0, 0);
        bar.resize(width, 0);
        const int height = bar.sizeHint().height();
        bar.setSelection(1, 1500);
        EXPECT_EQ(bar.sizeHint().height(), height) << width;
    }
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
