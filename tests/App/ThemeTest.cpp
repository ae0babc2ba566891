#include "Theme/Theme.h"

#include "Theme/FileKindPresentation.h"
#include "Theme/SymbolIcon.h"

#include <QApplication>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gmock/gmock.h>
#include <set>

namespace tallyroom {

namespace {

constexpr double legible = 4.5;

/// The desktop's palette as a settings panel would change it under the running program.
void setDesktop(const QColor& window, const QColor& text, const QColor& highlight)
{
    QPalette desktop;
    desktop.setColor(QPalette::Window, window);
    desktop.setColor(QPalette::WindowText, text);
    desktop.setColor(QPalette::Highlight, highlight);
    QApplication::setPalette(desktop);
}

constexpr QColor blue{0x30, 0x8c, 0xc6};

void setDesktopLight(const QColor& highlight = blue)
{
    setDesktop(Qt::white, Qt::black, highlight);
}

void setDesktopDark()
{
    setDesktop(QColor{0x20, 0x20, 0x20}, Qt::white, blue);
}

class ThemeTest : public testing::Test {
protected:
    ThemeTest()
    {
        theme.apply();
        setDesktopLight();
    }

    ~ThemeTest() override { setDesktopLight(); }

    Theme& theme = Theme::shared();
};

TEST_F(ThemeTest, FollowsTheDesktopIntoTheDarkAndBackAndItsIconsToo)
{
    const QColor light = theme.colour(Theme::Colour::window);
    const QIcon icon = SymbolIcon::icon("stop.fill", Theme::Colour::text);
    const auto middle = [&icon] { return icon.pixmap(24).toImage().pixelColor(12, 12); };
    EXPECT_EQ(middle(), theme.colour(Theme::Colour::text));
    QSignalSpy changed{&theme, &Theme::changed};
    setDesktopDark();
    EXPECT_TRUE(theme.isDark());
    EXPECT_EQ(middle(), theme.colour(Theme::Colour::text)) << "of an icon given before";
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), theme.colour(Theme::Colour::window));
    setDesktopLight();
    EXPECT_FALSE(theme.isDark());
    EXPECT_EQ(theme.colour(Theme::Colour::window), light);
    EXPECT_EQ(changed.count(), 2);
}

TEST_F(ThemeTest, TakesAnAccentThatSomebodyChoseAndMakesItLegible)
{
    const QColor own = theme.colour(Theme::Colour::accent);
    setDesktopLight(QColor{0xff, 0xc8, 0x00}); // a yellow that nobody could read on white
    const QColor accent = theme.colour(Theme::Colour::accent);
    EXPECT_NE(accent, own);
    EXPECT_NEAR(accent.hue(), QColor(0xff, 0xc8, 0x00).hue(), 4);
    EXPECT_GE(Theme::contrast(accent, theme.colour(Theme::Colour::window)), legible);
    EXPECT_EQ(theme.tint(FileKind::folder), accent);
    setDesktopLight(QColor{0x80, 0x80, 0x80});
    EXPECT_EQ(theme.colour(Theme::Colour::accent), own) << "grey is no accent";
}

TEST_F(ThemeTest, LargeLettersMakeAllOfTheWindowLarger)
{
    for (const auto& [pixels, scale] :
         std::vector<std::pair<int, double>>{{9, 1}, {15, 1}, {19, 1.25}, {30, 2}, {200, 3}}) {
        QFont desktop;
        desktop.setPixelSize(pixels);
        EXPECT_EQ(Theme::scaleFor(desktop), scale) << pixels;
    }
}

TEST_F(ThemeTest, LabelsCanBeReadOnEveryGround)
{
    for (const bool isDark : {false, true}) {
        isDark ? setDesktopDark() : setDesktopLight();
        ASSERT_EQ(theme.isDark(), isDark);
        const QColor window = theme.colour(Theme::Colour::window);
        std::vector<QColor> grounds{theme.colour(Theme::Colour::accentFill)};
        for (const FileKind kind : FileKind::all) {
            const QColor fill = theme.barFill(theme.tint(kind));
            const QColor track = theme.wash(theme.tint(kind), Theme::trackOpacity);
            // One label lies on both parts of a bar.
            EXPECT_GE(Theme::contrast(Theme::readableOn(fill), track), legible) << kind.rawValue();
            grounds.insert(grounds.end(), {fill, track, theme.tint(kind)});
        }
        for (const QColor& ground : grounds) {
            EXPECT_GE(Theme::contrast(Theme::readableOn(ground), ground), legible)
                << ground.name().toStdString();
        }
        for (const auto role : {Theme::Colour::text, Theme::Colour::secondary, Theme::Colour::danger,
                                Theme::Colour::done, Theme::Colour::old}) {
            const QColor ink = theme.colour(role);
            const bool isSignal = role != Theme::Colour::text && role != Theme::Colour::secondary;
            const QColor badge = theme.wash(ink, Theme::trackOpacity);
            EXPECT_GE(Theme::contrast(ink, isSignal ? badge : window), legible) << ink.name().toStdString();
            EXPECT_GE(Theme::contrast(ink, window), legible) << ink.name().toStdString();
        }
    }
}

TEST_F(ThemeTest, EveryKindAndEveryButtonHasItsSymbolAtEveryScale)
{
    std::vector<std::string> names{"folder",      "magnifyingglass", "arrow.clockwise",
                                   "trash",       "checklist",       "checkmark.circle.fill",
                                   "lightbulb",   "chevron.left",    "square.and.arrow.up",
                                   "gearshape.2", "ladybug",         "cup.and.saucer",
                                   "tallyroom"};
    for (const FileKind kind : FileKind::all) {
        names.emplace_back(kind.symbolName());
    }
    for (const EntryForm form : {EntryForm::link, EntryForm::fifo, EntryForm::socket, EntryForm::device}) {
        names.push_back(symbolName(Entry{FileUrl{"/a.jpg"}, "a.jpg", 0, false, form}));
    }
    EXPECT_EQ(std::set(names.begin(), names.end()).size(), names.size()) << "no two look the same";
    for (const std::string& name : names) {
        for (const qreal scale : {1.0, 1.25, 2.0}) {
            const QPixmap symbol = SymbolIcon::pixmap(name, Qt::red, Theme::iconSize, scale);
            EXPECT_EQ(symbol.width(), qCeil(Theme::iconSize * scale)) << name;
            const QImage image = symbol.toImage();
            int inked = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    inked += image.pixelColor(x, y).alpha() > 128 ? 1 : 0;
                }
            }
            EXPECT_GT(inked, 10) << name << " is drawn";
        }
    }
}

TEST_F(ThemeTest, EnterPressesEveryButtonAsSpaceDoes)
{
    using enum Theme::Button;
    for (const Theme::Button look :
         {plain, icon, primary, prominent, danger, quiet, row, card, chip, first, last}) {
        QPushButton button;
        Theme::style(&button, look);
        const QSignalSpy clicks{&button, &QPushButton::clicked};
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
            QTest::keyClick(&button, key);
        }
        EXPECT_EQ(clicks.count(), 3) << static_cast<int>(look);
    }
}

} // namespace

} // namespace tallyroom
