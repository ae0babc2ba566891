#pragma once

#include "Components/EntryRows.h"
#include "Components/EntryRowsView.h"
#include "Tools/Duplicates/DuplicatesViewModel.h"

namespace tallyroom {

class DuplicateTableModel;

/// The part of a `DuplicateTable` that scrolls. Main thread.
class DuplicateTableView : public EntryRowsView {
    Q_OBJECT

public:
    explicit DuplicateTableView(DuplicateTableModel& model, QWidget* parent = nullptr);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void keepPlace();

    int m_rowBefore = -1;
};

/// Groups of identical files as sections, with their copies to check below them. Space on a section's row
/// checks what need not stay of its copies. Main thread.
class DuplicateTable : public EntryRows {
    Q_OBJECT

public:
    explicit DuplicateTable(QWidget* parent = nullptr);

    /// Shows those of `groups` whose indices `shown` lists.
    void setGroups(DuplicateGroups groups, const std::vector<std::uint32_t>& shown);

Q_SIGNALS:
    void openRequested(const tallyroom::Entry& entry);

protected:
    void addActions(QMenu& menu, const Entry& entry) override;
    void addSectionActions(QMenu& menu, int row) override;

private:
    DuplicateTable(DuplicateTableModel* model, QWidget* parent);
    DuplicateTable(DuplicateTableModel* model, DuplicateTableView* view, QWidget* parent);

    DuplicateTableModel* m_model;
};

} // namespace tallyroom
