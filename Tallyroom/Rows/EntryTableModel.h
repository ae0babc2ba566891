#pragma once

#include "Rows/EntryArranger.h"
#include "Rows/EntryRowsModel.h"
#include "Rows/EntryTableStyle.h"

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

    void setEntries(const EntryList& entries);
    void setFilter(Filter filter);
    void setSortOrder(const EntrySortOrder& order);

    [[nodiscard]] const EntrySortOrder& sortOrder() const { return m_request.order; }

    [[nodiscard]] const EntryArrangement& rows() const { return m_rows; }

    [[nodiscard]] const Entry& entry(int row) const { return m_rows.entry(static_cast<std::size_t>(row)); }

    [[nodiscard]] std::optional<std::uint32_t> positionAt(int row) const override
    {
        return m_rows.position(static_cast<std::size_t>(row));
    }

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

protected:
    [[nodiscard]] std::string shownName(const Entry& entry) const override;

private:
    void arrange(EntryArranger::IfBusy ifBusy);
    void takeRows(const EntryArrangement& rows);
    [[nodiscard]] QString text(const Entry& entry, int column) const;
    [[nodiscard]] QString accessibleText(int row, int column) const;

    EntryTableStyle m_style;
    EntryArrangement::Request m_request;
    EntryArrangement m_rows;
    EntryArranger m_arranger;
};

} // namespace tallyroom
