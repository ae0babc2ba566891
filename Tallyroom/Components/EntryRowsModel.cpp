#include "Components/EntryRowsModel.h"

namespace tallyroom {

void EntryRowsModel::setSelection(Selection selection)
{
    m_selection = std::move(selection);
    checksChanged();
}

void EntryRowsModel::setChecked(const FileUrl& url, bool isChecked)
{
    if (isChecked ? m_selection.insert(url).second : m_selection.erase(url) > 0) {
        checksChanged();
        Q_EMIT selectionEdited();
    }
}

void EntryRowsModel::setRangeChecked(int firstRow, int lastRow, bool isChecked)
{
    if (isChecked) {
        m_selection.reserve(m_selection.size() + static_cast<std::size_t>(lastRow - firstRow + 1));
    }
    for (int row = firstRow; row <= lastRow; ++row) {
        const Entry* const entry = entryAt(row);
        if (entry == nullptr) {
            continue;
        }
        if (isChecked) {
            m_selection.insert(entry->url);
        } else {
            m_selection.erase(entry->url);
        }
    }
    checksChanged();
    Q_EMIT selectionEdited();
}

void EntryRowsModel::checksChanged()
{
    const int rows = rowCount({});
    if (rows > 0) {
        // The other cells may say what follows from the checks.
        Q_EMIT dataChanged(index(0, checkColumn), index(rows - 1, columnCount({}) - 1), {Qt::CheckStateRole});
    }
}

QString EntryRowsModel::accessibleCheck(const Entry& entry) const
{
    return isChecked(entry) ? QStringLiteral("coché") : QStringLiteral("non coché");
}

QString EntryRowsModel::accessibleCheckBox(const QString& name)
{
    return QStringLiteral("Cocher ") + name;
}

Qt::ItemFlags EntryRowsModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    const bool isCheckable = index.column() == checkColumn && entryAt(index.row()) != nullptr;
    return isCheckable ? flags | Qt::ItemIsUserCheckable : flags;
}

bool EntryRowsModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::CheckStateRole || index.column() != checkColumn || index.row() >= rowCount({})) {
        return false;
    }
    const Entry* const entry = entryAt(index.row());
    if (entry == nullptr) {
        return false;
    }
    const FileUrl url = entry->url;
    setChecked(url, value.toInt() == Qt::Checked);
    return true;
}

} // namespace tallyroom
