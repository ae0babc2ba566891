#pragma once

#include "Rows/EntryRows.h"
#include "Tools/Duplicates/DuplicatesViewModel.h"

namespace tallyroom {

class DuplicateTableModel;

/// Groups of identical files as sections, with their copies to check below them. Space on a section's row
/// checks what need not stay of its copies. Main thread.
class DuplicateTable : public EntryRows {
    Q_OBJECT

public:
    explicit DuplicateTable(QWidget* parent = nullptr);

    /// Shows those of `groups` whose indices `shown` lists.
    void setGroups(DuplicateGroups groups, const std::vector<std::uint32_t>& shown);

    void setPolicy(const KeepPolicy& policy);

Q_SIGNALS:
    /// Whether anything in the folder of the copy may be proposed from now on.
    void protectionRequested(const tallyroom::FileUrl& copy, bool isProtected);

protected:
    void addActions(QMenu& menu, const Entry& entry) override;
    void addSectionActions(QMenu& menu, int row) override;
    void rememberPlace() override;
    void restorePlace() override;
    void resizeEvent(QResizeEvent* event) override;

private:
    DuplicateTable(DuplicateTableModel* model, QWidget* parent);

    DuplicateTableModel& m_model;
    int m_rowBefore = -1;
};

} // namespace tallyroom
