#include "Tools/Frame/ListToolViewModel.h"

#include "Bridge/AskApart.h"
#include "Model/CheckedArithmetic.h"
#include "Text/SizeText.h"
#include "Text/TextFilter.h"

#include <algorithm>
#include <iterator>

namespace tallyroom {

ListToolViewModel::ListToolViewModel(FilterSubject filterSubject, ScanBeginning beginning,
                                     DeletionRunner& deletions, CategoryOf categoryOf)
    : ScanToolViewModel(deletions), m_filterSubject(filterSubject), m_beginning(beginning),
      m_categoryOf(std::move(categoryOf))
{}

std::function<bool(const Entry&)> ListToolViewModel::filter() const
{
    if (!isFiltering()) {
        return {};
    }
    return [text = TextFilter{searchText()}, subject = m_filterSubject, category = m_category,
            categoryOf = m_categoryOf](const Entry& entry) {
        return (!category || categoryOf(entry) == *category) &&
               text.matches(subject == FilterSubject::name ? entry.name : entry.url.path());
    };
}

void ListToolViewModel::setCategory(const std::optional<std::string>& category)
{
    if (m_categoryOf && assignIfChanged(m_category, category)) {
        Q_EMIT categoryChanged();
    }
}

CategoryCounts ListToolViewModel::categoryCounts() const
{
    return m_categoryOf ? countCategories(m_entries, m_categoryOf) : CategoryCounts{};
}

bool ListToolViewModel::isFiltering() const
{
    return m_category.has_value() || ScanToolViewModel::isFiltering();
}

void ListToolViewModel::clearFilter()
{
    setCategory(std::nullopt);
    ScanToolViewModel::clearFilter();
}

void ListToolViewModel::rootChosen(PropertyUpdate& update)
{
    update.assign(m_category, std::nullopt, &ListToolViewModel::categoryChanged);
}

EntryList ListToolViewModel::filteredEntries() const
{
    const auto isShown = filter();
    if (!isShown) {
        return m_entries;
    }
    std::vector<Entry> shown;
    std::ranges::copy_if(m_entries, std::back_inserter(shown), isShown);
    return EntryList{std::move(shown)};
}

std::int64_t ListToolViewModel::totalSize() const
{
    std::int64_t total = 0;
    for (const Entry& entry : m_entries) {
        total = checkedSum(total, entry.sizeBytes);
    }
    return total;
}

double ListToolViewModel::scanFraction() const
{
    return m_scanTotal < 1 ? 0.0 : static_cast<double>(m_scanCompleted) / static_cast<double>(m_scanTotal);
}

QString ListToolViewModel::scanReport() const
{
    return QStringLiteral("%1 élément(s) · %2").arg(QString::number(m_entries.size()), sizeText(totalSize()));
}

ScanLine ListToolViewModel::scanLine() const
{
    if (m_isDiscovering) {
        return {QStringLiteral("Recherche… %1 trouvé(s)").arg(m_scanTotal), std::nullopt};
    }
    return {QStringLiteral("Analyse en cours… %1/%2").arg(m_scanCompleted).arg(m_scanTotal), scanFraction()};
}

void ListToolViewModel::forEachEntry(const Visitor& visit) const
{
    std::ranges::for_each(m_entries, visit);
}

void ListToolViewModel::forEachShown(const Visitor& visit) const
{
    const auto isShown = filter();
    std::ranges::for_each(m_entries, [&](const Entry& entry) {
        if (!isShown || isShown(entry)) {
            visit(entry);
        }
    });
}

void ListToolViewModel::startScan(PropertyUpdate& update)
{
    m_removed.clear();
    m_taken.clear();
    m_restored.clear();
    m_unmeasured.clear();
    m_measuring.reset();
    m_unread.reset();
    update.assign(m_entries, EntryList{}, &ListToolViewModel::entriesChanged);
    update.assign(m_scanCompleted, 0, &ListToolViewModel::scanCompletedChanged);
    update.assign(m_scanTotal, 0, &ListToolViewModel::scanTotalChanged);
    update.assign(m_isDiscovering, m_beginning == ScanBeginning::discovering,
                  &ListToolViewModel::isDiscoveringChanged);
    m_pump = std::make_unique<StreamPump<ScanProgress>>(
        startStream(), [this](const ScanProgress& record) { receive(record); },
        [this] { endScan(ScanEnd::reached(m_unread)); });
}

void ListToolViewModel::dropScan(PropertyUpdate& update)
{
    m_pump.reset();
    startMeasuring();
    update.assign(m_isDiscovering, false, &ListToolViewModel::isDiscoveringChanged);
}

void ListToolViewModel::receive(const ScanProgress& record)
{
    m_unread = record.unread;
    PropertyUpdate update{this};
    update.assign(m_entries, amended(record.entries), &ListToolViewModel::entriesChanged);
    update.assign(m_scanCompleted, record.completed, &ListToolViewModel::scanCompletedChanged);
    update.assign(m_scanTotal, record.total, &ListToolViewModel::scanTotalChanged);
    update.assign(m_isDiscovering, record.isDiscovering, &ListToolViewModel::isDiscoveringChanged);
}

/// A record as the disk is now: the scan does not know what was deleted or put back while it ran.
EntryList ListToolViewModel::amended(const EntryList& found) const
{
    const EntryList present = m_removed.without(found);
    return m_restored.empty() ? present : withRestored(present, m_restored);
}

void ListToolViewModel::takeOut(PropertyUpdate& update, const std::vector<Entry>& gone)
{
    const RemovedPlaces places{gone};
    if (m_pump != nullptr) {
        m_removed.add(gone);
        std::erase_if(m_restored, [&](const Entry& entry) { return places.covers(entry.url); });
    }
    EntryList left = places.without(m_entries);
    if (left.size() != m_entries.size()) {
        std::ranges::copy_if(m_entries, std::back_inserter(m_taken),
                             [&places](const Entry& entry) { return places.covers(entry.url); });
        update.assign(m_entries, std::move(left), &ListToolViewModel::entriesChanged);
    }
}

void ListToolViewModel::putBack(PropertyUpdate& update, const std::vector<Entry>& back, bool isOwn)
{
    std::vector<Entry> returned;
    const RemovedPlaces places{back};
    std::erase_if(m_taken, [&](const Entry& entry) {
        const bool isBack = places.covers(entry.url);
        if (isBack) {
            returned.push_back(entry);
        }
        return isBack;
    });
    UrlSet known;
    std::ranges::transform(returned, std::inserter(known, known.end()), &Entry::url);
    std::ranges::copy_if(back, std::back_inserter(returned), [&](const Entry& entry) {
        return (isOwn || lists(entry)) && !known.contains(entry.url);
    });
    if (m_pump != nullptr) {
        m_removed.remove(back);
        m_restored.insert(m_restored.end(), returned.begin(), returned.end());
    }
    if (!returned.empty()) {
        update.assign(m_entries, withRestored(m_entries, returned), &ListToolViewModel::entriesChanged);
    }
}

void ListToolViewModel::measureAgain(const UrlSet& folders)
{
    for (const Entry& entry : m_entries) {
        if (entry.isDirectory && folders.contains(entry.url)) {
            m_unmeasured.insert(entry.url);
        }
    }
    startMeasuring();
}

/// Apart, since a folder may be large; after a running scan, which may have measured it too early.
void ListToolViewModel::startMeasuring()
{
    if (m_unmeasured.empty() || m_pump != nullptr) {
        return;
    }
    const auto measure = [folders = m_unmeasured] {
        Sizes sizes;
        for (const FileUrl& folder : folders) {
            sizes[folder] = FileScanner::directorySize(folder);
        }
        return sizes;
    };
    m_measuring = std::make_unique<StreamPump<Sizes>>(
        askApart<Sizes>(measure), [this](const Sizes& sizes) { showSizes(sizes); }, [] {});
}

void ListToolViewModel::showSizes(const Sizes& sizes)
{
    m_unmeasured.clear();
    std::vector<Entry> entries = m_entries.toVector();
    for (Entry& entry : entries) {
        if (const auto size = sizes.find(entry.url); entry.isDirectory && size != sizes.end()) {
            entry.sizeBytes = size->second;
        }
    }
    std::ranges::stable_sort(entries, isLarger);
    PropertyUpdate update{this};
    update.assign(m_entries, EntryList{std::move(entries)}, &ListToolViewModel::entriesChanged);
}

} // namespace tallyroom
