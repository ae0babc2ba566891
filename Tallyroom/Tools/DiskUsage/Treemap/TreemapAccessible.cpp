#include "Tools/DiskUsage/Treemap/TreemapAccessible.h"

#include "Text/TreemapText.h"
#include "Tools/DiskUsage/Treemap/TreemapView.h"

#include <QPointer>

#include <unordered_set>

namespace tallyroom {

namespace {

/// One tile. It belongs to its entry, wherever the tile lies and whichever number it has.
class TileAccessible : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    TileAccessible(TreemapView& view, FileUrl url) : m_view(&view), m_url(std::move(url)) {}

    [[nodiscard]] std::optional<std::size_t> tile() const
    {
        if (m_view == nullptr) {
            return std::nullopt;
        }
        const TreemapScene& scene = m_view->scene();
        if (!m_lastSeen || *m_lastSeen >= scene.tiles().size() || scene.entry(*m_lastSeen).url != m_url) {
            m_lastSeen = scene.find(m_url);
        }
        return m_lastSeen;
    }

    [[nodiscard]] bool isValid() const override { return tile().has_value(); }

    [[nodiscard]] QObject* object() const override { return nullptr; }

    [[nodiscard]] QWindow* window() const override
    {
        return m_view == nullptr ? nullptr : m_view->window()->windowHandle();
    }

    [[nodiscard]] QAccessibleInterface* parent() const override
    {
        return QAccessible::queryAccessibleInterface(m_view);
    }

    [[nodiscard]] QAccessibleInterface* child(int /*index*/) const override { return nullptr; }

    [[nodiscard]] QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override { return nullptr; }

    [[nodiscard]] int childCount() const override { return 0; }

    [[nodiscard]] int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }

    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::ListItem; }

    [[nodiscard]] QRect rect() const override
    {
        const auto place = tile();
        return place ? m_view->tileRect(*place).toAlignedRect().translated(m_view->mapToGlobal(QPoint{}))
                     : QRect{};
    }

    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        const auto place = tile();
        return place && kind == QAccessible::Name ? TreemapText::name(m_view->scene().entry(*place))
                                                  : QString{};
    }

    void setText(QAccessible::Text /*kind*/, const QString& /*text*/) override {}

    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state;
        const auto place = tile();
        state.invalid = !place;
        state.checkable = true;
        state.focusable = true;
        state.checked = place && m_view->isChecked(*place);
        state.focused = place && m_view->hasFocus() && m_view->currentTile() == place;
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    [[nodiscard]] QStringList actionNames() const override
    {
        return {pressAction(), toggleAction(), setFocusAction()};
    }

    void doAction(const QString& name) override
    {
        const auto place = tile();
        if (!place) {
            return;
        }
        const Entry entry = m_view->scene().entry(*place);
        if (name == pressAction()) {
            Q_EMIT m_view->activated(entry);
        } else if (name == toggleAction()) {
            Q_EMIT m_view->selectionToggled(entry.url);
        } else if (name == setFocusAction()) {
            m_view->setFocus(Qt::OtherFocusReason);
            m_view->setCurrentTile(*place);
        }
    }

    [[nodiscard]] QStringList keyBindingsForAction(const QString& /*name*/) const override { return {}; }

private:
    QPointer<TreemapView> m_view;
    FileUrl m_url;
    mutable std::optional<std::size_t> m_lastSeen;
};

QAccessibleInterface* makeAccessible(const QString& /*className*/, QObject* object)
{
    auto* const view = qobject_cast<TreemapView*>(object);
    return view == nullptr ? nullptr : new TreemapAccessible(*view);
}

TreemapAccessible* accessibleOf(TreemapView& view)
{
    return QAccessible::isActive()
               ? dynamic_cast<TreemapAccessible*>(QAccessible::queryAccessibleInterface(&view))
               : nullptr;
}

} // namespace

TreemapAccessible::TreemapAccessible(TreemapView& view)
    : QAccessibleWidget(&view, QAccessible::List), m_view(view)
{}

TreemapAccessible::~TreemapAccessible()
{
    for (const auto& [url, id] : m_tiles) {
        QAccessible::deleteAccessibleInterface(id);
    }
}

void TreemapAccessible::install()
{
    QAccessible::installFactory(makeAccessible); // ignores what it knows already
}

void TreemapAccessible::announceTiles(TreemapView& view)
{
    if (TreemapAccessible* const accessible = accessibleOf(view)) {
        accessible->forgetVanished();
        QAccessibleEvent reordered{&view, QAccessible::ObjectReorder};
        QAccessible::updateAccessibility(&reordered);
    }
}

void TreemapAccessible::announceFocus(TreemapView& view)
{
    TreemapAccessible* const accessible = accessibleOf(view);
    if (accessible != nullptr && accessible->focusChild() != nullptr) {
        QAccessibleEvent focused{accessible->focusChild(), QAccessible::Focus};
        QAccessible::updateAccessibility(&focused);
    }
}

void TreemapAccessible::announceCheck(TreemapView& view, std::size_t tile)
{
    if (TreemapAccessible* const accessible = accessibleOf(view)) {
        QAccessible::State changed;
        changed.checked = true;
        QAccessibleStateChangeEvent checked{accessible->child(static_cast<int>(tile)), changed};
        QAccessible::updateAccessibility(&checked);
    }
}

int TreemapAccessible::childCount() const
{
    return static_cast<int>(m_view.scene().tiles().size());
}

QAccessibleInterface* TreemapAccessible::child(int index) const
{
    if (index < 0 || index >= childCount()) {
        return nullptr;
    }
    const FileUrl& url = m_view.scene().entry(static_cast<std::size_t>(index)).url;
    if (const auto known = m_tiles.find(url); known != m_tiles.end()) {
        return QAccessible::accessibleInterface(known->second);
    }
    auto* const tile = new TileAccessible(m_view, url); // the registry owns it
    m_tiles.emplace(url, QAccessible::registerAccessibleInterface(tile));
    return tile;
}

int TreemapAccessible::indexOfChild(const QAccessibleInterface* child) const
{
    const auto* const tile = dynamic_cast<const TileAccessible*>(child);
    const auto place = tile == nullptr ? std::nullopt : tile->tile();
    return place ? static_cast<int>(*place) : -1;
}

QAccessibleInterface* TreemapAccessible::childAt(int x, int y) const
{
    const QPointF pixel = m_view.mapFromGlobal(QPointF(x, y)) * m_view.devicePixelRatioF();
    const auto tile = m_view.scene().tileAt(pixel.toPoint());
    return tile ? child(static_cast<int>(*tile)) : nullptr;
}

QAccessibleInterface* TreemapAccessible::focusChild() const
{
    const auto tile = m_view.currentTile();
    return tile && m_view.hasFocus() ? child(static_cast<int>(*tile)) : nullptr;
}

void TreemapAccessible::forgetVanished()
{
    if (m_tiles.empty()) {
        return;
    }
    std::unordered_set<FileUrl> present;
    for (std::size_t tile = 0; tile < m_view.scene().tiles().size(); ++tile) {
        present.insert(m_view.scene().entry(tile).url);
    }
    std::erase_if(m_tiles, [&present](const auto& known) {
        const bool vanished = !present.contains(known.first);
        if (vanished) {
            QAccessible::deleteAccessibleInterface(known.second);
        }
        return vanished;
    });
}

} // namespace tallyroom
