#pragma once

#include "Components/EntryArranger.h"
#include "Components/EntryTableStyle.h"

#include <QAbstractTableModel>

#include <unordered_set>

namespace tallyroom {

/// The rows of an `EntryTable`: an arrangement of its list, and the checked locations. Texts are made when
/// they are asked for. Main thread.
class EntryTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    using Filter = std::function<bool(const Entry&)>;
    using Selection = std::unordered_set<FileUrl>;

    /// Columns in order: check, name, the style's own, size.
    static constexpr int checkColumn = 0;
    static constexpr int nameColumn = 1;
    static constexpr int firstOwnColumn = 2;

    explicit EntryTableModel(EntryTableStyle style, QObject* parent = nullptr);

    [[nodiscard]] const EntryTableStyle& style() const { return m_style; }

    [[nodiscard]] int sizeColumn() const { return firstOwnColumn + static_cast<int>(m_style.columns.size()); }

    void setEntries(const EntryList& entries);
    void setFilter(Filter filter);
    void setSortOrder(const EntrySortOrder& order);
    void setSelection(Selection selection);

    [[nodiscard]] const EntryList& entries() const { return m_request.entries; }

    [[nodiscard]] const EntrySortOrder& sortOrder() const { return m_request.order; }

    [[nodiscard]] const Selection& selection() const { return m_selection; }

    [[nodiscard]] const EntryArrangement& rows() const { return m_rows; }

    [[nodiscard]] const Entry& entry(int row) const { return m_rows.entry(static_cast<std::size_t>(row)); }

    [[nodiscard]] bool isChecked(int row) const { return m_selection.contains(entry(row).url); }

    /// The user's changes; `selectionEdited` follows each.
    void setChecked(const FileUrl& url, bool isChecked);
    void setRangeChecked(int firstRow, int lastRow, bool isChecked);

    /// What a column sorts by, if it can be sorted.
    [[nodiscard]] std::optional<EntrySortOrder::Key> sortKey(int column) const;

    /// The entry's name to draw.
    [[nodiscard]] QString nameText(const Entry& entry) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

Q_SIGNALS:
    /// Around every change of the rows.
    void rowsAboutToChange();
    void rowsChanged();
    void sortOrderChanged();
    void selectionEdited();

private:
    void arrange(EntryArranger::Running running);
    void takeRows(const EntryArrangement& rows);
    void checksChanged();
    [[nodiscard]] QString text(const Entry& entry, int column) const;
    [[nodiscard]] QString accessibleText(const Entry& entry, int column) const;

    EntryTableStyle m_style;
    EntryArrangement::Request m_request;
    EntryArrangement m_rows;
    Selection m_selection;
    EntryArranger m_arranger;
};

} // namespace tallyroom
