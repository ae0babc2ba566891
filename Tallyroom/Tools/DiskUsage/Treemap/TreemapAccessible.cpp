#include "Tools/DiskUsage/Treemap/TreemapAccessible.h"

#include "Text/TreemapText.h"
#include "Tools/DiskUsage/Treemap/TreemapCanvas.h"

#include <QPointer>

#include <unordered_set>

namespace tallyroom {

namespace {

TreemapAccessible* accessibleOf(TreemapCanvas* view)
{
    return view == nullptr ? nullptr
                           : dynamic_cast<TreemapAccessible*>(QAccessible::queryAccessibleInterface(view));
}

/// One tile. It belongs to its entry, wherever the tile lies and whichever number it has.
class TileAccessible : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    TileAccessible(TreemapCanvas& view, FileUrl url) : m_view(&view), m_url(std::move(url)) {}

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
        const auto place = tile();
        const std::uint32_t above = place ? m_view->scene().tiles()[*place].parent : TreemapScene::none;
        return above == TreemapScene::none ? QAccessible::queryAccessibleInterface(m_view) : of(above);
    }

    [[nodiscard]] QAccessibleInterface* child(int index) const override
    {
        return index >= 0 && index < childCount() ? of(children().first + static_cast<std::size_t>(index))
                                                  : nullptr;
    }

    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override
    {
        const TreemapAccessible* const map = accessibleOf(m_view);
        QAccessibleInterface* found = map == nullptr ? nullptr : map->innermostAt(x, y);
        while (found != nullptr && found->parent() != this) {
            found = found->parent();
        }
        return found;
    }

    [[nodiscard]] int childCount() const override
    {
        const auto [first, end] = children();
        return static_cast<int>(end - first);
    }

    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override
    {
        const auto* const below = dynamic_cast<const TileAccessible*>(child);
        const auto place = below == nullptr ? std::nullopt : below->tile();
        const auto [first, end] = children();
        return place && *place >= first && *place < end ? static_cast<int>(*place - first) : -1;
    }

    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::TreeItem; }

    [[nodiscard]] QRect rect() const override
    {
        const auto place = tile();
        return place ? m_view->tileRect(*place).toAlignedRect().translated(m_view->mapToGlobal(QPoint{}))
                     : QRect{};
    }

    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        const auto place = tile();
        if (!place || (kind != QAccessible::Name && kind != QAccessible::Description)) {
            return {};
        }
        const TreemapScene& scene = m_view->scene();
        if (kind == QAccessible::Name) {
            return TreemapText::name(scene.entry(*place));
        }
        return TreemapText::description(scene.tiles()[*place].level + 1, scene.shareOfParent(*place),
                                        scene.itemCount(*place));
    }

    void setText(QAccessible::Text /*kind*/, const QString& /*text*/) override {}

    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state;
        const auto place = tile();
        state.invalid = !place;
        state.checkable = true;
        state.focusable = true;
        state.expandable = place && m_view->scene().isOpen(*place);
        state.expanded = state.expandable;
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
            m_view->activate(*place);
        } else if (name == toggleAction()) {
            Q_EMIT m_view->selectionToggled(entry);
        } else if (name == setFocusAction()) {
            m_view->setFocus(Qt::OtherFocusReason);
            m_view->setCurrentTile(*place);
        }
    }

    [[nodiscard]] QStringList keyBindingsForAction(const QString& /*name*/) const override { return {}; }

private:
    [[nodiscard]] std::pair<std::size_t, std::size_t> children() const
    {
        const auto place = tile();
        return place && m_view->scene().isOpen(*place) ? m_view->scene().children(*place)
                                                       : std::pair{0UL, 0UL};
    }

    [[nodiscard]] QAccessibleInterface* of(std::size_t tile) const
    {
        const TreemapAccessible* const map = accessibleOf(m_view);
        return map == nullptr ? nullptr : map->of(tile);
    }

    QPointer<TreemapCanvas> m_view;
    FileUrl m_url;
    mutable std::optional<std::size_t> m_lastSeen;
};

QAccessibleInterface* makeAccessible(const QString& /*className*/, QObject* object)
{
    auto* const view = qobject_cast<TreemapCanvas*>(object);
    return view == nullptr ? nullptr : new TreemapAccessible(*view);
}

/// Nothing while nobody listens.
TreemapAccessible* listenerOf(TreemapCanvas& view)
{
    return QAccessible::isActive() ? accessibleOf(&view) : nullptr;
}

} // namespace

TreemapAccessible::TreemapAccessible(TreemapCanvas& view)
    : QAccessibleWidget(&view, QAccessible::Tree), m_view(view)
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

void TreemapAccessible::announceTiles(TreemapCanvas& view)
{
    if (TreemapAccessible* const accessible = listenerOf(view)) {
        accessible->forgetVanished();
        QAccessibleEvent reordered{&view, QAccessible::ObjectReorder};
        QAccessible::updateAccessibility(&reordered);
    }
}

void TreemapAccessible::announceFocus(TreemapCanvas& view)
{
    TreemapAccessible* const accessible = listenerOf(view);
    if (accessible != nullptr && accessible->focusChild() != nullptr) {
        QAccessibleEvent focused{accessible->focusChild(), QAccessible::Focus};
        QAccessible::updateAccessibility(&focused);
    }
}

void TreemapAccessible::announceCheck(TreemapCanvas& view, std::size_t tile)
{
    if (TreemapAccessible* const accessible = listenerOf(view)) {
        QAccessible::State changed;
        changed.checked = true;
        QAccessibleStateChangeEvent checked{accessible->of(tile), changed};
        QAccessible::updateAccessibility(&checked);
    }
}

int TreemapAccessible::childCount() const
{
    return static_cast<int>(m_view.scene().topCount());
}

QAccessibleInterface* TreemapAccessible::child(int index) const
{
    return index >= 0 && index < childCount() ? of(static_cast<std::size_t>(index)) : nullptr;
}

QAccessibleInterface* TreemapAccessible::of(std::size_t tile) const
{
    const FileUrl& url = m_view.scene().entry(tile).url;
    if (const auto known = m_tiles.find(url); known != m_tiles.end()) {
        return QAccessible::accessibleInterface(known->second);
    }
    auto* const made = new TileAccessible(m_view, url); // the registry owns it
    m_tiles.emplace(url, QAccessible::registerAccessibleInterface(made));
    return made;
}

int TreemapAccessible::indexOfChild(const QAccessibleInterface* child) const
{
    const auto* const below = dynamic_cast<const TileAccessible*>(child);
    const auto place = below == nullptr ? std::nullopt : below->tile();
    return place && *place < m_view.scene().topCount() ? static_cast<int>(*place) : -1;
}

QAccessibleInterface* TreemapAccessible::innermostAt(int x, int y) const
{
    const QPointF pixel = m_view.mapFromGlobal(QPointF(x, y)) * m_view.devicePixelRatioF();
    const auto tile = m_view.scene().tileAt(pixel.toPoint());
    return tile ? of(*tile) : nullptr;
}

QAccessibleInterface* TreemapAccessible::childAt(int x, int y) const
{
    QAccessibleInterface* found = innermostAt(x, y);
    while (found != nullptr && found->parent() != this) {
        found = found->parent();
    }
    return found;
}

QAccessibleInterface* TreemapAccessible::focusChild() const
{
    const auto tile = m_view.currentTile();
    return tile && m_view.hasFocus() ? of(*tile) : nullptr;
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
