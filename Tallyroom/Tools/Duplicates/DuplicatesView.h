#pragma once

#include "Tools/Duplicates/DuplicatesViewModel.h"
#include "Tools/Frame/ToolScreen.h"

class QPushButton;

namespace tallyroom {

class DuplicateTable;

/// The screen of the duplicates: the common frame around groups, the smallest size, and the check of all
/// copies but one. Main thread.
class DuplicatesView : public ToolScreen {
    Q_OBJECT

public:
    /// `tool` must outlive the screen.
    explicit DuplicatesView(DuplicatesViewModel& tool, QWidget* parent = nullptr);

    void exportEntries() override;

protected:
    [[nodiscard]] QString summary() const override;
    [[nodiscard]] QString notice() const override;
    [[nodiscard]] Caution caution(const std::vector<Entry>& entries) const override;
    void showEntries() override;

private:
    DuplicatesView(DuplicatesViewModel& tool, DuplicateTable* table, QWidget* parent);

    void addKeepRules();
    void chooseRule(KeepRule rule);

    DuplicatesViewModel& m_duplicates;
    DuplicateTable* m_table;
    QPushButton* m_checkRedundant;
};

} // namespace tallyroom
