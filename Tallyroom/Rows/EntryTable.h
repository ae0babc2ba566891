#pragma once

#include "Rows/EntryRows.h"
#include "Rows/EntryTableModel.h"

#include <optional>

namespace tallyroom {

class EntryTableHeader;

/// Where the reader of a list is, by location: good for the same list when it comes again.
struct EntryBookmark {
    std::optional<FileUrl> current; ///< the row that the keyboard is on
    std::optional<FileUrl> anchor;  ///< a row on screen; none at the top of the list
    int anchorTop = 0;              ///< its top in the viewport
};

/// A table of entries to check, sort and enter; copies none of them. While a scan fills the list, the row
/// that the reader has scrolled to keeps its place, and checks stay with their entries. Lists too long to be
/// filtered or sorted within one turn are arranged on a thread of their own; the rows then follow a moment
/// later. Main thread.
class EntryTable : public EntryRows {
    Q_OBJECT

public:
    explicit EntryTable(EntryTableStyle style, QWidget* parent = nullptr);

    /// Shows `entries`, ranked by size, larger first. Meant to be called as often as a scan reports.
    void setEntries(const EntryList& entries) { m_model.setEntries(entries); }

    /// Shows among them what is still being measured, in grey.
    void setRunning(const std::vector<Entry>& running) { m_model.setRunning(running); }

    /// Shows only what `filter` accepts; everything when it is empty. Checks of hidden rows stay.
    void setFilter(EntryTableModel::Filter filter) { m_model.setFilter(std::move(filter)); }

    /// What is chosen of the style's optional columns, in their order. Without a choice they are hidden.
    [[nodiscard]] std::vector<EntryColumnChoice> columnChoices() const;

    /// Applies choices made earlier; skips unknown columns and widths beyond reason.
    void chooseColumns(const std::vector<EntryColumnChoice>& choices);

    /// The sum of all sizes listed and counted so far, also of what the filter hides. Bytes.
    [[nodiscard]] std::int64_t countedBytes() const { return m_model.countedBytes(); }

    void setSortOrder(const EntrySortOrder& order) { m_model.setSortOrder(order); }

    [[nodiscard]] const EntrySortOrder& sortOrder() const { return m_model.sortOrder(); }

    /// The rows on screen, from the top; after a change of a long list those before it, until `rowsChanged`.
    [[nodiscard]] const EntryArrangement& arrangement() const { return m_model.rows(); }

    [[nodiscard]] EntryBookmark bookmark() const;

    /// Goes back to the bookmark, as far as its rows are still there.
    void goTo(const EntryBookmark& bookmark);

Q_SIGNALS:
    /// The user chose other columns or widths.
    void columnsChosen();

protected:
    void rememberPlace() override;
    void restorePlace() override;
    void resizeEvent(QResizeEvent* event) override;

private:
    /// Where the reader is, for the time in which rows change.
    struct Place {
        EntryArrangement rows; ///< that the numbers below belong to, with
        RunningRows running;
        std::optional<int> currentRow;
        std::optional<int> anchorRow; ///< the row that must stay where it is on screen
        int anchorTop = 0;            ///< its top in the viewport
    };

    EntryTable(EntryTableModel* model, QWidget* parent);

    using QTableView::scrollTo;
    void scrollTo(int row, int top);
    void layOutColumns();
    void showColumnMenu(const QPoint& globalPosition);
    void choose(int column, bool isShown);
    void widen(int column, int width);

    [[nodiscard]] int widthOf(int column) const { return m_widths[ownNumber(column)]; }

    [[nodiscard]] int& widthOf(int column) { return m_widths[ownNumber(column)]; }

    [[nodiscard]] static std::size_t ownNumber(int column)
    {
        return static_cast<std::size_t>(column - EntryTableModel::firstOwnColumn);
    }

    void showSortOrder();
    void sortBy(int column);
    [[nodiscard]] std::optional<int> anchorRow() const;
    [[nodiscard]] int rowAfterChange(int row) const;

    EntryTableModel& m_model;
    EntryTableHeader* m_header;
    std::vector<int> m_widths; // of the style's columns
    Place m_place;
};

} // namespace tallyroom
