#include "Components/EntryRows.h"

#include "Components/EntryRowsModel.h"
#include "Components/EntryRowsView.h"
#include "Components/SymbolIcon.h"

#include <QMenu>
#include <QVBoxLayout>

#include <utility>

namespace tallyroom {

EntryRows::EntryRows(EntryRowsModel* model, EntryRowsView* view, QWidget* parent)
    : QWidget(parent), m_model(model), m_view(view)
{
    model->setParent(this);
    auto* const layout = new QVBoxLayout{this};
    layout->setContentsMargins({});
    layout->addWidget(view);
    setFocusProxy(view);
    connect(model, &EntryRowsModel::selectionEdited, this, &EntryRows::selectionChanged);
    connect(model, &EntryRowsModel::rowsChanged, this, &EntryRows::rowsChanged);
    // Entries go out as copies: whoever receives one may well replace the list.
    const auto forward = [this, view](void (EntryRowsView::*asked)(int),
                                      void (EntryRows::*request)(const Entry&)) {
        connect(view, asked, this, [this, request](int row) {
            if (const Entry* const entry = m_model->entryAt(row)) {
                Q_EMIT(this->*request)(Entry{*entry});
            }
        });
    };
    forward(&EntryRowsView::rowActivated, &EntryRows::activated);
    forward(&EntryRowsView::rowCopyRequested, &EntryRows::copyPathRequested);
    connect(view, &EntryRowsView::rowMenuRequested, this, &EntryRows::showContextMenu);
}

void EntryRows::setSelection(Selection selection)
{
    m_model->setSelection(std::move(selection));
}

const EntryRows::Selection& EntryRows::selection() const
{
    return m_model->selection();
}

void EntryRows::selectAllVisible()
{
    if (hasRows()) {
        m_model->setRangeChecked(0, m_model->rowCount({}) - 1, true);
    }
}

bool EntryRows::hasRows() const
{
    return m_model->rowCount({}) > 0;
}

std::optional<Entry> EntryRows::currentEntry() const
{
    const int row = m_view->currentRow();
    const Entry* const entry = row >= 0 ? m_model->entryAt(row) : nullptr;
    return entry != nullptr ? std::optional{*entry} : std::nullopt;
}

bool EntryRows::setCurrentEntry(const FileUrl& url)
{
    const std::optional<int> row = m_model->rowOf(url, 0);
    if (row) {
        m_view->goTo(*row);
    }
    return row.has_value();
}

void EntryRows::startOver()
{
    m_view->startOver();
}

void EntryRows::setDeletionEnabled(bool isEnabled)
{
    m_isDeletionEnabled = isEnabled;
}

void EntryRows::addActions(QMenu& menu, const Entry& entry)
{
    if (entry.isDirectory) {
        connect(menu.addAction(SymbolIcon::icon("chevron.right"), QStringLiteral("Entrer")),
                &QAction::triggered, this, [this, entry] { Q_EMIT activated(entry); });
    }
}

std::unique_ptr<QMenu> EntryRows::makeContextMenu(const Entry& entry)
{
    auto menu = std::make_unique<QMenu>();
    addActions(*menu, entry);
    connect(menu->addAction(SymbolIcon::icon("folder"), QStringLiteral("Révéler dans le Finder")),
            &QAction::triggered, this, [this, entry] { Q_EMIT revealRequested(entry); });
    if (m_isDeletionEnabled) {
        menu->addSeparator();
        connect(menu->addAction(SymbolIcon::icon("trash", Theme::Colour::danger),
                                QStringLiteral("Mettre à la corbeille")),
                &QAction::triggered, this, [this, entry] { Q_EMIT deleteRequested(entry); });
    }
    return menu;
}

void EntryRows::showContextMenu(int row, const QPoint& globalPosition)
{
    if (const Entry* const entry = m_model->entryAt(row)) {
        makeContextMenu(Entry{*entry})->exec(globalPosition);
        return;
    }
    QMenu menu;
    addSectionActions(menu, row);
    if (!menu.isEmpty()) {
        menu.exec(globalPosition);
    }
}

} // namespace tallyroom
