#include "Rows/Selection.h"

#include "Model/CheckedArithmetic.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

namespace tallyroom {

namespace {

/// Calls `visit` with the positions of all entries of `part` in `part` and in `whole`, in which they stand in
/// the same order; false where they do not.
template <class Visit>
bool matchPart(const EntryList& part, const EntryList& whole, const Visit& visit)
{
    std::uint32_t found = 0;
    for (std::uint32_t place = 0; place < whole.size() && found < part.size(); ++place) {
        const Entry& wanted = part[found];
        if (const Entry& entry = whole[place]; &entry == &wanted || entry.url == wanted.url) {
            visit(found++, place);
        }
    }
    return found == part.size();
}

} // namespace

void Selection::follow(const EntryList& entries, PositionSet shown, std::int64_t shownBytes,
                       const std::optional<FoundChecks>& found)
{
    const EntryList earlier = std::exchange(m_entries, entries);
    m_shown = std::move(shown);
    m_shownCount = m_shown.count();
    m_shownBytes = shownBytes;
    PositionSet known;
    if (!entries.isSameSnapshot(earlier)) {
        if (!m_checked.empty() || m_absent != nullptr) {
            known = moveChecks(earlier);
        }
        m_isSearchDue = m_absent != nullptr;
        findDeeper();
    }
    if (m_isSearchDue && (!found || found->absent == m_absent)) {
        m_checked |= (found ? found->positions : m_absent->foundIn(m_entries)) - known;
        m_isSearchDue = false;
    }
    recount();
}

/// The positions of the entries that `earlier` had too. A list that grew or shrank keeps its order, and to
/// compare neighbours costs least.
PositionSet Selection::moveChecks(const EntryList& earlier)
{
    const PositionSet before = std::exchange(m_checked, {});
    PositionSet known;
    const auto move = [&](std::uint32_t from, std::uint32_t to) {
        known.insert(to);
        if (before.contains(from)) {
            m_checked.insert(to);
        }
    };
    const bool hasGrown = earlier.size() <= m_entries.size();
    const bool isMoved =
        !m_entries.empty() &&
        (hasGrown
             ? matchPart(earlier, m_entries, move)
             : matchPart(m_entries, earlier, [&](std::uint32_t to, std::uint32_t from) { move(from, to); }));
    if (isMoved) {
        return known;
    }
    m_checked = {};
    m_absent = std::make_shared<const AbsentChecks>(earlier, before, m_absent);
    return {};
}

/// What lies below an entry that the list lacks is not on show; a list that fills anew may still bring it.
void Selection::findDeeper()
{
    if (m_deeper.empty()) {
        return;
    }
    std::unordered_map<FileUrl, std::uint32_t> positions;
    for (const auto& [url, deeper] : m_deeper) {
        positions.emplace(deeper.listed, nowhere);
    }
    for (std::uint32_t position = 0; position < m_entries.size(); ++position) {
        if (const auto found = positions.find(m_entries[position].url); found != positions.end()) {
            found->second = position;
        }
    }
    for (auto& [url, deeper] : m_deeper) {
        deeper.position = positions.at(deeper.listed);
    }
}

void Selection::forgetAbsent()
{
    m_absent.reset();
    m_isSearchDue = false;
    std::erase_if(m_deeper, [](const auto& one) { return one.second.position == nowhere; });
}

/// What lies below something that is checked goes along with it.
void Selection::dropCovered()
{
    std::erase_if(m_deeper, [this](const auto& one) {
        return m_checked.contains(one.second.position) ||
               std::ranges::any_of(m_deeper, [&one](const auto& other) {
                   return other.first != one.first && isWithin(one.first.path(), other.first.path());
               });
    });
}

void Selection::recount()
{
    dropCovered();
    const PositionSet checked = m_checked & m_shown;
    m_count = checked.count();
    // The fewer sizes are looked up: all of a long list but one costs as little as one.
    m_bytes = m_count <= m_shownCount / 2 ? sum(checked) : m_shownBytes - sum(m_shown - m_checked);
    m_partly = {};
    for (const auto& [url, deeper] : m_deeper) {
        if (deeper.position != nowhere) {
            m_partly.insert(deeper.position);
        }
        if (m_shown.contains(deeper.position)) {
            ++m_count;
            m_bytes = checkedSum(m_bytes, deeper.entry.sizeBytes);
        }
    }
}

std::int64_t Selection::sum(const PositionSet& positions) const
{
    std::int64_t bytes = 0;
    positions.forEach(
        [&](std::uint32_t position) { bytes = checkedSum(bytes, m_entries[position].sizeBytes); });
    return bytes;
}

std::vector<Entry> Selection::checkedEntries() const
{
    std::vector<Entry> checked;
    checked.reserve(m_count);
    (m_checked & m_shown).forEach([&](std::uint32_t position) { checked.push_back(m_entries[position]); });
    for (const auto& [url, deeper] : m_deeper) {
        if (m_shown.contains(deeper.position)) {
            checked.push_back(deeper.entry);
        }
    }
    return checked;
}

UrlSet Selection::urls() const
{
    UrlSet urls;
    m_checked.forEach([&](std::uint32_t position) { urls.insert(m_entries[position].url); });
    return urls;
}

void Selection::toggle(std::uint32_t position)
{
    PositionSet one;
    one.insert(position);
    contains(position) ? m_checked -= one : m_checked |= one;
    recount();
    Q_EMIT changed(position);
}

void Selection::toggle(const FileUrl& url)
{
    for (std::uint32_t position = 0; position < m_entries.size(); ++position) {
        if (m_entries[position].url == url) {
            toggle(position);
            return;
        }
    }
}

void Selection::toggle(const Entry& entry)
{
    for (std::uint32_t position = 0; position < m_entries.size(); ++position) {
        const FileUrl& listed = m_entries[position].url;
        if (listed == entry.url) {
            toggle(position);
            return;
        }
        if (isWithin(entry.url.path(), listed.path())) {
            toggleBelow(position, entry);
            return;
        }
    }
}

void Selection::toggleBelow(std::uint32_t position, const Entry& entry)
{
    const bool isCovered = contains(position) || std::ranges::any_of(m_deeper, [&entry](const auto& one) {
                               return one.first != entry.url && isWithin(entry.url.path(), one.first.path());
                           });
    if (isCovered) {
        return;
    }
    if (m_deeper.erase(entry.url) == 0) {
        m_deeper.emplace(entry.url, Deeper{entry, m_entries[position].url, position});
    }
    recount();
    Q_EMIT changed(std::nullopt);
}

std::vector<Entry> Selection::deeperEntries() const
{
    std::vector<Entry> entries;
    for (const auto& [url, deeper] : m_deeper) {
        entries.push_back(deeper.entry);
    }
    return entries;
}

void Selection::renewDeeper(const std::vector<Entry>& asked, const std::vector<Entry>& found)
{
    const UrlSet present = urlsOf(found, &Entry::url);
    for (const Entry& entry : asked) {
        if (!present.contains(entry.url)) {
            m_deeper.erase(entry.url);
        }
    }
    for (const Entry& entry : found) {
        if (const auto known = m_deeper.find(entry.url); known != m_deeper.end()) {
            known->second.entry = entry;
        }
    }
    recount();
    Q_EMIT changed(std::nullopt);
}

void Selection::forgetDeeper(const std::function<bool(const Entry& entry)>& isGone)
{
    if (std::erase_if(m_deeper, [&](const auto& one) { return isGone(one.second.entry); }) > 0) {
        recount();
        Q_EMIT changed(std::nullopt);
    }
}

void Selection::assign(const PositionSet& among, const PositionSet& checked)
{
    m_checked -= among;
    m_checked |= checked;
    recount();
    Q_EMIT changed(std::nullopt);
}

void Selection::setAll()
{
    PositionSet range;
    m_shown.forEach([&](std::uint32_t position) {
        if (!needsOwnCheck(position)) {
            range.insert(position);
        }
    });
    setRange(range, true);
}

void Selection::setUrls(const UrlSet& urls)
{
    m_absent = urls.empty() ? nullptr : std::make_shared<const AbsentChecks>(urls);
    m_checked = urls.empty() ? PositionSet{} : m_absent->foundIn(m_entries);
    m_isSearchDue = false;
    m_deeper.clear();
    recount();
    Q_EMIT changed(std::nullopt);
}

} // namespace tallyroom
