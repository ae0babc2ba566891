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

const OwnKeys<TreemapView::Act>& TreemapView::ownKeys()
{
    static const OwnKeys<Act> keys{
        {QStringLiteral("Aller d’une case à l’autre"),
         {{Qt::Key_Left, Act::left},
          {Qt::Key_Right, Act::right},
          {Qt::Key_Up, Act::up},
          {Qt::Key_Down, Act::down}}},
        {QStringLiteral("Aller à la première case, à la dernière"),
         {{Qt::Key_Home, Act::first}, {Qt::Key_End, Act::last}}},
        {QStringLiteral("Cocher ou décocher la case"), {{Qt::Key_Space, Act::check}}},
        {QStringLiteral("Entrer dans le dossier, montrer le fichier"),
         {{Qt::Key_Return, Act::enter}, {Qt::Key_Enter, Act::enter}}},
        {QStringLiteral("Aller aux cases du dossier, en sortir"),
         {{Qt::Key_PageDown, Act::goIn}, {Qt::Key_PageUp, Act::goOut}, {Qt::Key_Escape, Act::goOut}}},
        // The plus may need Shift or not, and a French keyboard has the 0 with Shift only.
        {QStringLiteral("Regarder de plus près, de plus loin, tout voir"),
         {{Qt::CTRL | Qt::Key_Plus, Act::closer},
          {Qt::CTRL | Qt::SHIFT | Qt::Key_Plus, Act::closer},
          {Qt::CTRL | Qt::Key_Equal, Act::closer},
          {Qt::CTRL | Qt::Key_Minus, Act::farther},
          {Qt::CTRL | Qt::SHIFT | Qt::Key_Minus, Act::farther},
          {Qt::CTRL | Qt::Key_0, Act::fit},
          {Qt::CTRL | Qt::SHIFT | Qt::Key_0, Act::fit},
          {Qt::CTRL | Qt::Key_Agrave, Act::fit}}},
    };
    return keys;
}

std::vector<ToldKeys> TreemapView::keys()
{
    return ownKeys().told();
}

bool TreemapView::event(QEvent* event)
{
    // Escape leads out of a folder's tiles first; only then is it the owner's.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto tile = currentTile();
        if (ownKeys().find(*static_cast<QKeyEvent*>(event)) == Act::goOut && tile &&
            scene().tiles()[*tile].parent != TreemapScene::none) {
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
    const std::optional<Act> act = ownKeys().find(*event);
    const bool repeats = event->isAutoRepeat() && (act == Act::check || act == Act::enter);
    if (!act || repeats || !take(*act)) {
        QWidget::keyPressEvent(event);
    } else if (event->modifiers().testFlag(Qt::ControlModifier)) {
        return; // a closer look stays where it is
    } else if (const auto tile = currentTile()) {
        bringIntoView(*tile);
    }
}

/// Whether there was something to do.
bool TreemapView::take(Act act)
{
    using enum TreemapNeighbours::Direction;
    switch (act) {
    case Act::left:
        announceCurrent(cursor().move(scene(), left));
        return true;
    case Act::right:
        announceCurrent(cursor().move(scene(), right));
        return true;
    case Act::up:
        announceCurrent(cursor().move(scene(), up));
        return true;
    case Act::down:
        announceCurrent(cursor().move(scene(), down));
        return true;
    case Act::first:
    case Act::last:
        return goToSibling(act);
    case Act::goIn:
    case Act::goOut:
        return changeLevel(act);
    case Act::check:
    case Act::enter:
        return actOnCurrent(act);
    case Act::closer:
    case Act::farther:
    case Act::fit:
        zoomFromCurrent(act);
        return true;
    }
    return false;
}

bool TreemapView::goToSibling(Act act)
{
    if (scene().tiles().empty()) {
        return false;
    }
    const auto [first, end] = scene().siblings(currentTile().value_or(0));
    setCurrentTile(act == Act::first ? first : end - 1);
    return true;
}

bool TreemapView::changeLevel(Act act)
{
    const auto tile = currentTile();
    if (!tile) {
        return false;
    }
    const std::uint32_t above = scene().tiles()[*tile].parent;
    if (act == Act::goIn && scene().isOpen(*tile)) {
        setCurrentTile(scene().children(*tile).first);
    } else if (act == Act::goOut && above != TreemapScene::none) {
        setCurrentTile(above);
    } else {
        return act == Act::goIn;
    }
    return true;
}

bool TreemapView::actOnCurrent(Act act)
{
    const auto tile = currentTile();
    if (!tile) {
        return false;
    }
    if (act == Act::check) {
        Q_EMIT selectionToggled(Entry{scene().entry(*tile)});
    } else {
        setEntering(true);
        activate(*tile);
        setEntering(false);
    }
    return true;
}

void TreemapView::zoomFromCurrent(Act act)
{
    const auto tile = currentTile();
    const QRectF shown = rect();
    const QPointF place = tile ? (tileRect(*tile) & shown).center() : shown.center();
    if (act == Act::fit) {
        fit();
    } else {
        zoom(act == Act::closer ? zoomStep : 1 / zoomStep, place);
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
