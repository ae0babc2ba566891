#pragma once

#include "Model/EntryList.h"
#include "Rows/AbsentChecks.h"

#include <QObject>

#include <functional>
#include <limits>
#include <map>
#include <optional>

namespace tallyroom {

/// The checked entries of the list on screen, known by their positions. Rows, tiles, the selection bar and
/// deletions all look at this one object. Count, sum and `setAll` are about the entries that the filter lets
/// through; the checks of the others stay. Main thread.
class Selection : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Other entries are listed, or others of them are shown, whose sizes add up to `shownBytes`. Checks stay
    /// with their entries; those that `entries` lacks are remembered by location until `forgetAbsent`, but
    /// forgotten where a list only shrank. `found` is what was found of them in `entries` on another thread;
    /// without it they are looked for here. Sends no signal. O(n) where entries came or went and some are
    /// checked.
    void follow(const EntryList& entries, PositionSet shown, std::int64_t shownBytes,
                const std::optional<FoundChecks>& found = {});

    /// The checks of entries that the list may lack; none where it lacks none.
    [[nodiscard]] const std::shared_ptr<const AbsentChecks>& absent() const { return m_absent; }

    /// Forgets the checks of entries that a complete list lacks, and of those below them.
    void forgetAbsent();

    /// Whether absent checks have not been looked for in the list yet.
    [[nodiscard]] bool isSearchDue() const { return m_isSearchDue; }

    /// The list that positions belong to.
    [[nodiscard]] const EntryList& entries() const { return m_entries; }

    [[nodiscard]] bool contains(std::uint32_t position) const { return m_checked.contains(position); }

    /// The same for a position in a list that may be an older one, of which nothing is known.
    [[nodiscard]] bool contains(const EntryList& entries, std::uint32_t position) const
    {
        return contains(position) && entries.isSameSnapshot(m_entries);
    }

    /// Those of `positions` that are checked.
    [[nodiscard]] PositionSet checkedOf(const PositionSet& positions) const { return m_checked & positions; }

    /// How many entries are checked that are shown or lie below shown ones, and the sum of their sizes in
    /// bytes.
    [[nodiscard]] std::size_t count() const { return m_count; }

    [[nodiscard]] std::int64_t bytes() const { return m_bytes; }

    /// The same entries, in the order of the list, then those below by path.
    [[nodiscard]] std::vector<Entry> checkedEntries() const;

    /// The locations of all checked entries in the list, hidden ones included.
    [[nodiscard]] UrlSet urls() const;

    void toggle(std::uint32_t position);

    /// The same for an entry known by its location. O(n).
    void toggle(const FileUrl& url);

    /// The same for an entry that may lie below a listed folder, and is then kept itself, as it was seen;
    /// below a checked one nothing changes. A check takes the place of all checks below it, so that nothing
    /// counts twice. O(n).
    void toggle(const Entry& entry);

    /// Whether an entry below a listed one is checked by itself.
    [[nodiscard]] bool containsDeeper(const FileUrl& url) const { return m_deeper.contains(url); }

    /// Whether something below the entry at that position is checked by itself.
    [[nodiscard]] bool isPartlyChecked(std::uint32_t position) const { return m_partly.contains(position); }

    /// The checked entries below listed ones.
    [[nodiscard]] std::vector<Entry> deeperEntries() const;

    /// They were looked at again: those that `found` lacks are gone, the others may have other sizes.
    void renewDeeper(const std::vector<Entry>& asked, const std::vector<Entry>& found);

    /// Forgets the checks of entries below listed ones that are gone.
    void forgetDeeper(const std::function<bool(const Entry& entry)>& isGone);

    /// Of the positions in `among` exactly those in `checked` are checked afterwards.
    void assign(const PositionSet& among, const PositionSet& checked);

    void setRange(const PositionSet& range, bool isChecked)
    {
        assign(range, isChecked ? range : PositionSet{});
    }

    /// Checks all that is shown, but what needs a check of its own. O(n).
    void setAll();

    /// Entries that need a check of their own besides those that are marked so.
    void reserve(std::function<bool(const Entry&)> isReserved) { m_isReserved = std::move(isReserved); }

    /// Whether a check of many entries at once leaves this one out.
    [[nodiscard]] bool needsOwnCheck(std::uint32_t position) const
    {
        const Entry& entry = m_entries[position];
        return entry.needsOwnCheck() || (m_isReserved && m_isReserved(entry));
    }

    void clear() { setUrls({}); }

    /// Checks exactly these. O(n).
    void setUrls(const UrlSet& urls);

Q_SIGNALS:
    /// The check of the entry at that position changed; without a position many may have.
    void changed(std::optional<std::uint32_t> position);

private:
    /// A checked entry below a listed one.
    struct Deeper {
        Entry entry;
        FileUrl listed; ///< what is listed of it, or was until the list began to fill anew
        std::uint32_t position = nowhere;
    };

    static constexpr auto nowhere = std::numeric_limits<std::uint32_t>::max();

    [[nodiscard]] PositionSet moveChecks(const EntryList& earlier);
    void findDeeper();
    void dropCovered();
    void toggleBelow(std::uint32_t position, const Entry& entry);
    void recount();
    [[nodiscard]] std::int64_t sum(const PositionSet& positions) const;

    std::function<bool(const Entry&)> m_isReserved; // may be none
    EntryList m_entries;
    PositionSet m_shown;
    std::size_t m_shownCount = 0;
    std::int64_t m_shownBytes = 0;
    PositionSet m_checked;
    std::shared_ptr<const AbsentChecks> m_absent;
    bool m_isSearchDue = false;
    std::map<FileUrl, Deeper> m_deeper;
    PositionSet m_partly; // what holds some of them
    std::size_t m_count = 0;
    std::int64_t m_bytes = 0;
};

} // namespace tallyroom
