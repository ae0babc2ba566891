#pragma once

#include "Rows/EntryRowsModel.h"
#include "Rows/EntryTableStyle.h"
#include "Tools/Duplicates/DuplicatesViewModel.h"

#include <optional>
#include <vector>

namespace tallyroom {

/// The rows of a `DuplicateTable`: for each group shown one that heads it, and one a copy. Texts are made
/// when they are asked for. Main thread.
class DuplicateTableModel : public EntryRowsModel {
    Q_OBJECT

public:
    /// On the right: what a group gives back, and when a copy was modified.
    static constexpr int detailColumn = 2;

    explicit DuplicateTableModel(QObject* parent = nullptr);

    /// What stays and what may go from now on; checks stay as they are.
    void setPolicy(const KeepPolicy& policy);

    [[nodiscard]] const KeepPolicy& policy() const { return *m_policy; }

    /// Shows those of `groups` whose indices `shown` lists.
    void setGroups(DuplicateGroups groups, const std::vector<std::uint32_t>& shown);

    [[nodiscard]] const DuplicateGroup& groupAt(int row) const;

    /// Whether the row heads its group.
    [[nodiscard]] bool isHead(int row) const { return rowAt(row).copy == head; }

    /// Whether exactly those copies of the row's group are checked that need not stay, if there are any.
    [[nodiscard]] bool isGroupChecked(int row) const;

    /// Checks those copies of the row's group, and no others; when that is so already, unchecks them.
    void toggleGroup(int row);

    /// Checks the copies of the group that need not stay beside `kept`, and no others.
    void checkOthers(const Entry& kept);

    /// The badges beside the path of a copy, or beside the head of a group.
    [[nodiscard]] std::vector<EntryBadge> badges(int row) const;

    /// "2 × 11,6 Go"
    [[nodiscard]] static QString amount(const DuplicateGroup& group);

    /// "11,6 Go récupérables", in two parts.
    struct Gain {
        QString bytes;
        QString word;
    };

    [[nodiscard]] static Gain gain(const DuplicateGroup& group);

    [[nodiscard]] std::optional<std::uint32_t> positionAt(int row) const override;
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

private:
    static constexpr std::uint32_t head = UINT32_MAX;

    struct Row {
        std::uint32_t group = 0;
        std::uint32_t copy = head;
    };

    [[nodiscard]] const Row& rowAt(int row) const { return m_rows[static_cast<std::size_t>(row)]; }

    void listEntries();
    void reserveByPolicy();

    /// The positions of the marked copies of the row's group, of all, and of those that nobody needs.
    [[nodiscard]] PositionSet copies(int row, const std::vector<bool>& which) const;
    [[nodiscard]] PositionSet allCopies(int row) const;
    [[nodiscard]] PositionSet redundantCopies(int row) const;

    [[nodiscard]] QString text(int row, int column) const;
    [[nodiscard]] QString accessibleText(int row, int column) const;

    std::shared_ptr<const KeepPolicy> m_policy = std::make_shared<const KeepPolicy>();
    EntryList m_entries;                 // the copies of all groups, group after group
    std::vector<std::uint32_t> m_starts; // the position of each group's first copy
    DuplicateGroups m_groups = std::make_shared<const std::vector<DuplicateGroup>>();
    std::vector<std::uint32_t> m_shown; // the indices of the groups shown
    std::vector<Row> m_rows;
};

} // namespace tallyroom
