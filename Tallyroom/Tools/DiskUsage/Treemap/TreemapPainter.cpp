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
constexpr double cornerRadius = 5;
constexpr double checkedBorder = 3;
constexpr double labelMargin = Theme::gap;
constexpr double labelTop = 6;
constexpr double narrowestLabel = 40;
constexpr double narrowestElision = 48; // less of a name tells nothing
constexpr double roomForTheBody = 96;   // tiles below this width or height have small letters
constexpr double roomForTheBodyBelow = 48;
constexpr double crumbStripe = 3;
constexpr QSizeF roomForTheBox{64, 64};

// Tints are made for icons on the window. As large areas, and under white letters, they stand deeper, in
// percent; where even the deepest is too bright for white, the letters are black.
constexpr int deeper = 116;
constexpr int deepest = 160;
constexpr int step = 4;
constexpr double unknownStrength = 0.5;
constexpr double unknownStrengthInTheDark = 0.34;
constexpr double hoverStrength = 0.14;

QRgb mixed(QRgb over, QRgb under, int amount)
{
    const auto channel = [amount](int top, int bottom) { return bottom + (top - bottom) * amount / 256; };
    return qRgb(channel(qRed(over), qRed(under)), channel(qGreen(over), qGreen(under)),
                channel(qBlue(over), qBlue(under)));
}

QColor shadeOf(FileKind kind)
{
    const Theme& theme = Theme::shared();
    const QColor tint = theme.tint(kind);
    if (kind == FileKind::other) {
        // Recedes into the window: a deep grey is a document's.
        return theme.wash(tint, theme.isDark() ? unknownStrengthInTheDark : unknownStrength);
    }
    const auto isUnderWhite = [](const QColor& fill) { return Theme::readableOn(fill).lightnessF() > 0.5F; };
    if (theme.isDark()) {
        return theme.barFill(tint);
    }
    for (int factor = deeper; factor <= deepest; factor += step) {
        if (const QColor fill = tint.darker(factor); isUnderWhite(fill)) {
            return fill;
        }
    }
    return tint.darker(deeper);
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
    const Theme& theme = Theme::shared();
    m_background = theme.colour(Theme::Colour::window).rgb();
    m_border = theme.colour(Theme::Colour::text).rgb();
    m_crumbs = {theme.wash(theme.colour(Theme::Colour::secondary), 0.30).rgb(),
                theme.wash(theme.colour(Theme::Colour::secondary), 0.42).rgb()};
    for (const FileKind kind : FileKind::all) {
        const QColor fill = shadeOf(kind);
        const QColor label = Theme::readableOn(fill);
        // Away from the label's colour, so that it reads better under the pointer and never worse.
        const QRgb away = label.lightness() > fill.lightness() ? qRgb(0, 0, 0) : qRgb(255, 255, 255);
        m_shades.at(kind.index()) = {fill.rgb(),
                                     mixed(away, fill.rgb(), static_cast<int>(hoverStrength * 256)), label};
    }
    for (int radius = 0; radius <= pixels(cornerRadius); ++radius) {
        m_corners.push_back(cornerOf(radius));
    }
}

std::optional<QRectF> TreemapPainter::checkBox(const QRectF& tile)
{
    // Below the name and the size, and with room to hit the tile beside it.
    if (tile.width() < roomForTheBox.width() || tile.height() < roomForTheBox.height()) {
        return std::nullopt;
    }
    constexpr double side = Theme::iconSize;
    return QRectF{tile.right() - labelMargin - side, tile.bottom() - labelMargin - side, side, side};
}

int TreemapPainter::pixels(double length) const
{
    return static_cast<int>(std::lround(length * m_scale));
}

QImage TreemapPainter::paint(const TreemapScene& scene, const QSize& pixels,
                             const std::function<bool(std::size_t tile)>& isChecked) const
{
    QImage image{pixels, QImage::Format_RGB32};
    image.fill(m_background);
    for (const QRect& cell : scene.crumbs().cells) {
        fillCrumbs(image, cell);
    }
    std::vector<std::pair<std::size_t, Look>> labelled;
    for (std::size_t tile = 0; tile < scene.tiles().size(); ++tile) {
        const Look look{isChecked(tile), false};
        const QRect rect = scene.painted(tile);
        fillTile(image, rect, scene.tiles()[tile].kind, look);
        if (hasLabel(rect)) {
            labelled.emplace_back(tile, look);
        }
    }
    image.setDevicePixelRatio(m_scale);
    QPainter painter{&image};
    for (const auto& [tile, look] : labelled) {
        paintLabel(painter, scene.painted(tile), scene.entry(tile), scene.tiles()[tile].kind, look);
    }
    return image;
}

void TreemapPainter::repaintTile(QImage& image, const TreemapScene& scene, std::size_t tile, Look look) const
{
    const QRect rect = scene.painted(tile);
    fillTile(image, rect, scene.tiles()[tile].kind, look);
    if (hasLabel(rect)) {
        QPainter painter{&image};
        paintLabel(painter, rect, scene.entry(tile), scene.tiles()[tile].kind, look);
    }
}

void TreemapPainter::fillTile(QImage& image, const QRect& rect, FileKind kind, Look look) const
{
    const Shade& shade = m_shades.at(kind.index());
    const QRgb colour = look.hovered ? shade.hovered : shade.fill;
    const int side = std::min(rect.width(), rect.height());
    const int radius = std::min(pixels(cornerRadius), side / 4);
    if (!look.checked) {
        fill(image, rect, radius, colour, m_background);
        return;
    }
    const int border = std::clamp(side / 4, 1, pixels(checkedBorder));
    fill(image, rect, radius, m_border, m_background);
    fill(image, rect.adjusted(border, border, -border, -border), std::max(radius - border, 0), colour,
         m_border);
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

void TreemapPainter::fillCrumbs(QImage& image, const QRect& rect) const
{
    // Diagonal stripes that run on from cell to cell, as if all were one.
    const int stripe = pixels(crumbStripe);
    const QRect drawn = rect & QRect{QPoint{}, image.size()};
    for (int y = drawn.top(); y <= drawn.bottom(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y)); // NOLINT
        for (int x = drawn.left(); x <= drawn.right(); ++x) {
            line[x] = m_crumbs.at(static_cast<std::size_t>((x + y) / stripe % 2));
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

void TreemapPainter::paintLabel(QPainter& painter, const QRect& rect, const Entry& entry, FileKind kind,
                                Look look) const
{
    const QRectF tile{rect.x() / m_scale, rect.y() / m_scale, rect.width() / m_scale,
                      rect.height() / m_scale};
    const Letters& letters = lettersFor(tile.size());
    const QRectF room = tile.adjusted(labelMargin, labelTop, -labelMargin, -labelTop);
    const double lineHeight = letters.nameMetrics.height();
    const auto fitting = static_cast<qsizetype>(room.height() / lineHeight);
    // No line ends between the mark and the name.
    const QString mark = look.checked ? QStringLiteral("✓\u00a0") : QString{};
    const QStringList names = lines(mark + FileUrlText::display(entry.name), letters.name,
                                    letters.nameMetrics, room.width(), fitting > 2 ? 2 : 1);

    painter.setPen(m_shades.at(kind.index()).label);
    painter.setFont(letters.name);
    double baseline = room.y() + letters.nameMetrics.ascent();
    for (const QString& line : names) {
        painter.drawText(QPointF{room.x(), baseline}, line);
        baseline += lineHeight;
    }
    if (const auto box = checkBox(tile); box && (look.checked || look.hovered)) {
        paintCheckBox(painter, *box, kind, look.checked);
    }
    const QString size = UnreadText::size(entry);
    if (!names.empty() && names.size() < fitting &&
        letters.sizeMetrics.horizontalAdvance(size) <= room.width()) {
        painter.setFont(letters.size);
        painter.drawText(QPointF{room.x(), baseline}, size);
    }
}

void TreemapPainter::paintCheckBox(QPainter& painter, const QRectF& box, FileKind kind, bool isChecked) const
{
    const QColor ink = m_shades.at(kind.index()).label;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(isChecked ? QBrush{ink} : QBrush{Qt::NoBrush});
    painter.setPen(QPen{ink, 1.5});
    painter.drawRoundedRect(box.adjusted(1, 1, -1, -1), cornerRadius, cornerRadius);
    if (isChecked) {
        SymbolIcon::paint(painter, box.toAlignedRect(), "checkmark",
                          QColor::fromRgb(m_shades.at(kind.index()).fill), Theme::smallIconSize);
    }
    painter.setPen(ink);
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
    painter.setPen(QPen{QColor::fromRgb(m_background), ringWidth});
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
    painter.setBrush(QColor::fromRgb(m_background));
    painter.drawRoundedRect(text.adjusted(-2 * margin, -margin, 2 * margin, margin), Theme::controlRadius,
                            Theme::controlRadius);
    painter.setPen(Theme::shared().colour(Theme::Colour::secondary));
    painter.drawText(inside, flags, message);
}

} // namespace tallyroom
