#include "Tools/DiskUsage/Treemap/TreemapCanvas.h"

#include "Text/TreemapText.h"
#include "Theme/Theme.h"
#include "Tools/DiskUsage/Treemap/TreemapAccessible.h"

#include <QPainter>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace tallyroom {

namespace {

using namespace std::chrono_literals;

/// Tiles that move more often than this cannot be followed by the eye, nor hit.
constexpr auto calm = 100ms;

} // namespace

TreemapCanvas::TreemapCanvas(const Selection& selection, QWidget* parent)
    : QWidget(parent), m_selection(selection), m_growth(*this)
{
    TreemapAccessible::install();
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(QStringLiteral("Carte des tailles"));

    m_burst.setSingleShot(true);
    m_burst.setInterval(calm);
    connect(&m_burst, &QTimer::timeout, this, [this] {
        if (m_isStale && isVisible()) {
            layOut();
            m_burst.start();
        }
    });
    connect(&m_selection, &Selection::changed, this, &TreemapCanvas::showChecks);
    connect(&Theme::shared(), &Theme::changed, this, [this] {
        m_painter.reset();
        paintAgain();
    });
}

void TreemapCanvas::setEntries(EntryList entries, std::vector<std::uint32_t> visible)
{
    if (entries.isSameSnapshot(m_content.entries) && visible == m_content.visible) {
        return;
    }
    m_content.entries = std::move(entries);
    m_content.visible = std::move(visible);
    // Another folder begins with an empty list: the old one must not be clicked meanwhile.
    showSoon(m_content.entries.empty());
}

void TreemapCanvas::setOutlines(std::vector<SharedOutline> outlines)
{
    if (outlines != m_content.outlines) {
        m_content.outlines = std::move(outlines);
        showSoon(false);
    }
}

void TreemapCanvas::showSoon(bool isUrgent)
{
    m_isStale = true;
    if (isVisible() && (isUrgent || !m_burst.isActive())) {
        layOut();
        m_burst.start();
    }
}

void TreemapCanvas::setDistinguished(const std::optional<FileKind>& kind)
{
    if (m_distinguished != kind) {
        m_distinguished = kind;
        paintAgain();
    }
}

bool TreemapCanvas::isChecked(std::size_t tile) const
{
    const TreemapScene::Tile& asked = m_scene.tiles()[tile];
    return asked.position == TreemapScene::none ? m_selection.containsDeeper(m_scene.entry(tile).url)
                                                : m_selection.contains(m_scene.entries(), asked.position);
}

bool TreemapCanvas::isCovered(std::size_t tile) const
{
    for (std::uint32_t above = m_scene.tiles()[tile].parent; above != TreemapScene::none;
         above = m_scene.tiles()[above].parent) {
        if (isChecked(above)) {
            return true;
        }
    }
    return false;
}

TreemapPainter::Look TreemapCanvas::lookOf(std::size_t tile) const
{
    return {isChecked(tile), isCovered(tile),
            m_distinguished.has_value() && m_scene.tiles()[tile].kind != *m_distinguished};
}

void TreemapCanvas::showChecks(std::optional<std::uint32_t> position)
{
    paintAgain();
    for (std::size_t tile = 0; position && tile < m_scene.topCount(); ++tile) {
        if (m_scene.tiles()[tile].position == *position) {
            TreemapAccessible::announceCheck(*this, tile);
        }
    }
}

std::optional<Entry> TreemapCanvas::currentEntry() const
{
    const auto tile = currentTile();
    return tile ? std::optional{m_scene.entry(*tile)} : std::nullopt;
}

void TreemapCanvas::setCurrentTile(std::size_t tile)
{
    announceCurrent(m_cursor.set(m_scene, tile));
}

void TreemapCanvas::setCurrentEntry(const FileUrl& url)
{
    m_isComingOut = std::exchange(m_isElsewhere, false) || m_isComingOut;
    announceCurrent(m_cursor.set(m_scene, m_content.entries, url));
    comeOut();
}

void TreemapCanvas::comeOut()
{
    if (m_isComingOut && currentTile()) {
        m_isComingOut = false;
        m_growth.shrinkTo(tileRect(*currentTile()));
    }
}

void TreemapCanvas::forgetCurrent()
{
    announceCurrent(m_cursor.clear());
    m_zoom.fit();
    m_isElsewhere = true;
    m_isComingOut = false;
    if (m_isEntering) {
        m_cursor.stayAtLargest();
    }
}

void TreemapCanvas::activate(std::size_t tile)
{
    const Entry entry = m_scene.entry(tile);
    if (entry.isDirectory) {
        paintMap();
        m_growth.growFrom(m_map, tileRect(tile) & QRectF{rect()});
    }
    Q_EMIT activated(entry);
    m_isElsewhere = false;
}

void TreemapCanvas::announceCurrent(bool isAnother)
{
    if (isAnother) {
        update();
        TreemapAccessible::announceFocus(*this);
        Q_EMIT currentChanged();
        Q_EMIT pointedChanged();
    }
}

QSize TreemapCanvas::sizeHint() const
{
    return {640, 400};
}

QSize TreemapCanvas::minimumSizeHint() const
{
    return {160, 120};
}

// What is drawn

/// The ring of a tile at the border needs its room.
QRectF TreemapCanvas::mapArea() const
{
    constexpr int room = TreemapPainter::ringWidth;
    return rect().adjusted(room, room, -room, -room);
}

void TreemapCanvas::layOut()
{
    m_isStale = false;
    const double scale = devicePixelRatioF();
    const auto toPixels = [scale](const QRectF& part) {
        return QRectF{part.topLeft() * scale, part.size() * scale}.toAlignedRect();
    };
    m_scene = TreemapScene{m_content, {toPixels(m_zoom.area(mapArea())), toPixels(rect()), scale}, m_layout};
    m_map = {};
    m_hoveredTile = m_pointer ? tileAt(*m_pointer) : std::nullopt;
    announceCurrent(m_cursor.follow(m_scene, m_content.entries));
    comeOut();
    TreemapAccessible::announceTiles(*this);
    update();
    Q_EMIT laidOut();
    Q_EMIT pointedChanged();
}

void TreemapCanvas::paintAgain()
{
    m_map = {};
    update();
}

void TreemapCanvas::paintMap()
{
    const double scale = devicePixelRatioF();
    if (!m_painter || m_painter->scale() != scale) {
        m_painter.emplace(scale);
        m_map = {};
    }
    if (m_map.isNull()) {
        m_map = m_painter->paint(m_scene, (QSizeF{size()} * scale).toSize(),
                                 [this](std::size_t tile) { return lookOf(tile); });
    }
}

void TreemapCanvas::paintEvent(QPaintEvent* /*event*/)
{
    const bool isOtherScale = m_painter && m_painter->scale() != devicePixelRatioF();
    if (isOtherScale || (m_isStale && !m_burst.isActive())) {
        layOut();
    }
    paintMap();
    QPainter painter{this};
    if (m_growth.isRunning()) {
        m_growth.paint(painter, rect(), m_map);
        return;
    }
    painter.drawImage(QPoint{}, m_map);
    if (m_scene.tiles().empty()) {
        const bool allFiltered = m_content.visible.empty() && !m_content.entries.empty();
        const auto* const rest = m_scene.topRest();
        m_painter->paintMessage(painter, rect(),
                                TreemapText::noTiles(rest == nullptr ? 0 : rest->count, allFiltered));
    }
    painter.setClipRect(mapArea().adjusted(-2, -2, 2, 2));
    if (hasFocus() && currentTile()) {
        m_painter->paintRing(painter, tileRect(*currentTile()));
    }
    if (m_hoveredTile) {
        m_painter->paintHover(painter, m_scene, *m_hoveredTile, lookOf(*m_hoveredTile));
    }
}

QRectF TreemapCanvas::tileRect(std::size_t tile) const
{
    const double scale = devicePixelRatioF();
    const QRectF pixels = m_scene.painted(tile);
    return {pixels.topLeft() / scale, pixels.size() / scale};
}

std::optional<QRectF> TreemapCanvas::boxOf(std::size_t tile) const
{
    return m_painter ? m_painter->checkBox(m_scene, tile)
                     : TreemapPainter{devicePixelRatioF()}.checkBox(m_scene, tile);
}

void TreemapCanvas::resizeEvent(QResizeEvent* event)
{
    layOut();
    QWidget::resizeEvent(event);
}

void TreemapCanvas::showEvent(QShowEvent* event)
{
    if (m_isStale) {
        layOut();
    }
    QWidget::showEvent(event);
}

// Where the pointer is

void TreemapCanvas::pointAt(const std::optional<QPointF>& position)
{
    m_pointer = position;
    hover(position ? tileAt(*position) : std::nullopt);
}

void TreemapCanvas::hover(std::optional<std::size_t> tile)
{
    const auto left = std::exchange(m_hoveredTile, tile);
    for (const auto& changed : {left, tile}) {
        if (changed && left != tile && m_painter) {
            update(m_painter->hoverRegion(m_scene, *changed));
        }
    }
    Q_EMIT pointedChanged();
}

std::optional<std::size_t> TreemapCanvas::pointedTile() const
{
    return m_pointer && m_hoveredTile ? m_hoveredTile : currentTile();
}

const TreemapScene::Rest* TreemapCanvas::pointedRest() const
{
    return m_pointer ? m_scene.restAt(pixelAt(*m_pointer)) : nullptr;
}

QPoint TreemapCanvas::pixelAt(const QPointF& position) const
{
    const QPointF pixel = position * devicePixelRatioF();
    return {static_cast<int>(std::floor(pixel.x())), static_cast<int>(std::floor(pixel.y()))};
}

std::optional<std::size_t> TreemapCanvas::tileAt(const QPointF& position) const
{
    return m_scene.tileAt(pixelAt(position));
}

// How closely one looks

void TreemapCanvas::zoom(double by, const QPointF& place)
{
    if (m_zoom.zoom(by, place, mapArea())) {
        layOut();
        lookCloser(place);
    }
}

void TreemapCanvas::moveBy(const QPointF& way)
{
    if (m_zoom.move(way, mapArea())) {
        layOut();
    }
}

void TreemapCanvas::fit()
{
    if (!m_zoom.isFitting()) {
        m_zoom.fit();
        layOut();
    }
}

void TreemapCanvas::bringIntoView(std::size_t tile)
{
    const QRectF place = tileRect(tile);
    const QRectF shown = mapArea();
    if (m_zoom.isFitting() || shown.contains(place.center())) {
        return;
    }
    moveBy(shown.center() - place.center());
}

/// The smallest folder there that fills much of the window may have more to show than was asked for at first.
void TreemapCanvas::lookCloser(const QPointF& place)
{
    const auto fillsMuch = [this](std::size_t tile) {
        const QRectF rect = tileRect(tile);
        return m_scene.isOpen(tile) && rect.width() >= width() / 2.0 && rect.height() >= height() / 2.0;
    };
    std::optional<std::size_t> folder = tileAt(place);
    while (folder && !fillsMuch(*folder)) {
        const std::uint32_t above = m_scene.tiles()[*folder].parent;
        folder = above == TreemapScene::none ? std::nullopt : std::optional<std::size_t>{above};
    }
    if (folder && !m_zoom.isFitting()) {
        Q_EMIT lookedCloser(m_scene.entry(*folder).url);
    }
}

} // namespace tallyroom
