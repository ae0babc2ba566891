#include "Rows/EntryTableModel.h"

#include "Rows/EntryTableHeader.h"
#include "Text/FileUrlText.h"
#include "Text/PlainText.h"
#include "Text/UnreadText.h"
#include "Theme/FileKindPresentation.h"

namespace tallyroom {

EntryTableModel::EntryTableModel(EntryTableStyle style, QObject* parent)
    : EntryRowsModel(parent), m_style(std::move(style))
{
    m_request.name = m_style.name;
    for (const EntryTableColumn& column : m_style.columns) {
        m_chosen.push_back(!column.isOptional());
    }
    connect(&m_arranger, &EntryArranger::arranged, this, &EntryTableModel::takeRows);
}

const EntryTableColumn* EntryTableModel::ownColumn(int column) const
{
    const bool isOwn = column >= firstOwnColumn && column < sizeColumn();
    return isOwn ? &m_style.columns[static_cast<std::size_t>(column - firstOwnColumn)] : nullptr;
}

bool EntryTableModel::isChosen(int column) const
{
    return ownColumn(column) == nullptr || m_chosen[static_cast<std::size_t>(column - firstOwnColumn)];
}

void EntryTableModel::setChosen(int column, bool isChosen)
{
    const auto number = static_cast<std::size_t>(column - firstOwnColumn);
    m_chosen[number] = isChosen;
    const EntrySortOrder& order = m_request.order;
    if (!isChosen && order.key == EntrySortOrder::Key::column && order.column == number) {
        setSortOrder({}); // nobody could see what the rows are sorted by
    }
}

void EntryTableModel::setEntries(const EntryList& entries)
{
    if (entries.isSameSnapshot(m_request.entries)) {
        return;
    }
    m_request.entries = entries;
    // An emptied list means another folder: rows of the old one must not come any more.
    arrange(entries.empty() ? EntryArranger::IfBusy::cancel : EntryArranger::IfBusy::letFinish);
}

void EntryTableModel::setFilter(Filter filter)
{
    m_request.filter = std::move(filter);
    arrange(EntryArranger::IfBusy::cancel);
}

void EntryTableModel::setSortOrder(const EntrySortOrder& order)
{
    if (order == m_request.order) {
        return;
    }
    m_request.order = order;
    m_request.sortKey = nullptr;
    if (order.key == EntrySortOrder::Key::column && order.column < m_style.columns.size()) {
        m_request.sortKey = m_style.columns[order.column].sortKey;
    }
    Q_EMIT sortOrderChanged();
    arrange(EntryArranger::IfBusy::cancel);
}

void EntryTableModel::arrange(EntryArranger::IfBusy ifBusy)
{
    m_request.absent = selection().absent();
    m_arranger.arrange(m_request, ifBusy);
}

void EntryTableModel::takeRows(const EntryArrangement& rows)
{
    const RunningRows running{m_allRunning, m_request, rows};
    replaceRows(rowCount(), static_cast<int>(rows.rowCount() + running.count()), [&] {
        m_rows = rows;
        m_running = running;
        selection().follow(rows.entries(), rows.shown(), rows.shownBytes(), rows.found());
    });
    if (selection().isSearchDue() && rows.entries().isSameSnapshot(m_request.entries)) {
        arrange(EntryArranger::IfBusy::letFinish);
    }
}

void EntryTableModel::setRunning(std::vector<Entry> running)
{
    if (running.empty() && m_allRunning.empty()) {
        return;
    }
    m_allRunning = std::move(running);
    m_runningBytes = 0;
    for (const Entry& entry : m_allRunning) {
        m_runningBytes = saturatedSum(m_runningBytes, entry.sizeBytes);
    }
    const RunningRows placed{m_allRunning, m_request, m_rows};
    changeRows(
        rowCount(), static_cast<int>(m_rows.rowCount() + placed.count()), [&] { m_running = placed; },
        [this] { Q_EMIT runningAboutToChange(); }, [this] { Q_EMIT runningChanged(); });
}

const Entry& EntryTableModel::entry(int row) const
{
    const auto running = m_running.find(row);
    return running ? m_running.entry(*running) : m_rows.entry(m_running.arrangedRow(row));
}

std::optional<std::uint32_t> EntryTableModel::positionAt(int row) const
{
    return isRunning(row) ? std::nullopt : std::optional{m_rows.position(m_running.arrangedRow(row))};
}

std::optional<EntrySortOrder::Key> EntryTableModel::sortKey(int column) const
{
    if (column == nameColumn) {
        return EntrySortOrder::Key::name;
    }
    if (column == sizeColumn()) {
        return EntrySortOrder::Key::size;
    }
    const EntryTableColumn* const own = ownColumn(column);
    return own != nullptr && own->sortKey ? std::optional{EntrySortOrder::Key::column} : std::nullopt;
}

std::string EntryTableModel::shownName(const Entry& entry) const
{
    return m_style.name ? m_style.name(entry) : entry.name;
}

QString EntryTableModel::nameText(const Entry& entry) const
{
    return FileUrlText::display(shownName(entry));
}

int EntryTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.rowCount() + m_running.count());
}

int EntryTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : sizeColumn() + 1;
}

QVariant EntryTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const Entry& entry = this->entry(index.row());
    if (role == Qt::DisplayRole) {
        return text(entry, index.column());
    }
    if (role == Qt::AccessibleTextRole) {
        return accessibleText(index.row(), index.column());
    }
    if (role == Qt::ToolTipRole && index.column() == sizeColumn()) {
        return UnreadText::toolTip(entry);
    }
    if (role == Qt::CheckStateRole && index.column() == checkColumn) {
        return isChecked(index.row())         ? Qt::Checked
               : isPartlyChecked(index.row()) ? Qt::PartiallyChecked
                                              : Qt::Unchecked;
    }
    const bool isAboutMore = role == Qt::ToolTipRole || role == Qt::AccessibleDescriptionRole;
    if (isAboutMore && index.column() == nameColumn) {
        QString more = m_style.toolTip ? m_style.toolTip(entry) : QString{};
        if (role == Qt::AccessibleDescriptionRole) {
            return more;
        }
        if (more.isEmpty()) {
            more = badgeWords(entry).join(QLatin1Char{'\n'}); // a narrow row cuts them short
        }
        return more.isEmpty() ? QVariant{} : plainToolTip(more);
    }
    return {};
}

QStringList EntryTableModel::badgeWords(const Entry& entry) const
{
    QStringList words;
    if (m_style.badges) {
        for (const EntryBadge& badge : m_style.badges(entry)) {
            words += badge.text;
        }
    }
    return words;
}

QString EntryTableModel::text(const Entry& entry, int column) const
{
    if (column == checkColumn) {
        return {};
    }
    if (column == nameColumn) {
        return nameText(entry);
    }
    if (column == sizeColumn()) {
        return UnreadText::size(entry);
    }
    return ownColumn(column)->text(entry);
}

QString EntryTableModel::spokenText(const Entry& entry, int column) const
{
    const EntryTableColumn& own = *ownColumn(column);
    return own.spoken ? own.spoken(entry) : own.text(entry);
}

QString EntryTableModel::accessibleText(int row, int column) const
{
    const Entry& entry = this->entry(row);
    if (column == checkColumn) {
        return accessibleCheckBox(nameText(entry));
    }
    if (column == sizeColumn()) {
        return UnreadText::spokenSize(entry);
    }
    if (column != nameColumn) {
        return spokenText(entry, column);
    }
    // The name cell is the current one: it speaks for the whole row.
    QStringList parts{nameText(entry), kindName(entry)};
    parts += badgeWords(entry);
    if (m_style.secondLine) {
        parts += m_style.secondLine(entry);
    }
    for (int other = firstOwnColumn; other < sizeColumn(); ++other) {
        if (const QString words = isChosen(other) ? spokenText(entry, other) : QString{}; !words.isEmpty()) {
            parts += words;
        }
    }
    parts += UnreadText::spokenSize(entry);
    parts += isRunning(row) ? QStringLiteral("en cours de mesure") : accessibleCheck(row);
    return parts.join(QStringLiteral(", "));
}

QVariant EntryTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal) {
        return {};
    }
    if (role == EntryTableHeader::widthRole) {
        return ownColumn(section) != nullptr && ownColumn(section)->isOptional();
    }
    if (role == Qt::AccessibleTextRole && section == checkColumn) {
        return QStringLiteral("Coché");
    }
    if (role == Qt::TextAlignmentRole && ownColumn(section) != nullptr && ownColumn(section)->isNumeric) {
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    }
    if ((role != Qt::DisplayRole && role != Qt::AccessibleTextRole) || section == checkColumn) {
        return {};
    }
    if (section == nameColumn) {
        return m_style.firstColumnTitle;
    }
    if (section == sizeColumn()) {
        return QStringLiteral("Taille");
    }
    return ownColumn(section)->title;
}

} // namespace tallyroom
