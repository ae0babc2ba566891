#include "Tools/DiskUsage/Treemap/TreemapPainter.h"

#include "Text/FileUrlText.h"
#include "Text/UnreadText.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"

#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace tallyroom {

namespace {

// Device-independent pixels.
constexpr double cornerRadius = 4;
constexpr double checkedBorder = 3;
constexpr double labelMargin = 6;
constexpr double labelTop = 4;
constexpr double narrowestLabel = 40;
constexpr double narrowestElision = 48; // less of a name tells nothing
constexpr double roomForTheBody = 96;   // tiles below this width or height have small letters
constexpr double roomForTheBodyBelow = 48;
constexpr double headerBox = 14;
constexpr double hoverLine = 2;
constexpr QSizeF roomForTheBox{64, 64};

QRgb mixed(QRgb over, QRgb under, int amount)
{
    const auto channel = [amount](int top, int bottom) { return bottom + (top - bottom) * amount / 256; };
    return qRgb(channel(qRed(over), qRed(under)), channel(qGreen(over), qGreen(under)),
                channel(qBlue(over), qBlue(under)));
}

/// How much of each pixel of a corner's square lies inside the quarter circle, of 256, row by row.
std::vector<int> cornerOf(int radius)
{
    std::vector<int> inside;
    for (int y = 0; y < radius; ++y) {
        for (int x = 0; x < radius; ++x) {
            const double distance = std::hypot(radius - x - 0.5, radius - y - 0.5);
            inside.push_back(static_cast<int>(std::clamp(radius - distance + 0.5, 0.0, 1.0) * 256));
        }
    }
    return inside;
}

/// How much of `text` goes on a first line: up to the last joint that file names have; nothing without one.
qsizetype firstLine(const QString& text, const QFont& font, double width)
{
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAnywhere);
    QTextLayout layout{text, font};
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setLineWidth(width);
    layout.endLayout();
    const qsizetype fitting = line.textLength();
    for (qsizetype end = fitting; end > fitting / 3; --end) {
        const bool isAfterJoint = QStringLiteral(" -_").contains(text[end - 1]);
        if (isAfterJoint || (end < text.size() && text[end] == u'.')) {
            return end;
        }
    }
    return 0;
}

/// Up to `most` lines of `text`, two at the highest, the last one elided in its middle, where the extension
/// survives; none where too little would be left of it.
QStringList lines(const QString& text, const QFont& font, const QFontMetricsF& metrics, double width,
                  int most)
{
    if (metrics.horizontalAdvance(text) <= width) {
        return {text};
    }
    const qsizetype taken = most > 1 ? firstLine(text, font, width) : 0;
    const QString first = text.left(taken).trimmed();
    QString rest = text.mid(taken).trimmed();
    if (metrics.horizontalAdvance(rest) > width) {
        if (width < narrowestElision) {
            return {};
        }
        rest = metrics.elidedText(rest, Qt::ElideMiddle, width);
    }
    return first.isEmpty() ? QStringList{rest} : QStringList{first, rest};
}

QFont semibold(QFont font)
{
    font.setWeight(QFont::DemiBold);
    return font;
}

} // namespace

TreemapPainter::TreemapPainter(double scale)
    : m_scale(scale), m_body(Theme::shared().strong(), Theme::shared().body()),
      m_small(semibold(Theme::shared().small()), Theme::shared().small())
{
    for (int radius = 0; radius <= pixels(cornerRadius); ++radius) {
        m_corners.push_back(cornerOf(radius));
    }
}

int TreemapPainter::pixels(double length) const
{
    return static_cast<int>(std::lround(length * m_scale));
}

QRectF TreemapPainter::toPoints(const QRect& rect) const
{
    return {rect.x() / m_scale, rect.y() / m_scale, rect.width() / m_scale, rect.height() / m_scale};
}

std::optional<QRectF> TreemapPainter::checkBox(const TreemapScene& scene, std::size_t tile) const
{
    if (const QRect header = scene.header(tile); !header.isEmpty()) {
        const QRectF strip = toPoints(header);
        return QRectF{strip.right() - labelMargin / 2 - headerBox,
                      strip.y() + (strip.height() - headerBox) / 2, headerBox, headerBox};
    }
    // Below the name and the size, and with room to hit the tile beside it.
    const QRectF rect = toPoints(scene.painted(tile));
    if (scene.isOpen(tile) || rect.width() < roomForTheBox.width() ||
        rect.height() < roomForTheBox.height()) {
        return std::nullopt;
    }
    constexpr double side = Theme::iconSize;
    return QRectF{rect.right() - labelMargin - side, rect.bottom() - labelMargin - side, side, side};
}

QImage TreemapPainter::paint(const TreemapScene& scene, const QSize& pixels, const LookOf& lookOf) const
{
    QImage image{pixels, QImage::Format_RGB32};
    image.fill(m_palette.background());
    const QRect window{QPoint{}, pixels};
    std::vector<std::pair<std::size_t, Look>> labelled;
    for (std::size_t tile = 0; tile < scene.tiles().size(); ++tile) {
        const QRect rect = scene.painted(tile) & window;
        if (rect.isEmpty()) {
            continue;
        }
        const Look look = lookOf(tile);
        fillTile(image, scene, tile, look);
        if (scene.isOpen(tile) ? !(scene.header(tile) & window).isEmpty() : hasLabel(rect)) {
            labelled.emplace_back(tile, look);
        }
    }
    for (const TreemapScene::Rest& rest : scene.rests()) {
        for (const QRect& cell : rest.cells) {
            fill(image, cell, 0, m_palette.rest().fill, m_palette.background());
        }
    }
    image.setDevicePixelRatio(m_scale);
    QPainter painter{&image};
    for (const auto& [tile, look] : labelled) {
        // What is partly off the screen is named within the part that is on it.
        scene.isOpen(tile) ? paintHeader(painter, scene, tile, scene.header(tile) & window, look)
                           : paintLabel(painter, scene, tile, scene.painted(tile) & window, look);
    }
    return image;
}

const TreemapPalette::Shade& TreemapPainter::shadeOf(const TreemapScene& scene, std::size_t tile,
                                                     Look look) const
{
    const TreemapScene::Tile& wanted = scene.tiles()[tile];
    if (scene.isOpen(tile)) {
        return m_palette.open(wanted.level);
    }
    return wanted.kind == FileKind::folder ? m_palette.closed(wanted.level)
                                           : m_palette.file(wanted.kind, look.dimmed);
}

void TreemapPainter::fillTile(QImage& image, const TreemapScene& scene, std::size_t tile, Look look) const
{
    const TreemapPalette::Shade& shade = shadeOf(scene, tile, look);
    const std::uint32_t parent = scene.tiles()[tile].parent;
    const QRgb behind = parent == TreemapScene::none ? m_palette.background()
                                                     : m_palette.open(scene.tiles()[parent].level).fill;
    const QRect rect = scene.painted(tile);
    const int side = std::min(rect.width(), rect.height());
    const int radius = std::min(pixels(cornerRadius), side / 6);
    const bool hasEdge = scene.isOpen(tile) && !scene.header(tile).isEmpty();
    const int marked = look.checked ? pixels(checkedBorder) : pixels(1);
    const int border =
        look.checked || look.covered || hasEdge ? std::clamp(marked, 1, std::max(side / 4, 1)) : 0;
    if (border == 0) {
        fill(image, rect, radius, shade.fill, behind);
        return;
    }
    const QRgb edge = look.checked || look.covered ? m_palette.checked() : shade.edge;
    fill(image, rect, radius, edge, behind);
    fill(image, rect.adjusted(border, border, -border, -border), std::max(radius - border, 0), shade.fill,
         edge);
}

void TreemapPainter::fill(QImage& image, const QRect& rect, int radius, QRgb colour, QRgb behind) const
{
    const QRect drawn = rect & QRect{QPoint{}, image.size()};
    if (drawn.isEmpty()) {
        return;
    }
    for (int y = drawn.top(); y <= drawn.bottom(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y)); // NOLINT: how the toolkit gives pixels
        std::fill_n(line + drawn.left(), drawn.width(), colour);
    }
    const std::vector<int>& corner = m_corners.at(static_cast<std::size_t>(drawn == rect ? radius : 0));
    for (std::size_t place = 0; place < corner.size(); ++place) {
        const int x = static_cast<int>(place) % radius;
        const int y = static_cast<int>(place) / radius;
        const QRgb pixel = mixed(colour, behind, corner[place]);
        for (const int row : {rect.top() + y, rect.bottom() - y}) {
            auto* const line = reinterpret_cast<QRgb*>(image.scanLine(row)); // NOLINT
            line[rect.left() + x] = pixel;
            line[rect.right() - x] = pixel;
        }
    }
}

const TreemapPainter::Letters& TreemapPainter::lettersFor(const QSizeF& tile) const
{
    return tile.width() >= roomForTheBody && tile.height() >= roomForTheBodyBelow ? m_body : m_small;
}

bool TreemapPainter::hasLabel(const QRect& rect) const
{
    return rect.width() / m_scale >= narrowestLabel + 2 * labelMargin &&
           rect.height() / m_scale >= m_small.nameMetrics.height() + 2 * labelTop;
}

void TreemapPainter::paintLabel(QPainter& painter, const TreemapScene& scene, std::size_t tile,
                                const QRect& rect, Look look) const
{
    const QRectF room = toPoints(rect).adjusted(labelMargin, labelTop, -labelMargin, -labelTop);
    const Letters& letters = lettersFor(toPoints(rect).size());
    const double lineHeight = letters.nameMetrics.height();
    const auto fitting = static_cast<qsizetype>(room.height() / lineHeight);
    // No line ends between the mark and the name.
    const QString mark = look.checked ? QStringLiteral("✓\u00a0") : QString{};
    const Entry& entry = scene.entry(tile);
    const QStringList names = lines(mark + FileUrlText::display(entry.name), letters.name,
                                    letters.nameMetrics, room.width(), fitting > 2 ? 2 : 1);
    const TreemapPalette::Shade& shade = shadeOf(scene, tile, look);
    painter.setPen(shade.label);
    painter.setFont(letters.name);
    double baseline = room.y() + letters.nameMetrics.ascent();
    for (const QString& line : names) {
        painter.drawText(QPointF{room.x(), baseline}, line);
        baseline += lineHeight;
    }
    if (const auto box = checkBox(scene, tile); box && look.checked) {
        paintCheckBox(painter, *box, shade, true);
    }
    if (names.isEmpty() || names.size() >= fitting) {
        return;
    }
    const QString size = UnreadText::size(entry);
    if (letters.sizeMetrics.horizontalAdvance(size) <= room.width()) {
        painter.setPen(shade.quietLabel);
        painter.setFont(letters.size);
        painter.drawText(QPointF{room.x(), baseline}, size);
    }
}

/// One line: the name, then the size at the right where both have room.
void TreemapPainter::paintHeader(QPainter& painter, const TreemapScene& scene, std::size_t tile,
                                 const QRect& rect, Look look) const
{
    QRectF room = toPoints(rect).adjusted(labelMargin, 0, -labelMargin, 0);
    const Entry& entry = scene.entry(tile);
    const TreemapPalette::Shade& shade = shadeOf(scene, tile, look);
    const double baseline =
        room.y() + (room.height() + m_small.nameMetrics.ascent() - m_small.nameMetrics.descent()) / 2;
    double right = room.right();
    if (const auto box = checkBox(scene, tile)) {
        right = box->left() - labelMargin; // the pointer brings the box
        if (look.checked) {
            paintCheckBox(painter, *box, shade, true);
            room.setRight(right);
        }
    }
    const QString name = FileUrlText::display(entry.name);
    const double nameWidth = m_small.nameMetrics.horizontalAdvance(name);
    const QString size = UnreadText::size(entry);
    const double sizeWidth = m_small.sizeMetrics.horizontalAdvance(size);
    painter.setPen(shade.label);
    painter.setFont(m_small.name);
    if (nameWidth <= room.width()) {
        painter.drawText(QPointF{room.x(), baseline}, name);
    } else if (room.width() > 0) {
        painter.drawText(QPointF{room.x(), baseline},
                         m_small.nameMetrics.elidedText(name, Qt::ElideMiddle, room.width()));
    }
    if (room.x() + nameWidth + 2 * labelMargin + sizeWidth <= right) {
        painter.setPen(shade.quietLabel);
        painter.setFont(m_small.size);
        painter.drawText(QPointF{right - sizeWidth, baseline}, size);
    }
}

void TreemapPainter::paintCheckBox(QPainter& painter, const QRectF& box, const TreemapPalette::Shade& shade,
                                   bool isChecked) const
{
    const QColor ground = QColor::fromRgb(shade.fill);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(isChecked ? shade.label : ground);
    painter.setPen(QPen{shade.label, 1.5});
    painter.drawRoundedRect(box.adjusted(1, 1, -1, -1), cornerRadius, cornerRadius);
    if (isChecked) {
        SymbolIcon::paint(painter, box.toAlignedRect(), "checkmark", ground,
                          std::min(int{Theme::smallIconSize}, static_cast<int>(box.width()) - 2));
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
}

void TreemapPainter::paintHover(QPainter& painter, const TreemapScene& scene, std::size_t tile,
                                Look look) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    constexpr double half = hoverLine / 2;
    for (std::uint32_t around = static_cast<std::uint32_t>(tile); around != TreemapScene::none;
         around = scene.tiles()[around].parent) {
        painter.setBrush(Qt::NoBrush);
        const bool isItself = around == tile;
        painter.setPen(QPen{QColor::fromRgb(m_palette.checked()), isItself ? hoverLine : half});
        const double inset = isItself ? half : half / 2;
        const QRectF frame = toPoints(scene.painted(around)).adjusted(inset, inset, -inset, -inset);
        const double radius = std::min({cornerRadius, frame.width() / 4, frame.height() / 4});
        painter.drawRoundedRect(frame, radius, radius);
    }
    if (const auto box = checkBox(scene, tile); box && !look.checked && !look.covered) {
        paintCheckBox(painter, *box, shadeOf(scene, tile, look), false);
    }
}

QRegion TreemapPainter::hoverRegion(const TreemapScene& scene, std::size_t tile) const
{
    QRegion region;
    for (std::uint32_t around = static_cast<std::uint32_t>(tile); around != TreemapScene::none;
         around = scene.tiles()[around].parent) {
        constexpr int line = 3;
        const QRect frame = toPoints(scene.painted(around)).toAlignedRect();
        region |= QRegion{frame.adjusted(-1, -1, 1, 1)} - frame.adjusted(line, line, -line, -line);
    }
    if (const auto box = checkBox(scene, tile)) {
        region |= box->toAlignedRect().adjusted(-1, -1, 1, 1);
    }
    return region;
}

void TreemapPainter::paintRing(QPainter& painter, const QRectF& tile) const
{
    // Two lines, the accent over the gap and the window's colour within: one of them stands out from any
    // tile.
    constexpr double half = ringWidth / 2.0;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen{Theme::shared().colour(Theme::Colour::accent), ringWidth});
    painter.drawRoundedRect(tile.adjusted(-half, -half, half, half), cornerRadius, cornerRadius);
    painter.setPen(QPen{QColor::fromRgb(m_palette.background()), ringWidth});
    painter.drawRoundedRect(tile.adjusted(half, half, -half, -half), cornerRadius, cornerRadius);
}

void TreemapPainter::paintMessage(QPainter& painter, const QRect& area, const QString& message) const
{
    constexpr int flags = Qt::AlignCenter | Qt::TextWordWrap;
    constexpr int margin = Theme::gap;
    painter.setFont(m_body.size);
    const QRect inside = area.adjusted(2 * margin, margin, -2 * margin, -margin);
    const QRect text = painter.boundingRect(inside, flags, message);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgb(m_palette.background()));
    painter.drawRoundedRect(text.adjusted(-2 * margin, -margin, 2 * margin, margin), Theme::controlRadius,
                            Theme::controlRadius);
    painter.setPen(Theme::shared().colour(Theme::Colour::secondary));
    painter.drawText(inside, flags, message);
}

} // namespace tallyroom
