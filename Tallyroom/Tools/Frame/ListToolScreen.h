#pragma once

#include "Controls/CategoryChips.h"
#include "Rows/EntryTableStyle.h"
#include "Tools/Frame/ListToolViewModel.h"
#include "Tools/Frame/ToolScreen.h"

namespace tallyroom {

class EntryTable;

/// What a list tool's screen says of itself and of its rows.
struct ListToolStyle : ToolScreenStyle {
    EntryTableStyle table;
    /// Where the settings keep the choice of the table's optional columns.
    QString columnsKey{};
    /// The categories that the list can be narrowed down to, for tools that know some.
    std::vector<CategoryChips::Chip> categories{};
    /// What the summary ends with; may be none.
    std::function<QString()> remark{};
    /// What the tool has to say before `entries` are deleted, besides `deletionWarning`; may be none.
    std::function<QString(const std::vector<Entry>& entries)> warning{};
};

/// The screen of a tool that lists entries in a table. Main thread.
class ListToolScreen : public ToolScreen {
    Q_OBJECT

public:
    /// `tool` must outlive the screen.
    ListToolScreen(ListToolViewModel& tool, const ListToolStyle& style, QWidget* parent = nullptr);

    /// Puts a control of the tool's own into the header.
    void addOption(QWidget* option);

    /// Draws the rows and the summary again: an option has changed what they say.
    void showAgain();

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
    ListToolScreen(ListToolViewModel& tool, const ListToolStyle& style, EntryTable* table, QWidget* parent);

    ListToolViewModel& m_list;
    std::function<QString()> m_remark;
    std::function<QString(const std::vector<Entry>&)> m_warning;
    EntryTable* m_table;
    CategoryChips* m_chips = nullptr; // where the tool knows categories
};

} // namespace tallyroom
