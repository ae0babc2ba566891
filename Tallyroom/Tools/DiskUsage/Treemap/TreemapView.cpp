#include "Tools/DiskUsage/Treemap/TreemapView.h"

#include "Text/TreemapText.h"
#include "Theme/Theme.h"
#include "Tools/DiskUsage/Treemap/TreemapAccessible.h"

#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QToolTip>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>

namespace tallyroom {

namespace {

using namespace std::chrono_literals;

/// Tiles that move more often than this cannot be followed by the eye, nor hit.
constexpr auto calm = 100ms;

std::optional<TreemapScene::Direction> directionOf(int key)
{
    switch (key) {
    case Qt::Key_Left:
        return TreemapScene::Direction::left;
    case Qt::Key_Right:
        return TreemapScene::Direction::right;
    case Qt::Key_Up:
        return TreemapScene::Direction::up;
    case Qt::Key_Down:
        return TreemapScene::Direction::down;
    default: // keys are not a closed set
        return std::nullopt;
    }
}

} // namespace

TreemapView::TreemapView(const Selection& selection, QWidget* parent)
    : QWidget(parent), m_selection(selection)
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
    connect(&m_selection, &Selection::changed, this, &TreemapView::showChecks);
    connect(&Theme::shared(), &Theme::changed, this, [this] {
        m_painter.reset();
        m_map = {};
        update();
    });
}

void TreemapView::setEntries(EntryList entries)
{
    std::vector<std::uint32_t> all(entries.size());
    std::iota(all.begin(), all.end(), 0U);
    setEntries(std::move(entries), std::move(all));
}

void TreemapView::setEntries(EntryList entries, std::vector<std::uint32_t> visible)
{
    if (entries.isSameSnapshot(m_entries) && visible == m_visible) {
        return;
    }
    m_entries = std::move(entries);
    m_visible = std::move(visible);
    m_isStale = true;
    // Another folder begins with an empty list: the old one must not be clicked meanwhile.
    if (isVisible() && (!m_burst.isActive() || m_entries.empty())) {
        layOut();
        m_burst.start();
    }
}

bool TreemapView::isChecked(std::size_t tile) const
{
    return m_selection.contains(m_scene.entries(), m_scene.tiles()[tile].entry);
}

void TreemapView::showChecks(std::optional<std::uint32_t> position)
{
    if (!position) {
        m_map = {};
        update();
        return;
    }
    for (std::size_t tile = 0; tile < m_scene.tiles().size(); ++tile) {
        if (m_scene.tiles()[tile].entry == *position) {
            refreshTile(tile);
            TreemapAccessible::announceCheck(*this, tile);
        }
    }
}

std::optional<Entry> TreemapView::currentEntry() const
{
    const auto tile = currentTile();
    return tile ? std::optional{m_scene.entry(*tile)} : std::nullopt;
}

void TreemapView::setCurrentTile(std::size_t tile)
{
    announceCurrent(m_cursor.set(m_scene, tile));
}

void TreemapView::setCurrentEntry(const FileUrl& url)
{
    announceCurrent(m_cursor.set(m_scene, m_entries, url));
}

void TreemapView::startOver()
{
    announceCurrent(m_cursor.clear());
    if (m_isEntering) {
        m_cursor.stayAtLargest();
    }
}

void TreemapView::announceCurrent(bool isAnother)
{
    if (isAnother) {
        update();
        TreemapAccessible::announceFocus(*this);
        Q_EMIT currentChanged();
    }
}

QSize TreemapView::sizeHint() const
{
    return {640, 400};
}

QSize TreemapView::minimumSizeHint() const
{
    return {160, 120};
}

// What is drawn

void TreemapView::layOut()
{
    m_isStale = false;
    const double scale = devicePixelRatioF();
    // The ring of a tile at the border needs its room.
    constexpr int room = TreemapPainter::ringWidth;
    const QRectF area = rect().adjusted(room, room, -room, -room);
    m_scene = TreemapScene{m_entries, m_visible,
                           QRectF{area.topLeft() * scale, area.size() * scale}.toAlignedRect(), scale};
    m_map = {};
    m_hoveredTile = m_pointer ? tileAt(*m_pointer) : std::nullopt;
    announceCurrent(m_cursor.follow(m_scene, m_entries));
    TreemapAccessible::announceTiles(*this);
    update();
}

void TreemapView::paintMap()
{
    const double scale = devicePixelRatioF();
    if (!m_painter || m_painter->scale() != scale) {
        m_painter.emplace(scale);
        m_map = {};
    }
    if (!m_map.isNull()) {
        return;
    }
    m_map = m_painter->paint(m_scene, (QSizeF{size()} * scale).toSize(),
                             [this](std::size_t tile) { return isChecked(tile); });
    if (m_hoveredTile) {
        m_painter->repaintTile(m_map, m_scene, *m_hoveredTile, {isChecked(*m_hoveredTile), true});
    }
}

void TreemapView::refreshTile(std::size_t tile)
{
    if (m_map.isNull() || !m_painter) {
        return;
    }
    m_painter->repaintTile(m_map, m_scene, tile, {isChecked(tile), tile == m_hoveredTile});
    update(tileRect(tile).toAlignedRect());
}

void TreemapView::paintEvent(QPaintEvent* /*event*/)
{
    const bool isOtherScale = m_painter && m_painter->scale() != devicePixelRatioF();
    if (isOtherScale || (m_isStale && !m_burst.isActive())) {
        layOut();
    }
    paintMap();
    QPainter painter{this};
    painter.drawImage(QPoint{}, m_map);
    if (m_scene.tiles().empty()) {
        const bool allFiltered = m_visible.empty() && !m_entries.empty();
        m_painter->paintMessage(painter, rect(), TreemapText::noTiles(m_scene.crumbs().count, allFiltered));
    }
    if (hasFocus() && currentTile()) {
        m_painter->paintRing(painter, tileRect(*currentTile()));
    }
}

QRectF TreemapView::tileRect(std::size_t tile) const
{
    const double scale = devicePixelRatioF();
    const QRectF pixels = m_scene.painted(tile);
    return {pixels.topLeft() / scale, pixels.size() / scale};
}

void TreemapView::resizeEvent(QResizeEvent* event)
{
    layOut();
    QWidget::resizeEvent(event);
}

void TreemapView::showEvent(QShowEvent* event)
{
    if (m_isStale) {
        layOut();
    }
    QWidget::showEvent(event);
}

void TreemapView::hover(std::optional<std::size_t> tile)
{
    if (tile == m_hoveredTile) {
        return;
    }
    const auto left = std::exchange(m_hoveredTile, tile);
    for (const auto& changed : {left, tile}) {
        if (changed) {
            refreshTile(*changed);
        }
    }
}

std::optional<std::size_t> TreemapView::tileAt(const QPointF& position) const
{
    const QPointF pixel = position * devicePixelRatioF();
    return m_scene.tileAt({static_cast<int>(std::floor(pixel.x())), static_cast<int>(std::floor(pixel.y()))});
}

// What the user does

void TreemapView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton && event->button() != Qt::RightButton) {
        event->ignore(); // the owner's: back, for one
        return;
    }
    m_pressed.reset();
    m_cursor.letGo();
    if (const auto tile = tileAt(event->position())) {
        setCurrentTile(*tile);
        if (event->button() == Qt::LeftButton) {
            const bool checks =
                event->modifiers().testFlag(Qt::ControlModifier) || isOnCheckBox(event->position());
            m_pressed = Press{m_scene.entry(*tile).url, checks};
        }
    }
}

bool TreemapView::isOnCheckBox(const QPointF& position) const
{
    const auto tile = tileAt(position);
    const auto box = tile ? TreemapPainter::checkBox(tileRect(*tile)) : std::nullopt;
    constexpr double near = Theme::gap / 2.0;
    return box && box->adjusted(-near, -near, near, near).contains(position);
}

void TreemapView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    // Not if the pointer, or the tile, has moved away in between.
    const auto tile = tileAt(event->position());
    const auto pressed = std::exchange(m_pressed, std::nullopt);
    if (tile && pressed && pressed->checks && m_scene.entry(*tile).url == pressed->url) {
        Q_EMIT selectionToggled(pressed->url);
    }
}

void TreemapView::mouseDoubleClickEvent(QMouseEvent* event)
{
    // The tile of the first click is meant: another one may have come under the pointer since. And two quick
    // clicks on a box are two clicks.
    const auto tile = tileAt(event->position());
    const bool isTheSame = tile && tile == currentTile();
    const bool checks = event->modifiers().testFlag(Qt::ControlModifier) || isOnCheckBox(event->position());
    if (event->button() != Qt::LeftButton || !isTheSame || checks) {
        mousePressEvent(event);
        return;
    }
    Q_EMIT activated(Entry{m_scene.entry(*tile)});
}

void TreemapView::mouseMoveEvent(QMouseEvent* event)
{
    m_pointer = event->position();
    hover(tileAt(*m_pointer));
}

void TreemapView::leaveEvent(QEvent* event)
{
    m_pointer.reset();
    hover(std::nullopt);
    QWidget::leaveEvent(event);
}

void TreemapView::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    const auto direction = directionOf(key);
    if (!event->isAutoRepeat()) {
        m_cursor.letGo();
    }
    if (isPlain && direction) {
        announceCurrent(m_cursor.move(m_scene, *direction));
    } else if (isPlain && (key == Qt::Key_Home || key == Qt::Key_End) && !m_scene.tiles().empty()) {
        setCurrentTile(key == Qt::Key_Home ? 0 : m_scene.tiles().size() - 1);
    } else if (isPlain && key == Qt::Key_Space && currentTile() && !event->isAutoRepeat()) {
        Q_EMIT selectionToggled(FileUrl{m_scene.entry(*currentTile()).url});
    } else if (isPlain && (key == Qt::Key_Return || key == Qt::Key_Enter) && currentTile() &&
               !event->isAutoRepeat()) {
        const QScopedValueRollback entering{m_isEntering, true};
        Q_EMIT activated(Entry{m_scene.entry(*currentTile())});
    } else {
        QWidget::keyPressEvent(event);
    }
}

void TreemapView::contextMenuEvent(QContextMenuEvent* event)
{
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    const auto tile = byKey ? currentTile() : tileAt(event->pos());
    if (!tile) {
        event->ignore();
        return;
    }
    const QPoint position = byKey ? mapToGlobal(tileRect(*tile).center()).toPoint() : event->globalPos();
    Q_EMIT contextMenuRequested(Entry{m_scene.entry(*tile)}, position);
}

void TreemapView::focusInEvent(QFocusEvent* event)
{
    if (event->reason() != Qt::MouseFocusReason && !m_cursor.hasEntry() && !m_scene.tiles().empty()) {
        setCurrentTile(0);
    }
    update();
    TreemapAccessible::announceFocus(*this);
}

void TreemapView::focusOutEvent(QFocusEvent* /*event*/)
{
    update();
}

bool TreemapView::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip) {
        return QWidget::event(event);
    }
    const auto* const help = static_cast<QHelpEvent*>(event);
    const auto tile = tileAt(help->pos());
    QToolTip::showText(help->globalPos(), toolTipAt(help->pos()), this,
                       tile ? tileRect(*tile).toAlignedRect() : QRect{});
    return true;
}

QString TreemapView::toolTipAt(const QPointF& position) const
{
    const auto tile = tileAt(position);
    if (tile) {
        return TreemapText::toolTip(m_scene.entry(*tile), m_scene.share(*tile));
    }
    const TreemapScene::Crumbs& rest = m_scene.crumbs();
    return TreemapText::smallEntriesToolTip(rest.count, static_cast<std::int64_t>(rest.sizeBytes));
}

} // namespace tallyroom
