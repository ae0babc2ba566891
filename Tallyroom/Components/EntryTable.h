#pragma once

#include "Components/EntryTableStyle.h"
#include "Model/EntryList.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <unordered_set>

class QMenu;

namespace tallyroom {

class EntryTableModel;
class EntryTableView;

/// A table of entries to check, sort and enter; copies none of them. While a scan fills the list, the row
/// that the reader looks at keeps its place, and checks stay with their entries. Lists too long to be
/// filtered or sorted within one turn are arranged on a thread of their own; the rows then follow a moment
/// later. Keys: arrows move, Enter activates, Space checks, Ctrl+A checks all, Ctrl+C copies the path. Main
/// thread.
class EntryTable : public QWidget {
    Q_OBJECT

public:
    /// Decides whether an entry is shown. Called on other threads too: everything it needs is its own copy.
    using Filter = std::function<bool(const Entry&)>;
    using Selection = std::unordered_set<FileUrl>;

    explicit EntryTable(EntryTableStyle style, QWidget* parent = nullptr);

    /// Shows `entries`, ranked by size, larger first. Meant to be called as often as a scan reports.
    void setEntries(const EntryList& entries);
    [[nodiscard]] const EntryList& entries() const;

    /// Shows only what `filter` accepts; everything when it is empty. Checks of hidden rows stay.
    void setFilter(Filter filter);

    void setSortOrder(const EntrySortOrder& order);
    [[nodiscard]] const EntrySortOrder& sortOrder() const;

    /// The checked locations, those that no row shows included.
    void setSelection(Selection selection);
    [[nodiscard]] const Selection& selection() const;

    /// Checks every row that the filter lets through, and leaves the other checks as they are.
    void selectAllVisible();

    /// The entries shown, from the top.
    [[nodiscard]] std::size_t visibleCount() const;
    [[nodiscard]] const Entry& visibleEntry(std::size_t row) const;

    /// The row that the keyboard acts on; nothing before one is chosen.
    [[nodiscard]] std::optional<Entry> currentEntry() const;

    /// Makes the row of `url` the current one and scrolls to it; false when no row shows it.
    bool setCurrentEntry(const FileUrl& url);

    /// Forgets the current row and goes to the top: another folder is about to be shown.
    void startOver();

    /// Whether rows offer "Mettre à la corbeille". Off at first.
    void setDeletionEnabled(bool isEnabled);

    /// The menu of a row, as a right click or the menu key opens it.
    [[nodiscard]] std::unique_ptr<QMenu> makeContextMenu(const Entry& entry);

Q_SIGNALS:
    /// The user checked or unchecked rows; `selection()` is the new state.
    void selectionChanged();
    void sortOrderChanged();
    /// Other rows are shown than before.
    void rowsChanged();
    /// Enter, a double click, or "Entrer".
    void activated(const tallyroom::Entry& entry);
    void deleteRequested(const tallyroom::Entry& entry);
    void revealRequested(const tallyroom::Entry& entry);
    void copyPathRequested(const tallyroom::Entry& entry);

private:
    void showContextMenu(int row, const QPoint& globalPosition);

    EntryTableModel* m_model;
    EntryTableView* m_view;
    bool m_isDeletionEnabled = false;
};

} // namespace tallyroom
