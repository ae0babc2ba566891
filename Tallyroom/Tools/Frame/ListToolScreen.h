#pragma once

#include "Controls/CategoryChips.h"
#include "Rows/EntryTableStyle.h"
#include "Tools/Frame/ListToolViewModel.h"
#include "Tools/Frame/ToolScreen.h"

class QPushButton;

namespace tallyroom {

class EntryTable;

/// What a list tool's screen says of itself and of its rows.
struct ListToolStyle : ToolText {
    EntryTableStyle table;
    /// Where the settings keep the choice of the table's optional columns.
    QString columnsKey{};
    /// The categories that the list can be narrowed down to, for tools that know some.
    std::vector<CategoryChips::Chip> categories{};

    /// Entries that can be deleted in one go; none without a noun.
    struct Sweep {
        QString noun; ///< "ancien"; of many it takes an "s"
        std::function<std::vector<Entry>()> entries;
    };

    Sweep sweep{};
    /// What the tool has to say before `entries` are deleted, besides `deletionWarning`; may be none.
    std::function<QString(const std::vector<Entry>& entries)> warning{};
};

/// The screen of a tool that lists entries in a table. Main thread.
class ListToolScreen : public ToolScreen {
    Q_OBJECT

public:
    /// `tool` must outlive the screen.
    ListToolScreen(ListToolViewModel& tool, const ListToolStyle& style, QWidget* parent = nullptr);

    void exportEntries() override;

protected:
    [[nodiscard]] EntryTable& table() const { return *m_table; }

    [[nodiscard]] QString summary() const override;
    [[nodiscard]] Caution caution(const std::vector<Entry>& entries) const override;
    void showEntries() override;
    void showFiltered() override;

private:
    void showChips();
    void addChips(const std::vector<CategoryChips::Chip>& chips);
    void addSweep();
    void showSweep();
    [[nodiscard]] QString sweepRemark() const;
    ListToolScreen(ListToolViewModel& tool, const ListToolStyle& style, EntryTable* table, QWidget* parent);

    ListToolViewModel& m_list;
    ListToolStyle::Sweep m_sweep;
    std::function<QString(const std::vector<Entry>&)> m_warning;
    EntryTable* m_table;
    CategoryChips* m_chips = nullptr;     // where the tool knows categories
    QPushButton* m_sweepButton = nullptr; // where there is a sweep
};

} // namespace tallyroom
