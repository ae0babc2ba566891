#pragma once

#include "Components/EntryArrangement.h"
#include "Components/EntryRows.h"

#include <functional>

namespace tallyroom {

class EntryTableModel;

/// A table of entries to check, sort and enter; copies none of them. While a scan fills the list, the row
/// that the reader looks at keeps its place, and checks stay with their entries. Lists too long to be
/// filtered or sorted within one turn are arranged on a thread of their own; the rows then follow a moment
/// later. Main thread.
class EntryTable : public EntryRows {
    Q_OBJECT

public:
    /// Decides whether an entry is shown. Called on other threads too: everything it needs is its own copy.
    using Filter = std::function<bool(const Entry&)>;

    explicit EntryTable(EntryTableStyle style, QWidget* parent = nullptr);

    /// Shows `entries`, ranked by size, larger first. Meant to be called as often as a scan reports.
    void setEntries(const EntryList& entries);
    [[nodiscard]] const EntryList& entries() const;

    /// Shows only what `filter` accepts; everything when it is empty. Checks of hidden rows stay.
    void setFilter(Filter filter);

    void setSortOrder(const EntrySortOrder& order);
    [[nodiscard]] const EntrySortOrder& sortOrder() const;

    /// The entries shown, from the top.
    [[nodiscard]] std::size_t visibleCount() const;
    [[nodiscard]] const Entry& visibleEntry(std::size_t row) const;

    /// The rows on screen; after a change of a long list those before it, until `rowsChanged`.
    [[nodiscard]] const EntryArrangement& arrangement() const;

    /// What the rows are made from, for who makes the same on another thread.
    [[nodiscard]] const EntryArrangement::Request& request() const;

Q_SIGNALS:
    void sortOrderChanged();

private:
    EntryTable(EntryTableModel* model, QWidget* parent);

    EntryTableModel* m_model;
};

} // namespace tallyroom
