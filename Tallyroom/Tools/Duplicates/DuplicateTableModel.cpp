#include "Tools/Duplicates/DuplicateTableModel.h"

#include "Model/CheckedArithmetic.h"
#include "Text/AgeText.h"
#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Text/PlainText.h"
#include "Text/SizeText.h"
#include "Theme/FileKindPresentation.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace tallyroom {

DuplicateTableModel::DuplicateTableModel(QObject* parent) : EntryRowsModel(parent)
{
    reserveByPolicy();
}

void DuplicateTableModel::reserveByPolicy()
{
    selection().reserve([policy = m_policy](const Entry& entry) { return policy->isReserved(entry.url); });
}

void DuplicateTableModel::setPolicy(const KeepPolicy& policy)
{
    m_policy = std::make_shared<const KeepPolicy>(policy);
    reserveByPolicy();
    if (rowCount() > 0) {
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, detailColumn));
    }
}

void DuplicateTableModel::setGroups(DuplicateGroups groups, const std::vector<std::uint32_t>& shown)
{
    if (groups == m_groups && shown == m_shown) {
        return;
    }
    m_shown = shown;
    std::vector<Row> rows;
    for (const std::uint32_t group : shown) {
        rows.push_back({group, head});
        for (std::uint32_t copy = 0; copy < (*groups)[group].entries.size(); ++copy) {
            rows.push_back({group, copy});
        }
    }
    replaceRows(rowCount(), static_cast<int>(rows.size()), [&] {
        if (groups != m_groups) {
            m_groups = std::move(groups);
            listEntries();
        }
        m_rows = std::move(rows);
        PositionSet positions;
        std::int64_t bytes = 0;
        for (int row = 0; row < rowCount(); ++row) {
            if (const std::optional<std::uint32_t> position = positionAt(row)) {
                positions.insert(*position);
                bytes = checkedSum(bytes, m_entries[*position].sizeBytes);
            }
        }
        selection().follow(m_entries, std::move(positions), bytes);
    });
}

void DuplicateTableModel::listEntries()
{
    std::vector<Entry> entries;
    m_starts.clear();
    for (const DuplicateGroup& group : *m_groups) {
        m_starts.push_back(static_cast<std::uint32_t>(entries.size()));
        entries.insert(entries.end(), group.entries.begin(), group.entries.end());
    }
    m_entries = EntryList{std::move(entries)};
}

const DuplicateGroup& DuplicateTableModel::groupAt(int row) const
{
    return (*m_groups)[rowAt(row).group];
}

std::optional<std::uint32_t> DuplicateTableModel::positionAt(int row) const
{
    return isHead(row) ? std::nullopt : std::optional{m_starts[rowAt(row).group] + rowAt(row).copy};
}

PositionSet DuplicateTableModel::copies(int row, const std::vector<bool>& which) const
{
    PositionSet positions;
    for (std::uint32_t copy = 0; copy < which.size(); ++copy) {
        if (which[copy]) {
            positions.insert(m_starts[rowAt(row).group] + copy);
        }
    }
    return positions;
}

PositionSet DuplicateTableModel::allCopies(int row) const
{
    return copies(row, std::vector<bool>(groupAt(row).entries.size(), true));
}

PositionSet DuplicateTableModel::redundantCopies(int row) const
{
    return copies(row, m_policy->redundant(groupAt(row)));
}

bool DuplicateTableModel::isGroupChecked(int row) const
{
    const PositionSet redundant = redundantCopies(row);
    return !redundant.empty() && selection().checkedOf(allCopies(row)) == redundant;
}

void DuplicateTableModel::toggleGroup(int row)
{
    selection().assign(allCopies(row), isGroupChecked(row) ? PositionSet{} : redundantCopies(row));
}

void DuplicateTableModel::checkOthers(const Entry& kept)
{
    if (const std::optional<int> row = rowOf(kept.url, 0)) {
        selection().assign(allCopies(*row),
                           copies(*row, m_policy->redundantBeside(groupAt(*row), rowAt(*row).copy)));
    }
}

std::vector<EntryBadge> DuplicateTableModel::badges(int row) const
{
    const DuplicateGroup& group = groupAt(row);
    std::vector<EntryBadge> badges;
    if (isHead(row)) {
        if (KeepPolicy::isManaged(group)) {
            badges.push_back({QStringLiteral("copies gérées par des outils"), Theme::Colour::secondary});
        }
        return badges;
    }
    const std::size_t copy = rowAt(row).copy;
    const FileIdentity& identity = group.identities[copy];
    if (!isChecked(row) && !selection().checkedOf(allCopies(row)).empty()) {
        badges.push_back({QStringLiteral("conservé"), Theme::Colour::done});
    }
    // Of the paths that lead to one file, all but the first say so: removing one of them frees nothing.
    const auto isSame = [&identity](const FileIdentity& other) { return other.isSameFile(identity); };
    if (std::any_of(group.identities.begin(), group.identities.begin() + static_cast<std::ptrdiff_t>(copy),
                    isSame)) {
        badges.push_back({identity.links > 1 ? QStringLiteral("lien physique, rien à récupérer")
                                             : QStringLiteral("même fichier, rien à récupérer"),
                          Theme::Colour::old});
    }
    if (group.inTrash[copy]) {
        badges.push_back({QStringLiteral("dans la corbeille"), Theme::Colour::secondary});
    }
    if (m_policy->isProtected(group.entries[copy].url)) {
        badges.push_back({QStringLiteral("protégé"), Theme::Colour::done});
    } else if (KeepPolicy::isManaged(group.entries[copy].url)) {
        badges.push_back({QStringLiteral("géré par un outil"), Theme::Colour::secondary});
    }
    return badges;
}

QString DuplicateTableModel::amount(const DuplicateGroup& group)
{
    return QStringLiteral("%1 × %2").arg(NumberText::grouped(group.entries.size()),
                                         sizeText(group.sizeBytes()));
}

DuplicateTableModel::Gain DuplicateTableModel::gain(const DuplicateGroup& group)
{
    const std::int64_t bytes = group.reclaimableBytes();
    return bytes > 0 ? Gain{sizeText(bytes), QStringLiteral("récupérables")}
                     : Gain{{}, QStringLiteral("rien à récupérer")};
}

int DuplicateTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int DuplicateTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : detailColumn + 1;
}

QVariant DuplicateTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    if (role == Qt::DisplayRole) {
        return text(index.row(), index.column());
    }
    if (role == Qt::AccessibleTextRole) {
        return accessibleText(index.row(), index.column());
    }
    const Entry* const entry = entryAt(index.row());
    if (role == Qt::ToolTipRole && entry != nullptr && index.column() == nameColumn) {
        QStringList lines{FileUrlText::display(entry->url)};
        std::ranges::transform(badges(index.row()), std::back_inserter(lines), &EntryBadge::text);
        return plainToolTip(lines.join(QLatin1Char{'\n'}));
    }
    if (role == Qt::ToolTipRole && entry != nullptr && index.column() == detailColumn) {
        return dateText(groupAt(index.row()).identities[rowAt(index.row()).copy].modifiedAt);
    }
    if (role == Qt::CheckStateRole && entry != nullptr && index.column() == checkColumn) {
        return isChecked(index.row()) ? Qt::Checked : Qt::Unchecked;
    }
    return {};
}

QString DuplicateTableModel::text(int row, int column) const
{
    const DuplicateGroup& group = groupAt(row);
    const Entry* const entry = entryAt(row);
    if (column == nameColumn) {
        return entry == nullptr ? FileUrlText::display(group.entries.front().name)
                                : FileUrlText::displayFromHome(entry->url);
    }
    if (column != detailColumn) {
        return {};
    }
    if (entry == nullptr) {
        const Gain gained = gain(group);
        return gained.bytes.isEmpty() ? gained.word : gained.bytes + QLatin1Char{' '} + gained.word;
    }
    return ageText(group.identities[rowAt(row).copy].modifiedAt, std::chrono::system_clock::now());
}

QString DuplicateTableModel::accessibleText(int row, int column) const
{
    const DuplicateGroup& group = groupAt(row);
    const Entry* const entry = entryAt(row);
    if (column == checkColumn && entry != nullptr) {
        return accessibleCheckBox(text(row, nameColumn));
    }
    if (column != nameColumn) {
        return text(row, column);
    }
    QStringList parts{text(row, nameColumn)};
    if (entry == nullptr) {
        parts.prepend(QStringLiteral("Groupe"));
        parts += displayName(FileKind::of(group.entries.front()));
        parts += amount(group);
    }
    for (const EntryBadge& badge : badges(row)) {
        parts += badge.text;
    }
    parts += text(row, detailColumn);
    if (entry != nullptr) {
        parts += accessibleCheck(row);
    }
    return parts.join(QStringLiteral(", "));
}

} // namespace tallyroom
