#pragma once

#include "Model/Entry.h"

#include <QWidget>

#include <memory>
#include <optional>
#include <string_view>
#include <unordered_set>

class QAction;
class QMenu;

namespace tallyroom {

class EntryRowsModel;
class EntryRowsView;

/// A list of entries to check and enter, whatever else it shows. Keys: arrows move, Enter activates, Space
/// checks, Ctrl+A checks all, Ctrl+C copies the path. Main thread.
class EntryRows : public QWidget {
    Q_OBJECT

public:
    using Selection = std::unordered_set<FileUrl>;

    /// The checked locations, those that no row shows included.
    void setSelection(Selection selection);
    [[nodiscard]] const Selection& selection() const;

    /// Checks every row that the filter lets through, and leaves the other checks as they are.
    void selectAllVisible();

    /// Whether the filter lets something through.
    [[nodiscard]] bool hasRows() const;

    /// The entry that the keyboard acts on; nothing before a row is chosen.
    [[nodiscard]] std::optional<Entry> currentEntry() const;

    /// Makes the row of `url` the current one and scrolls to it; false when no row shows it.
    bool setCurrentEntry(const FileUrl& url);

    /// Forgets the current row and goes to the top: another folder is about to be shown.
    void startOver();

    /// Whether rows offer "Mettre à la corbeille". Off at first.
    void setDeletionEnabled(bool isEnabled);

    /// The menu of an entry, as a right click or the menu key opens it.
    [[nodiscard]] std::unique_ptr<QMenu> makeContextMenu(const Entry& entry);

Q_SIGNALS:
    /// The user checked or unchecked rows; `selection()` is the new state.
    void selectionChanged();
    /// Other rows are shown than before.
    void rowsChanged();
    /// Enter, a double click, or "Entrer".
    void activated(const tallyroom::Entry& entry);
    void deleteRequested(const tallyroom::Entry& entry);
    void revealRequested(const tallyroom::Entry& entry);
    void copyPathRequested(const tallyroom::Entry& entry);

protected:
    /// Takes both over.
    EntryRows(EntryRowsModel* model, EntryRowsView* view, QWidget* parent);

    /// What an entry's menu begins with.
    virtual void addActions(QMenu& menu, const Entry& entry);

    /// The menu of a row that shows no entry; none where nothing is added.
    virtual void addSectionActions(QMenu& /*menu*/, int /*row*/) {}

private:
    void showContextMenu(int row, const QPoint& globalPosition);

    EntryRowsModel* m_model;
    EntryRowsView* m_view;
    bool m_isDeletionEnabled = false;
};

} // namespace tallyroom
