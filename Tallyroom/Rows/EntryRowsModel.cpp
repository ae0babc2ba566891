#include "Rows/EntryRowsModel.h"

#include "Rows/EntryArrangement.h"
#include "Text/TextFilter.h"

namespace tallyroom {

EntryRowsModel::EntryRowsModel(QObject* parent) : QAbstractTableModel(parent)
{
    connect(&m_selection, &Selection::changed, this, [this] {
        if (const int rows = rowCount({}); rows > 0) {
            // Other cells may show text that depends on the checks.
            Q_EMIT dataChanged(index(0, checkColumn), index(rows - 1, columnCount({}) - 1),
                               {Qt::CheckStateRole});
        }
    });
}

const Entry* EntryRowsModel::entryAt(int row) const
{
    const std::optional<std::uint32_t> position = positionAt(row);
    return position ? &m_selection.entries()[*position] : nullptr;
}

bool EntryRowsModel::isChecked(int row) const
{
    const std::optional<std::uint32_t> position = positionAt(row);
    return position && m_selection.contains(*position);
}

bool EntryRowsModel::isPartlyChecked(int row) const
{
    const std::optional<std::uint32_t> position = positionAt(row);
    return position && m_selection.isPartlyChecked(*position);
}

std::optional<int> EntryRowsModel::rowOf(const FileUrl& url, int likelyRow) const
{
    const auto row = findOutwards(static_cast<std::size_t>(rowCount({})), static_cast<std::size_t>(likelyRow),
                                  [&](std::size_t other) {
                                      const Entry* const entry = shownAt(static_cast<int>(other));
                                      return entry != nullptr && entry->url == url;
                                  });
    return row ? std::optional{static_cast<int>(*row)} : std::nullopt;
}

void EntryRowsModel::setRangeChecked(int firstRow, int lastRow, bool isChecked)
{
    PositionSet range;
    for (int row = firstRow; row <= lastRow; ++row) {
        const std::optional<std::uint32_t> position = positionAt(row);
        const bool isEnd = row == firstRow || row == lastRow;
        if (position && (isEnd || !isChecked || !m_selection.needsOwnCheck(*position))) {
            range.insert(*position);
        }
    }
    m_selection.setRange(range, isChecked);
}

QString EntryRowsModel::accessibleCheck(int row) const
{
    return isChecked(row)         ? QStringLiteral("coché")
           : isPartlyChecked(row) ? QStringLiteral("contient des éléments cochés")
                                  : QStringLiteral("non coché");
}

QString EntryRowsModel::accessibleCheckBox(const QString& name)
{
    return QStringLiteral("Cocher ") + name;
}

Qt::ItemFlags EntryRowsModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    const bool isCheckable = index.column() == checkColumn && positionAt(index.row());
    return isCheckable ? flags | Qt::ItemIsUserCheckable : flags;
}

bool EntryRowsModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const bool isCheck = role == Qt::CheckStateRole && index.column() == checkColumn;
    if (!isCheck || index.row() >= rowCount({}) || !positionAt(index.row())) {
        return false;
    }
    setRangeChecked(index.row(), index.row(), value.toInt() == Qt::Checked);
    return true;
}

QModelIndexList EntryRowsModel::match(const QModelIndex& start, int /*role*/, const QVariant& value,
                                      int /*hits*/, Qt::MatchFlags /*flags*/) const
{
    const TextFilter text{value.toString()};
    const int rows = rowCount({});
    for (int step = 0; step < rows; ++step) {
        const int row = (start.row() + step) % rows;
        if (const Entry* const entry = shownAt(row); entry != nullptr && text.begins(shownName(*entry))) {
            return {index(row, nameColumn)};
        }
    }
    return {};
}

} // namespace tallyroom
