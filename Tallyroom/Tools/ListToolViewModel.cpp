#include "Tools/ListToolViewModel.h"

#include "Bridge/SizeText.h"
#include "Bridge/TextFilter.h"

#include <algorithm>
#include <iterator>

namespace tallyroom {

using FileRemover::RemovalResult;

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
    m_listing = std::make_shared<Listing>();
    m_unread.reset();
    update.assign(m_entries, EntryList{}, &ListToolViewModel::entriesChanged);
    update.assign(m_scanCompleted, 0, &ListToolViewModel::scanCompletedChanged);
    update.assign(m_scanTotal, 0, &ListToolViewModel::scanTotalChanged);
    update.assign(m_isDiscovering, m_beginning == ScanBeginning::discovering,
                  &ListToolViewModel::isDiscoveringChanged);
    update.assign(m_undoable, std::nullopt, &ListToolViewModel::undoableChanged);
    m_pump = std::make_unique<StreamPump<ScanProgress>>(
        startStream(), [this](const ScanProgress& record) { receive(record); },
        [this] { endScan(ScanEnd::reached(m_unread)); });
}

void ListToolViewModel::dropScan(PropertyUpdate& update)
{
    m_pump.reset();
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
    EntryList present = withoutUrls(found, m_listing->removed);
    if (m_listing->restored.empty()) {
        return present;
    }
    RemovalResult putBack;
    std::ranges::transform(m_listing->restored, std::back_inserter(putBack.removed), &Entry::url);
    return applyRestore(putBack, {m_listing->restored, {}}, present).entries;
}

void ListToolViewModel::deleteSelected(const UrlSet& urls, bool permanently)
{
    const std::vector<Entry> targets = deletionTargets(m_entries, urls);
    if (targets.empty()) {
        return;
    }
    std::vector<FileUrl> locations;
    std::ranges::transform(targets, std::back_inserter(locations), &Entry::url);
    const auto finished = [this, targets, permanently, request = requestNow()](const RemovalResult& result) {
        finishDeletion(result, targets, permanently, request);
    };
    remove(std::move(locations), permanently, finished);
}

void ListToolViewModel::finishDeletion(const RemovalResult& result, const std::vector<Entry>& targets,
                                       bool permanently, const Request& request)
{
    DeletionOutcome outcome = applyDeletion(result, targets, m_entries, permanently);
    if (m_pump != nullptr) {
        m_listing->removed.insert(result.removed.begin(), result.removed.end());
    }
    PropertyUpdate update{this};
    update.assign(m_entries, std::move(outcome.entries), &ListToolViewModel::entriesChanged);
    report(update, outcome.message, result);
    // Undoing puts entries into the list on screen: once another list stands there, that is over.
    if (!request.listing.expired()) {
        update.assign(m_undoable, std::move(outcome.undoable), &ListToolViewModel::undoableChanged);
    }
    if (request.folder) {
        changedOnDisk(*request.folder);
    }
}

void ListToolViewModel::undoDeletion()
{
    if (!m_undoable) {
        return;
    }
    const auto finished = [this, undone = *m_undoable, request = requestNow()](const RemovalResult& result) {
        finishRestore(result, undone, request);
    };
    restore(m_undoable->trashed, finished);
}

void ListToolViewModel::finishRestore(const RemovalResult& result, const UndoableDeletion& undone,
                                      const Request& request)
{
    RestoreOutcome outcome = applyRestore(result, undone, m_entries);
    PropertyUpdate update{this};
    if (listedFolder() == request.folder) {
        if (m_pump != nullptr) {
            const UrlSet restored{result.removed.begin(), result.removed.end()};
            std::erase_if(m_listing->removed, [&](const FileUrl& url) { return restored.contains(url); });
            std::ranges::copy_if(undone.entries, std::back_inserter(m_listing->restored),
                                 [&](const Entry& entry) { return restored.contains(entry.url); });
        }
        update.assign(m_entries, std::move(outcome.entries), &ListToolViewModel::entriesChanged);
    }
    report(update, outcome.message, result);
    if (!request.listing.expired()) {
        update.assign(m_undoable, std::nullopt, &ListToolViewModel::undoableChanged);
    }
    if (request.folder) {
        changedOnDisk(*request.folder);
    }
}

} // namespace tallyroom
