#pragma once

#include "Rows/Selection.h"

#include <QAbstractTableModel>

#include <optional>
#include <string>

namespace tallyroom {

/// Rows of entries that can be checked. Which rows there are is a matter of the derived models; rows that
/// show no entry cannot be checked. Main thread.
class EntryRowsModel : public QAbstractTableModel {
    Q_OBJECT

public:
    static constexpr int checkColumn = 0;
    static constexpr int nameColumn = 1;

    explicit EntryRowsModel(QObject* parent = nullptr);

    /// The checks, and the list that the rows show.
    [[nodiscard]] Selection& selection() { return m_selection; }

    [[nodiscard]] const Selection& selection() const { return m_selection; }

    /// The position of the entry that a row shows in the selection's list; none where it shows something
    /// else.
    [[nodiscard]] virtual std::optional<std::uint32_t> positionAt(int row) const = 0;

    /// False while other rows are being made.
    [[nodiscard]] virtual bool isUpToDate() const { return true; }

    [[nodiscard]] const Entry* entryAt(int row) const;

    /// The same, also for an entry that can be entered and not checked.
    [[nodiscard]] virtual const Entry* shownAt(int row) const { return entryAt(row); }

    [[nodiscard]] bool isChecked(int row) const;

    /// Whether something below a row's entry is checked.
    [[nodiscard]] bool isPartlyChecked(int row) const;

    /// The row that shows `url`, looked for from `likelyRow` on. O(n).
    [[nodiscard]] std::optional<int> rowOf(const FileUrl& url, int likelyRow) const;

    /// The rows between the two are left unchecked where they need a check of their own.
    void setRangeChecked(int firstRow, int lastRow, bool isChecked);

    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

    /// The first row from `start` on, around the end, whose entry's name begins with `value`: what the
    /// toolkit asks for when letters are typed.
    [[nodiscard]] QModelIndexList match(const QModelIndex& start, int role, const QVariant& value, int hits,
                                        Qt::MatchFlags flags) const override;

Q_SIGNALS:
    /// Around every change of the rows.
    void rowsAboutToChange();
    void rowsChanged();

protected:
    /// The name that a row shows, in bytes.
    [[nodiscard]] virtual std::string shownName(const Entry& entry) const { return entry.name; }

    /// The accessible text for the check of a row.
    [[nodiscard]] QString accessibleCheck(int row) const;

    /// The accessible text for the check box of the entry drawn as `name`.
    [[nodiscard]] static QString accessibleCheckBox(const QString& name);

    /// Makes the rows `after` instead of `before` many and calls `take` in between. Rows come and go at the
    /// end: what they show is asked anew in any case, and nothing has to be moved.
    template <class Take>
    void replaceRows(int before, int after, const Take& take)
    {
        changeRows(
            before, after, take, [this] { Q_EMIT rowsAboutToChange(); }, [this] { Q_EMIT rowsChanged(); });
    }

    /// The same with other calls around it.
    template <class Take, class Begin, class End>
    void changeRows(int before, int after, const Take& take, const Begin& begin, const End& end)
    {
        begin();
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
        end();
    }

private:
    Selection m_selection;
};

} // namespace tallyroom
