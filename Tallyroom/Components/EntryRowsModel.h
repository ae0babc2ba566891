#pragma once

#include "Model/Entry.h"

#include <QAbstractTableModel>

#include <optional>
#include <unordered_set>

namespace tallyroom {

/// Rows of entries that can be checked, and the checked locations, those included that no row shows. Which
/// rows there are is a matter of the derived models; rows that show no entry cannot be checked. Main thread.
class EntryRowsModel : public QAbstractTableModel {
    Q_OBJECT

public:
    using Selection = std::unordered_set<FileUrl>;

    static constexpr int checkColumn = 0;
    static constexpr int nameColumn = 1;

    /// The entry that a row shows; null for rows that show something else.
    [[nodiscard]] virtual const Entry* entryAt(int row) const = 0;

    /// The row that shows `url`, looked for from `likelyRow` on.
    [[nodiscard]] virtual std::optional<int> rowOf(const FileUrl& url, int likelyRow) const = 0;

    void setSelection(Selection selection);

    [[nodiscard]] const Selection& selection() const { return m_selection; }

    [[nodiscard]] bool isChecked(const Entry& entry) const { return m_selection.contains(entry.url); }

    /// The user's changes; `selectionEdited` follows each.
    void setChecked(const FileUrl& url, bool isChecked);
    void setRangeChecked(int firstRow, int lastRow, bool isChecked);

    /// What assistive technology is told of an entry's check.
    [[nodiscard]] QString accessibleCheck(const Entry& entry) const;

    /// What the check box of a row is called, whose entry is drawn as `name`.
    [[nodiscard]] static QString accessibleCheckBox(const QString& name);

    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

Q_SIGNALS:
    /// Around every change of the rows.
    void rowsAboutToChange();
    void rowsChanged();
    void selectionEdited();

protected:
    using QAbstractTableModel::QAbstractTableModel;

    /// Makes the rows `after` instead of `before` many and calls `take` in between. Rows come and go at the
    /// end: what they show is asked anew in any case, and nothing has to be moved.
    template <class Take>
    void replaceRows(int before, int after, const Take& take)
    {
        Q_EMIT rowsAboutToChange();
        if (after > before) {
            beginInsertRows({}, before, after - 1);
            take();
            endInsertRows();
        } else if (after < before) {
            beginRemoveRows({}, after, before - 1);
            take();
            endRemoveRows();
        } else {
            take();
        }
        if (after > 0) {
            Q_EMIT dataChanged(index(0, 0), index(after - 1, columnCount({}) - 1));
        }
        Q_EMIT rowsChanged();
    }

private:
    void checksChanged();

    Selection m_selection;
};

} // namespace tallyroom
