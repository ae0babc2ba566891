#include "Shell/KeysDialog.h"

#include "Layout/Boxes.h"
#include "Theme/Theme.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>

#include <algorithm>
#include <utility>
#include <vector>

namespace tallyroom {

namespace {

/// What keys do, and the keys.
using Keys = std::vector<std::pair<QString, QString>>;

/// The named shortcuts of a widget, in the order in which it was given them; several for one thing together.
Keys shortcutsOf(const QWidget& widget)
{
    Keys keys;
    for (const QAction* const action : widget.actions()) {
        const QString pressed = action->shortcut().toString(QKeySequence::NativeText);
        const auto known = std::ranges::find(keys, action->text(), &Keys::value_type::first);
        if (action->text().isEmpty() || pressed.isEmpty()) {
            continue;
        }
        if (known == keys.end()) {
            keys.emplace_back(action->text(), pressed);
        } else {
            known->second += QStringLiteral(", ") + pressed;
        }
    }
    return keys;
}

/// Those that lists and the map take for themselves, which are no shortcuts.
Keys listKeys()
{
    return {{QStringLiteral("Entrer dans le dossier, montrer le fichier"), QStringLiteral("Entrée")},
            {QStringLiteral("Cocher ou décocher la ligne"), QStringLiteral("Espace")},
            {QStringLiteral("Cocher jusqu’à la ligne"), QStringLiteral("Maj+Espace")},
            {QStringLiteral("Aller à la ligne de ce nom"), QStringLiteral("Lettres")},
            {QStringLiteral("Trier, dans les titres des colonnes"), QStringLiteral("←, →, Espace")},
            {QStringLiteral("Élargir ou rétrécir la colonne"), QStringLiteral("Ctrl+←, Ctrl+→")}};
}

Keys mapKeys()
{
    return {{QStringLiteral("Aller d’une case à l’autre"), QStringLiteral("←, →, ↑, ↓")},
            {QStringLiteral("Aller à la première case, à la dernière"), QStringLiteral("Début, Fin")},
            {QStringLiteral("Cocher ou décocher la case"), QStringLiteral("Espace")},
            {QStringLiteral("Entrer dans les cases d’un dossier, en sortir"),
             QStringLiteral("Page suivante, Page précédente")},
            {QStringLiteral("Regarder de plus près, de plus loin, tout voir"),
             QStringLiteral("Ctrl++, Ctrl+-, Ctrl+0")}};
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
    : QDialog(parent), m_list(new QTreeWidget)
{
    setWindowTitle(QStringLiteral("Raccourcis clavier"));
    setAttribute(Qt::WA_DeleteOnClose);
    m_list->setAccessibleName(windowTitle());
    m_list->setColumnCount(2);
    m_list->setHeaderHidden(true);
    m_list->setRootIsDecorated(false);
    m_list->setItemsExpandable(false);
    addSection(*m_list, QStringLiteral("Partout"), shortcutsOf(window));
    if (screen != nullptr) {
        addSection(*m_list, QStringLiteral("Dans « %1 »").arg(toolName), shortcutsOf(*screen));
    }
    addSection(*m_list, QStringLiteral("Dans une liste"), listKeys());
    addSection(*m_list, QStringLiteral("Sur la carte"), mapKeys());
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_list->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    m_list->setCurrentItem(m_list->topLevelItem(0)->child(0));
    auto* const buttons = new QDialogButtonBox;
    buttons->addButton(QStringLiteral("Fermer"), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const column = makeColumn(this, pageMargins);
    column->addWidget(m_list, 1);
    column->addWidget(buttons);
}

QSize KeysDialog::sizeHint() const
{
    return {Theme::failureListWidth, Theme::failureListHeight * 3 / 2};
}

} // namespace tallyroom
