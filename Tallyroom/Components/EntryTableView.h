#pragma once

#include "Components/EntryArrangement.h"
#include "Components/EntryRowsView.h"

#include <optional>

namespace tallyroom {

class EntryTableHeader;
class EntryTableModel;

/// The part of an `EntryTable` that scrolls: has columns and sorts by them, and keeps the reader's row in
/// place while rows change. Main thread.
class EntryTableView : public EntryRowsView {
    Q_OBJECT

public:
    explicit EntryTableView(EntryTableModel& model, QWidget* parent = nullptr);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    /// Where the reader is, for the time in which rows change.
    struct Place {
        EntryArrangement rows; ///< that the numbers below belong to
        std::optional<int> currentRow;
        std::optional<int> anchorRow; ///< the row that must stay where it is on screen
        int anchorTop = 0;            ///< its top in the viewport
    };

    void layOutColumns();
    void showSortOrder();
    void sortBy(int column);
    void rememberPlace();
    void restorePlace();
    [[nodiscard]] std::optional<int> anchorRow() const;
    [[nodiscard]] int rowAfterChange(int row) const;

    EntryTableModel& m_model;
    EntryTableHeader* m_header;
    Place m_place;
};

} // namespace tallyroom
