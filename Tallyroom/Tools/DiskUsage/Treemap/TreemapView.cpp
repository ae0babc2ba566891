#include "Tools/DiskUsage/Treemap/TreemapView.h"

#include "Theme/Theme.h"
#include "Tools/DiskUsage/Treemap/TreemapAccessible.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleHints>

#include <cmath>

namespace tallyroom {

namespace {

constexpr double zoomStep = 1.25;

std::optional<TreemapNeighbours::Direction> directionOf(int key)
{
    switch (key) {
    case Qt::Key_Left:
        return TreemapNeighbours::Direction::left;
    case Qt::Key_Right:
        return TreemapNeighbours::Direction::right;
    case Qt::Key_Up:
        return TreemapNeighbours::Direction::up;
    case Qt::Key_Down:
        return TreemapNeighbours::Direction::down;
    default: // keys are not a closed set
        return std::nullopt;
    }
}

bool isEnter(int key)
{
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

} // namespace

bool TreemapView::isOnCheckBox(const QPointF& position) const
{
    const auto tile = tileAt(position);
    const auto box = tile ? boxOf(*tile) : std::nullopt;
    constexpr double near = Theme::gap / 2.0;
    return box && box->adjusted(-near, -near, near, near).contains(position);
}

// The mouse

void TreemapView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton && event->button() != Qt::RightButton) {
        event->ignore(); // the owner's: back, for one
        return;
    }
    m_pressed.reset();
    m_isDragged = false;
    cursor().letGo();
    if (event->button() == Qt::LeftButton && !magnification().isFitting()) {
        m_grip = event->position();
    }
    if (const auto tile = tileAt(event->position())) {
        setCurrentTile(*tile);
        if (event->button() == Qt::LeftButton) {
            const bool checks =
                event->modifiers().testFlag(Qt::ControlModifier) || isOnCheckBox(event->position());
            m_pressed = Press{scene().entry(*tile).url, checks};
        }
    }
}

void TreemapView::mouseMoveEvent(QMouseEvent* event)
{
    const QPointF way = m_grip ? event->position() - *m_grip : QPointF{};
    if (m_grip && !m_isDragged &&
        way.manhattanLength() >= QGuiApplication::styleHints()->startDragDistance()) {
        m_isDragged = true;
        m_pressed.reset();
        setCursor(Qt::ClosedHandCursor);
    }
    if (m_isDragged) {
        m_grip = event->position();
        moveBy(way);
    }
    pointAt(event->position());
}

void TreemapView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    m_grip.reset();
    if (m_isDragged) {
        unsetCursor();
    }
    // Not if the pointer, or the tile, has moved away in between.
    const auto tile = tileAt(event->position());
    const auto pressed = std::exchange(m_pressed, std::nullopt);
    if (tile && pressed && pressed->checks && scene().entry(*tile).url == pressed->url) {
        Q_EMIT selectionToggled(Entry{scene().entry(*tile)});
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
    activate(*tile);
}

/// A map has nothing to scroll: the wheel looks closer, with Ctrl and without.
void TreemapView::wheelEvent(QWheelEvent* event)
{
    constexpr double notch = QWheelEvent::DefaultDeltasPerStep;
    if (const int way = event->angleDelta().y(); way != 0) {
        zoom(std::pow(zoomStep, way / notch), event->position());
    }
    event->accept();
}

void TreemapView::leaveEvent(QEvent* event)
{
    pointAt(std::nullopt);
    QWidget::leaveEvent(event);
}

void TreemapView::contextMenuEvent(QContextMenuEvent* event)
{
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    const auto tile = byKey ? currentTile() : tileAt(event->pos());
    if (!tile) {
        event->ignore();
        return;
    }
    const QPoint position =
        byKey ? mapToGlobal((tileRect(*tile) & QRectF{rect()}).center()).toPoint() : event->globalPos();
    Q_EMIT contextMenuRequested(Entry{scene().entry(*tile)}, position);
}

// The keyboard

bool TreemapView::event(QEvent* event)
{
    // Escape leads out of a folder's tiles first; only then is it the owner's.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* const key = static_cast<QKeyEvent*>(event);
        const auto tile = currentTile();
        if (key->key() == Qt::Key_Escape && tile && scene().tiles()[*tile].parent != TreemapScene::none) {
            event->accept();
            return true;
        }
    }
    return TreemapCanvas::event(event);
}

void TreemapView::keyPressEvent(QKeyEvent* event)
{
    if (!event->isAutoRepeat()) {
        cursor().letGo();
    }
    const int key = event->key();
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    const bool isDone =
        isPlain ? moveAmongSiblings(key) || changeLevel(key) || (!event->isAutoRepeat() && actOnCurrent(key))
                : zoomByKey(*event);
    if (!isDone) {
        QWidget::keyPressEvent(event);
    } else if (isPlain && currentTile()) {
        bringIntoView(*currentTile());
    }
}

bool TreemapView::moveAmongSiblings(int key)
{
    if (const auto direction = directionOf(key)) {
        announceCurrent(cursor().move(scene(), *direction));
        return true;
    }
    if ((key != Qt::Key_Home && key != Qt::Key_End) || scene().tiles().empty()) {
        return false;
    }
    const auto [first, end] = scene().siblings(currentTile().value_or(0));
    setCurrentTile(key == Qt::Key_Home ? first : end - 1);
    return true;
}

bool TreemapView::changeLevel(int key)
{
    const auto tile = currentTile();
    if (!tile) {
        return false;
    }
    const std::uint32_t above = scene().tiles()[*tile].parent;
    if (key == Qt::Key_PageDown) {
        if (scene().isOpen(*tile)) {
            setCurrentTile(scene().children(*tile).first);
        }
        return true;
    }
    if ((key == Qt::Key_PageUp || key == Qt::Key_Escape) && above != TreemapScene::none) {
        setCurrentTile(above);
        return true;
    }
    return key == Qt::Key_PageUp;
}

bool TreemapView::actOnCurrent(int key)
{
    const auto tile = currentTile();
    if (!tile || (key != Qt::Key_Space && !isEnter(key))) {
        return false;
    }
    if (key == Qt::Key_Space) {
        Q_EMIT selectionToggled(Entry{scene().entry(*tile)});
        return true;
    }
    setEntering(true);
    activate(*tile);
    setEntering(false);
    return true;
}

bool TreemapView::zoomByKey(const QKeyEvent& event)
{
    if ((event.modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier)) != Qt::ControlModifier) {
        return false;
    }
    const auto tile = currentTile();
    const QRectF shown = rect();
    const QPointF place = tile ? (tileRect(*tile) & shown).center() : shown.center();
    switch (event.key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal: // the same key without Shift
        zoom(zoomStep, place);
        return true;
    case Qt::Key_Minus:
        zoom(1 / zoomStep, place);
        return true;
    case Qt::Key_0:
    case Qt::Key_Agrave: // 0 without Shift on a French keyboard
        fit();
        return true;
    default: // keys are not a closed set
        return false;
    }
}

void TreemapView::focusInEvent(QFocusEvent* event)
{
    if (event->reason() != Qt::MouseFocusReason && !cursor().hasEntry() && !scene().tiles().empty()) {
        setCurrentTile(0);
    }
    update();
    TreemapAccessible::announceFocus(*this);
}

void TreemapView::focusOutEvent(QFocusEvent* /*event*/)
{
    update();
}

} // namespace tallyroom
