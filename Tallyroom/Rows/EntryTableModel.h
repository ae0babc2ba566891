#pragma once

#include "Model/CheckedArithmetic.h"
#include "Rows/EntryArranger.h"
#include "Rows/EntryRowsModel.h"
#include "Rows/EntryTableStyle.h"
#include "Rows/RunningRows.h"

namespace tallyroom {

/// The rows of an `EntryTable`: an arrangement of its list. Texts are made when they are asked for. Main
/// thread.
class EntryTableModel : public EntryRowsModel {
    Q_OBJECT

public:
    using Filter = std::function<bool(const Entry&)>;

    /// Columns in order: check, name, the style's own, size.
    static constexpr int firstOwnColumn = 2;

    explicit EntryTableModel(EntryTableStyle style, QObject* parent = nullptr);

    [[nodiscard]] const EntryTableStyle& style() const { return m_style; }

    [[nodiscard]] int sizeColumn() const { return firstOwnColumn + static_cast<int>(m_style.columns.size()); }

    /// The style's column behind one of the table's; null for check, name and size.
    [[nodiscard]] const EntryTableColumn* ownColumn(int column) const;

    /// Whether a column is shown where there is room; optional ones are when they are chosen.
    [[nodiscard]] bool isChosen(int column) const;
    void setChosen(int column, bool isChosen);

    /// The sum of all sizes listed and counted so far, also of what the filter hides. Bytes.
    [[nodiscard]] std::int64_t countedBytes() const
    {
        return saturatedSum(m_rows.totalBytes(), m_runningBytes);
    }

    void setEntries(const EntryList& entries);
    void setFilter(Filter filter);
    void setSortOrder(const EntrySortOrder& order);

    [[nodiscard]] const EntrySortOrder& sortOrder() const { return m_request.order; }

    /// The arrangement of the list. Among its rows lie those of what is still being measured.
    [[nodiscard]] const EntryArrangement& rows() const { return m_rows; }

    /// Shows entries that are still being measured and not in the list, with their sizes so far: they cannot
    /// be checked. O(their number × log of the rows).
    void setRunning(std::vector<Entry> running);

    [[nodiscard]] bool isRunning(int row) const { return m_running.find(row).has_value(); }

    [[nodiscard]] const RunningRows& running() const { return m_running; }

    [[nodiscard]] std::int64_t largestSize() const
    {
        return std::max(m_rows.largestSize(), m_running.largestSize());
    }

    [[nodiscard]] const Entry& entry(int row) const;

    [[nodiscard]] const Entry* shownAt(int row) const override { return &entry(row); }

    [[nodiscard]] std::optional<std::uint32_t> positionAt(int row) const override;

    [[nodiscard]] bool isUpToDate() const override
    {
        return m_rows.entries().isSameSnapshot(m_request.entries) && !selection().isSearchDue();
    }

    /// What a column sorts by, if it can be sorted.
    [[nodiscard]] std::optional<EntrySortOrder::Key> sortKey(int column) const;

    /// The entry's name to draw.
    [[nodiscard]] QString nameText(const Entry& entry) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

Q_SIGNALS:
    void sortOrderChanged();
    /// Around a change of the rows of what is still being measured.
    void runningAboutToChange();
    void runningChanged();

protected:
    [[nodiscard]] std::string shownName(const Entry& entry) const override;

private:
    void arrange(EntryArranger::IfBusy ifBusy);
    void takeRows(const EntryArrangement& rows);
    [[nodiscard]] QString text(const Entry& entry, int column) const;
    [[nodiscard]] QString spokenText(const Entry& entry, int column) const;
    [[nodiscard]] QStringList badgeWords(const Entry& entry) const;
    [[nodiscard]] QString accessibleText(int row, int column) const;

    EntryTableStyle m_style;
    std::vector<bool> m_chosen; // of the style's columns
    EntryArrangement::Request m_request;
    EntryArrangement m_rows;
    EntryArranger m_arranger;
    std::vector<Entry> m_allRunning; // also those that the filter hides
    std::int64_t m_runningBytes = 0;
    RunningRows m_running;
};

} // namespace tallyroom
