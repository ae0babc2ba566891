#include "Tools/Duplicates/DuplicateTableModel.h"

#include "Bridge/FileUrlText.h"
#include "Bridge/SizeText.h"
#include "Components/FileKindPresentation.h"
#include "Tools/AgeText.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tallyroom {

void DuplicateTableModel::setGroups(DuplicateGroups groups, const std::vector<std::uint32_t>& shown)
{
    std::vector<Row> rows;
    for (const std::uint32_t group : shown) {
        rows.push_back({group, head});
        for (std::uint32_t copy = 0; copy < (*groups)[group].entries.size(); ++copy) {
            rows.push_back({group, copy});
        }
    }
    replaceRows(rowCount(), static_cast<int>(rows.size()), [&] {
        m_groups = std::move(groups);
        m_rows = std::move(rows);
    });
}

const DuplicateGroup& DuplicateTableModel::groupAt(int row) const
{
    return (*m_groups)[rowAt(row).group];
}

const Entry* DuplicateTableModel::entryAt(int row) const
{
    return isHead(row) ? nullptr : &groupAt(row).entries[rowAt(row).copy];
}

std::optional<int> DuplicateTableModel::rowOf(const FileUrl& url, int likelyRow) const
{
    const auto shows = [&](int row) {
        const Entry* const entry = entryAt(row);
        return entry != nullptr && entry->url == url;
    };
    if (likelyRow < rowCount() && shows(likelyRow)) {
        return likelyRow;
    }
    for (int row = 0; row < rowCount(); ++row) {
        if (shows(row)) {
            return row;
        }
    }
    return std::nullopt;
}

bool DuplicateTableModel::isGroupChecked(int row) const
{
    const DuplicateGroup& group = groupAt(row);
    const std::vector<bool> redundant = group.redundantBeside(group.keptCopy());
    for (std::size_t copy = 0; copy < redundant.size(); ++copy) {
        if (isChecked(group.entries[copy]) != redundant[copy]) {
            return false;
        }
    }
    return std::ranges::find(redundant, true) != redundant.end();
}

void DuplicateTableModel::toggleGroup(int row)
{
    const DuplicateGroup& group = groupAt(row);
    if (isGroupChecked(row)) {
        check(group, std::vector<bool>(group.entries.size(), false));
    } else {
        check(group, group.redundantBeside(group.keptCopy()));
    }
}

void DuplicateTableModel::checkOthers(const Entry& kept)
{
    if (const std::optional<int> row = rowOf(kept.url, 0)) {
        check(groupAt(*row), groupAt(*row).redundantBeside(rowAt(*row).copy));
    }
}

/// Checks the copies that `checked` marks, and no others of their group.
void DuplicateTableModel::check(const DuplicateGroup& group, const std::vector<bool>& checked)
{
    Selection selection = this->selection();
    for (std::size_t copy = 0; copy < checked.size(); ++copy) {
        if (checked[copy]) {
            selection.insert(group.entries[copy].url);
        } else {
            selection.erase(group.entries[copy].url);
        }
    }
    setSelection(std::move(selection));
    Q_EMIT selectionEdited();
}

bool DuplicateTableModel::hasChecked(const DuplicateGroup& group) const
{
    return std::ranges::any_of(group.entries, [this](const Entry& copy) { return isChecked(copy); });
}

std::vector<EntryBadge> DuplicateTableModel::badges(int row) const
{
    const DuplicateGroup& group = groupAt(row);
    const std::size_t copy = rowAt(row).copy;
    const FileIdentity& identity = group.identities[copy];
    std::vector<EntryBadge> badges;
    if (!isChecked(group.entries[copy]) && hasChecked(group)) {
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
    return badges;
}

QString DuplicateTableModel::amount(const DuplicateGroup& group)
{
    return QStringLiteral("%1 × %2").arg(QString::number(group.entries.size()), sizeText(group.sizeBytes()));
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
        return FileUrlText::display(entry->url).toHtmlEscaped();
    }
    if (role == Qt::CheckStateRole && entry != nullptr && index.column() == checkColumn) {
        return isChecked(*entry) ? Qt::Checked : Qt::Unchecked;
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
    } else {
        for (const EntryBadge& badge : badges(row)) {
            parts += badge.text;
        }
    }
    parts += text(row, detailColumn);
    if (entry != nullptr) {
        parts += accessibleCheck(*entry);
    }
    return parts.join(QStringLiteral(", "));
}

} // namespace tallyroom
