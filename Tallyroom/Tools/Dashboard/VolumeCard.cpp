#include "Tools/Dashboard/VolumeCard.h"

#include "Controls/Capsule.h"
#include "Text/FileUrlText.h"
#include "Text/VolumeText.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <optional>

namespace tallyroom {

namespace {

const QString mainLabel = QStringLiteral("Volume principal");
const QString emptyLabel = QStringLiteral("Vider la corbeille…");
const QString shortEmptyLabel = QStringLiteral("Vider…");

/// Writes words one after the other on one line, each in its own ink, and cuts short what has no room.
class LineOfText {
public:
    LineOfText(QPainter& painter, const QRect& line) : m_painter(painter), m_room(line) {}

    void write(const QString& text, const QFont& font, Theme::Colour ink,
               Qt::TextElideMode elision = Qt::ElideRight)
    {
        m_painter.setFont(font);
        m_painter.setPen(Theme::shared().colour(ink));
        const QFontMetrics metrics{font};
        // The first words, which are never the smaller ones, give all of them their baseline.
        m_baseline = m_baseline.value_or(m_room.bottom() - metrics.descent());
        // Elision rounds up: a text as wide as its room would lose a letter.
        const bool fits = metrics.horizontalAdvance(text) <= m_room.width();
        const QString fitting = fits ? text : metrics.elidedText(text, elision, m_room.width());
        m_painter.drawText(m_room.left(), *m_baseline, fitting);
        m_room.setLeft(m_room.left() + metrics.horizontalAdvance(fitting));
    }

private:
    QPainter& m_painter;
    QRect m_room;
    std::optional<int> m_baseline;
};

int widthOf(const QString& text, const QFont& font)
{
    return QFontMetrics{font}.horizontalAdvance(text);
}

int heightOf(const QFont& font)
{
    return QFontMetrics{font}.height();
}

} // namespace

VolumeCard::VolumeCard(QWidget* parent) : QPushButton(parent), m_empty(new QPushButton(this))
{
    Theme::style(m_empty, Theme::Button::plain);
    m_empty->setToolTip(emptyLabel);
    m_empty->setAccessibleName(emptyLabel);
    m_empty->hide();
    connect(m_empty, &QPushButton::clicked, this, &VolumeCard::emptyRequested);
    connect(&Theme::shared(), &Theme::changed, this, &VolumeCard::placeButton);
    Theme::style(this, Theme::Button::card);
    setCursor(Qt::PointingHandCursor);
    m_empty->setCursor(Qt::ArrowCursor);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void VolumeCard::setUsage(const VolumeUsage& usage, bool isMain)
{
    m_usage = usage;
    m_isMain = isMain;
    setAccessibleName(VolumeText::name(usage));
    describe();
    setToolTip(VolumeText::toolTip(usage));
    update();
}

void VolumeCard::setTrash(const QString& size)
{
    m_trash = size.isEmpty() ? QString{} : QStringLiteral("Corbeille : ") + size;
    if (m_trash.isEmpty() && m_empty->hasFocus()) {
        setFocus(); // the toolkit would choose any part of the window
    }
    m_empty->setVisible(!m_trash.isEmpty());
    m_empty->setAccessibleDescription(FileUrlText::display(m_usage.name) + QStringLiteral(", ") + m_trash);
    describe();
    placeButton();
    update();
}

void VolumeCard::describe()
{
    const QString trash = m_trash.isEmpty() ? QString{} : m_trash + QStringLiteral(". ");
    setAccessibleDescription(trash + VolumeText::description(m_usage, m_isMain));
}

/// The button at the end of the last line, as long as there is room for it beside the words.
void VolumeCard::placeButton()
{
    m_empty->setText(emptyLabel);
    const QRect room = content();
    if (m_empty->sizeHint().width() + Theme::gap + widthOf(m_trash, Theme::shared().body()) > room.width()) {
        m_empty->setText(shortEmptyLabel);
    }
    const QSize size = m_empty->sizeHint();
    m_empty->setGeometry(room.right() + 1 - size.width(), room.bottom() + 1 - size.height(), size.width(),
                         size.height());
}

int VolumeCard::cardHeight()
{
    const Theme& theme = Theme::shared();
    const int mainLines = heightOf(theme.strong()) + Theme::gap + heightOf(theme.heading());
    const int otherLines =
        heightOf(theme.strong()) + heightOf(theme.small()) + Theme::gap + heightOf(theme.title());
    return 2 * Theme::cardPadding + std::max(mainLines, otherLines) + Theme::gap + Theme::volumeBarHeight +
           Theme::gap + heightOf(theme.body());
}

int VolumeCard::trashHeight()
{
    return Theme::gap + Theme::controlHeight;
}

QRect VolumeCard::content() const
{
    return rect().adjusted(Theme::cardPadding, Theme::cardPadding, -Theme::cardPadding, -Theme::cardPadding);
}

QSize VolumeCard::sizeHint() const
{
    return minimumSizeHint();
}

QSize VolumeCard::minimumSizeHint() const
{
    return {Theme::cardMinimumWidth, cardHeight()};
}

void VolumeCard::paintEvent(QPaintEvent* event)
{
    QPushButton::paintEvent(event);
    const Theme& theme = Theme::shared();
    QPainter painter{this};
    QRect room = content();
    // It can be entered.
    SymbolIcon::paint(
        painter,
        {room.right() + 1 - Theme::smallIconSize, room.top(), Theme::smallIconSize, heightOf(theme.strong())},
        "chevron.right", theme.colour(Theme::Colour::secondary), Theme::smallIconSize);
    paintNames(painter, room.adjusted(0, 0, -Theme::smallIconSize - Theme::gap, 0));
    if (height() > cardHeight()) { // this one, or one beside it, has something in its trash
        paintTrash(painter);
        room.adjust(0, 0, 0, -trashHeight());
    }
    // From the bottom up, so that the bars of all cards of a row are on one level.
    const int footnote = heightOf(theme.body());
    paintFootnote(painter, room.adjusted(0, room.height() - footnote, 0, 0));
    room.adjust(0, 0, 0, -footnote - Theme::gap);
    const auto ink = VolumeText::isNearlyFull(m_usage) ? Theme::Colour::danger : Theme::Colour::accent;
    paintCapsule(painter, room.adjusted(0, room.height() - Theme::volumeBarHeight, 0, 0),
                 m_usage.usedFraction(), theme.colour(Theme::Colour::line), theme.colour(ink));
    paintFigures(painter, room.adjusted(0, 0, 0, -Theme::volumeBarHeight - Theme::gap));
}

void VolumeCard::resizeEvent(QResizeEvent* event)
{
    QPushButton::resizeEvent(event);
    placeButton();
}

void VolumeCard::paintTrash(QPainter& painter) const
{
    const Theme& theme = Theme::shared();
    const QRect room = content();
    const QRect button = m_empty->geometry();
    const QRect line{room.left(), button.top(), button.left() - Theme::gap - room.left(), button.height()};
    const bool fits = widthOf(m_trash, theme.body()) <= line.width();
    const QFont font = fits ? theme.body() : theme.small();
    const int height = heightOf(font);
    LineOfText{painter, {line.left(), line.center().y() - height / 2, line.width(), height}}.write(
        m_trash, font, Theme::Colour::secondary);
}

void VolumeCard::paintNames(QPainter& painter, const QRect& room) const
{
    const Theme& theme = Theme::shared();
    const auto ink = m_isMain ? Theme::Colour::accent : Theme::Colour::secondary;
    QRect line{room.left(), room.top(), room.width(), heightOf(theme.strong())};
    SymbolIcon::paint(painter, {line.left(), line.top(), Theme::iconSize, line.height()},
                      m_usage.isInternal ? "internaldrive" : "externaldrive", theme.colour(ink));
    line.adjust(Theme::iconSize + Theme::gap, 0, 0, 0);
    const QString name = FileUrlText::display(m_usage.name);
    const QString place = FileUrlText::display(m_usage.url);
    if (!m_isMain) {
        LineOfText{painter, line}.write(name, theme.strong(), Theme::Colour::text, Qt::ElideMiddle);
        line.translate(0, line.height());
        line.setHeight(heightOf(theme.small()));
        LineOfText{painter, line}.write(place, theme.small(), Theme::Colour::secondary, Qt::ElideMiddle);
        return;
    }
    const int labelWidth = widthOf(mainLabel, theme.body());
    LineOfText label{painter, line.adjusted(std::max(line.width() - labelWidth, 0), 0, 0, 0)};
    label.write(mainLabel, theme.body(), Theme::Colour::secondary);
    LineOfText names{painter, line.adjusted(0, 0, -labelWidth - Theme::gap, 0)};
    names.write(name + QStringLiteral("  "), theme.strong(), Theme::Colour::text, Qt::ElideMiddle);
    names.write(place, theme.body(), Theme::Colour::secondary, Qt::ElideMiddle);
}

void VolumeCard::paintFigures(QPainter& painter, const QRect& line) const
{
    const Theme& theme = Theme::shared();
    const QString used = VolumeText::size(m_usage.usedBytes());
    const QString total = QStringLiteral(" sur ") + VolumeText::size(m_usage.totalBytes);
    const QString words = QStringLiteral(" utilisés") + total;
    const QFont figure = m_isMain ? theme.heading() : theme.title();
    const bool fits = widthOf(used, figure) + widthOf(words, theme.body()) <= line.width();
    LineOfText text{painter, line};
    text.write(used, figure, Theme::Colour::text);
    text.write(m_isMain && fits ? words : total, theme.body(), Theme::Colour::secondary);
}

void VolumeCard::paintFootnote(QPainter& painter, const QRect& line) const
{
    const Theme& theme = Theme::shared();
    const bool isNearlyFull = VolumeText::isNearlyFull(m_usage);
    const QString available = VolumeText::size(m_usage.availableBytes);
    const QString fill = VolumeText::fill(m_usage);
    const QString separator = QStringLiteral(" · ");

    struct Wording {
        QString words;
        QFont font;
    };

    // The fullest that has room; the accessible name says it all anyway.
    const std::array wordings{Wording{available + QStringLiteral(" disponibles") + separator, theme.body()},
                              Wording{available + QStringLiteral(" libres") + separator, theme.body()},
                              Wording{available + QStringLiteral(" libres") + separator, theme.small()}};
    const auto* const fitting = std::ranges::find_if(wordings, [&](const Wording& wording) {
        return widthOf(wording.words + fill, wording.font) <= line.width();
    });
    const Wording& wording = fitting == wordings.end() ? wordings.back() : *fitting;
    LineOfText text{painter, line};
    text.write(wording.words, wording.font, Theme::Colour::secondary);
    text.write(fill, wording.font, isNearlyFull ? Theme::Colour::danger : Theme::Colour::secondary);
}

} // namespace tallyroom
