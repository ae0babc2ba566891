#include "Shell/KeysDialog.h"

#include "Controls/OwnKeys.h"
#include "Layout/Boxes.h"
#include "Rows/EntryRows.h"
#include "Rows/EntryTableHeader.h"
#include "Theme/Theme.h"
#include "Tools/DiskUsage/Treemap/TreemapView.h"

#include <QAction>
#include <QHeaderView>
#include <QTreeWidget>

#include <algorithm>
#include <vector>

namespace tallyroom {

namespace {

using Keys = std::vector<ToldKeys>;

/// The named shortcuts of a widget, in the order in which it was given them; several for one thing together.
Keys shortcutsOf(const QWidget& widget)
{
    Keys keys;
    for (const QAction* const action : widget.actions()) {
        const QKeySequence shortcut = action->shortcut();
        if (action->text().isEmpty() || shortcut.isEmpty()) {
            continue;
        }
        const QString pressed = KeyText::name(shortcut[0]);
        const auto known = std::ranges::find(keys, action->text(), &ToldKeys::name);
        if (known == keys.end()) {
            keys.push_back({action->text(), pressed});
        } else if (!known->keys.split(QStringLiteral(", ")).contains(pressed)) {
            known->keys += QStringLiteral(", ") + pressed;
        }
    }
    return keys;
}

void addSection(QTreeWidget& list, const QString& title, const Keys& keys)
{
    if (keys.empty()) {
        return;
    }
    auto* const section = new QTreeWidgetItem(&list, {title});
    section->setFirstColumnSpanned(true);
    section->setFont(0, Theme::shared().strong());
    section->setFlags(Qt::ItemIsEnabled);
    section->setSizeHint(0, {0, Theme::rowHeight});
    for (const auto& [name, pressed] : keys) {
        auto* const row = new QTreeWidgetItem(section, {name, pressed});
        row->setSizeHint(0, {0, Theme::headerHeight});
        row->setData(0, Qt::AccessibleTextRole, name + QStringLiteral(" : ") + pressed);
    }
    section->setExpanded(true);
}

} // namespace

KeysDialog::KeysDialog(const QWidget& window, const QWidget* screen, const QString& toolName, QWidget* parent)
    : TellingDialog(QStringLiteral("Raccourcis clavier"), parent), m_list(new QTreeWidget)
{
    setAttribute(Qt::WA_DeleteOnClose);
    m_list->setAccessibleName(windowTitle());
    m_list->setColumnCount(2);
    m_list->setHeaderHidden(true);
    m_list->setRootIsDecorated(false);
    m_list->setItemsExpandable(false);
    m_list->setAllColumnsShowFocus(true);
    addSection(*m_list, QStringLiteral("Partout"), shortcutsOf(window));
    if (screen != nullptr) {
        addSection(*m_list, QStringLiteral("Dans « %1 »").arg(toolName), shortcutsOf(*screen));
    }
    addSection(*m_list, QStringLiteral("Dans une liste"), EntryRows::keys());
    addSection(*m_list, QStringLiteral("Dans les titres des colonnes"), EntryTableHeader::keys());
    addSection(*m_list, QStringLiteral("Sur la carte"), TreemapView::keys());
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_list->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    // There for the keyboard and for screen readers; what nobody has chosen does not look chosen.
    m_list->setCurrentItem(m_list->topLevelItem(0)->child(0), 0, QItemSelectionModel::NoUpdate);
    column().addWidget(m_list, 1);
    addFoot();
}

QSize KeysDialog::sizeHint() const
{
    return {Theme::failureListWidth, Theme::failureListHeight * 3 / 2};
}

} // namespace tallyroom
