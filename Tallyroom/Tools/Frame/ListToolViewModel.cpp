#include "Tools/Frame/ListToolViewModel.h"

#include "Bridge/AskApart.h"
#include "Model/CheckedArithmetic.h"
#include "Text/AgeText.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"
#include "Text/TextFilter.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <tuple>
#include <utility>

namespace tallyroom {

namespace {

/// How often the folders are looked at that are still being measured.
constexpr std::chrono::milliseconds runningInterval{125};

} // namespace

ListToolViewModel::ListToolViewModel(DeletionRunner& deletions, CategoryOf categoryOf, Ages ages,
                                     FilterSubject filterSubject, ScanBeginning beginning)
    : ScanToolViewModel(deletions), m_filterSubject(filterSubject), m_beginning(beginning),
      m_categoryOf(std::move(categoryOf))
{
    m_runningClock.setInterval(runningInterval);
    connect(&m_runningClock, &QTimer::timeout, this, [this] {
        PropertyUpdate update{this};
        showRunning(update);
    });
    if (ages == Ages::offered) {
        offerAges();
    }
}

void ListToolViewModel::offerAges()
{
    using Age = std::optional<AgeThreshold>;
    const auto name = [](const Age& age) {
        return age ? QStringLiteral("plus de ") + thresholdText(*age) : QStringLiteral("tous");
    };
    OptionPlan<Age> plan{
        [name](const Age& age) { return QStringLiteral("Âge : ") + name(age); }, {Age{}}, name};
    plan.choices.insert(plan.choices.end(), AgeThreshold::all.begin(), AgeThreshold::all.end());
    m_age.emplace(*this, StoredChoice<Age>{}, plan, [this] {
        narrowed();
        Q_EMIT filterChanged();
    });
}

bool ListToolViewModel::Narrowing::contains(const Narrowing& other) const
{
    return (!category || category == other.category) && (!age || (other.age && *other.age >= *age));
}

std::function<bool(const Entry&)> ListToolViewModel::filter() const
{
    if (!isFiltering()) {
        return {};
    }
    return [text = TextFilter{searchText()}, subject = m_filterSubject, category = m_category,
            categoryOf = m_categoryOf, age = age(), now = Timestamp{std::chrono::system_clock::now()},
            proposed = proposed()](const Entry& entry) {
        return (!proposed || proposed->contains(entry.url)) &&
               (!category || categoryOf(entry) == *category) && (!age || age->isOld(entry.modifiedAt, now)) &&
               text.matches(subject == FilterSubject::name ? entry.name : entry.url.path());
    };
}

void ListToolViewModel::setCategory(const std::optional<std::string>& category)
{
    if (m_categoryOf && assignIfChanged(m_category, category)) {
        narrowed();
        Q_EMIT categoryChanged();
    }
}

void ListToolViewModel::setAge(const std::optional<AgeThreshold>& age)
{
    if (m_age) {
        m_age->set(age);
    }
}

void ListToolViewModel::openCategory(const FileUrl& root, std::string_view category)
{
    Desktop::examine(this, root, [this, category = std::string{category}](const FolderChoice& choice) {
        if (choice && !choice->empty()) {
            m_categoryToOpen = category;
        }
        handleImport(choice);
    });
}

CategoryCounts ListToolViewModel::categoryCounts() const
{
    return m_categoryOf ? countCategories(m_entries, m_categoryOf) : CategoryCounts{};
}

bool ListToolViewModel::isFiltering() const
{
    return narrowing() != Narrowing{} || ScanToolViewModel::isFiltering();
}

void ListToolViewModel::clearFilter()
{
    setCategory(std::nullopt);
    setAge(std::nullopt);
    ScanToolViewModel::clearFilter();
}

void ListToolViewModel::rootChosen(PropertyUpdate& update)
{
    update.assign(m_category, std::exchange(m_categoryToOpen, std::nullopt),
                  &ListToolViewModel::categoryChanged);
    if (m_age) {
        m_age->set(std::nullopt, update);
        update.announce(&ListToolViewModel::filterChanged);
    }
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
    return NumberText::plural(m_entries.size(), QStringLiteral("élément")) + QStringLiteral(" · ") +
           sizeText(totalSize());
}

ScanLine ListToolViewModel::scanLine() const
{
    if (m_isDiscovering) {
        return {QStringLiteral("Recherche… ") + NumberText::plural(m_scanTotal, QStringLiteral("trouvé")),
                std::nullopt};
    }
    // So many folders say nothing of what is left: the last one may be the largest.
    return {QStringLiteral("Analyse en cours… %1/%2").arg(m_scanCompleted).arg(m_scanTotal),
            m_running.empty() ? std::optional{scanFraction()} : std::nullopt};
}

void ListToolViewModel::forEachEntry(const Visitor& visit) const
{
    std::ranges::for_each(m_entries, visit);
}

void ListToolViewModel::startScan(PropertyUpdate& update)
{
    m_removed.clear();
    m_taken = {};
    m_takenAlong = {};
    m_restored = {};
    m_changedFolders.clear();
    m_measuring.reset();
    m_unread.reset();
    m_unreadPlaces.reset();
    m_countedAgain = 0;
    update.assign(m_entries, EntryList{}, &ListToolViewModel::progressChanged);
    update.assign(m_scanCompleted, 0, &ListToolViewModel::progressChanged);
    update.assign(m_scanTotal, 0, &ListToolViewModel::progressChanged);
    update.assign(m_isDiscovering, m_beginning == ScanBeginning::discovering,
                  &ListToolViewModel::progressChanged);
    FileScanner::ScanStream stream = startStream();
    m_runningFolders = std::move(stream.running);
    if (m_runningFolders != nullptr) {
        m_runningClock.start();
    }
    m_pump = std::make_unique<StreamPump<ScanProgress>>(
        std::move(stream), [this](const ScanProgress& record) { receive(record); },
        [this] { endScan(ScanEnd::reached(m_unread, m_unreadPlaces)); });
}

void ListToolViewModel::dropScan(PropertyUpdate& update)
{
    m_pump.reset();
    m_runningFolders.reset();
    m_runningClock.stop();
    update.assign(m_running, std::vector<Entry>{}, &ListToolViewModel::runningChanged);
    startMeasuring();
    update.assign(m_isDiscovering, false, &ListToolViewModel::progressChanged);
}

void ListToolViewModel::receive(const ScanProgress& record)
{
    m_unread = record.unread;
    m_unreadPlaces = record.unreadPlaces;
    m_countedAgain = record.countedAgain == nullptr ? 0 : record.countedAgain->bytes;
    PropertyUpdate update{this};
    update.assign(m_entries, amended(record.entries), &ListToolViewModel::progressChanged);
    update.assign(m_scanCompleted, record.completed, &ListToolViewModel::progressChanged);
    update.assign(m_scanTotal, record.total, &ListToolViewModel::progressChanged);
    update.assign(m_isDiscovering, record.isDiscovering, &ListToolViewModel::progressChanged);
    showRunning(update);
}

void ListToolViewModel::showRunning(PropertyUpdate& update)
{
    if (m_runningFolders != nullptr) {
        std::vector<Entry> running = m_runningFolders->after(m_scanCompleted);
        std::erase_if(running, [this](const Entry& folder) { return m_removed.contains(folder); });
        update.assign(m_running, std::move(running), &ListToolViewModel::runningChanged);
    }
}

/// Corrects a record: the scan does not know about deletions and undos while it runs.
EntryList ListToolViewModel::amended(const EntryList& found) const
{
    const EntryList present = m_removed.part(found).second;
    return m_restored.empty() ? present : withRestored(present, m_restored);
}

void ListToolViewModel::takeOut(PropertyUpdate& update, const std::vector<Entry>& gone)
{
    const RemovedPlaces places{gone};
    if (m_pump != nullptr) {
        m_removed.add(gone);
        m_restored = places.part(m_restored).second;
    }
    const auto [taken, left] = places.part(m_entries);
    // Files take nothing along: those of a long list need not be looked up again.
    const bool areAllOwn = std::ranges::none_of(gone, &Entry::isDirectory);
    const auto [own, along] = areAllOwn
                                  ? std::pair{taken, EntryList{}}
                                  : taken.parted([&](const Entry& entry) { return places.contains(entry); });
    m_taken = m_taken.merged(own);
    m_takenAlong = m_takenAlong.merged(along);
    if (!taken.empty()) {
        update.assign(m_entries, left, &ListToolViewModel::progressChanged);
    }
}

void ListToolViewModel::putBack(PropertyUpdate& update, const std::vector<Entry>& back, bool isOwn)
{
    const RemovedPlaces places{back};
    EntryList returned;
    EntryList along;
    std::tie(returned, m_taken) = m_taken.parted([&](const Entry& entry) { return places.contains(entry); });
    std::tie(along, m_takenAlong) = places.part(m_takenAlong);
    returned = returned.merged(along);
    const RemovedPlaces known{returned.toVector()};
    std::vector<Entry> others;
    std::ranges::copy_if(back, std::back_inserter(others), [&](const Entry& entry) {
        return (isOwn || lists(entry)) && !known.contains(entry);
    });
    returned = returned.merged(EntryList{std::move(others)});
    if (m_pump != nullptr) {
        m_removed.remove(back);
        m_restored = m_restored.merged(returned);
    }
    update.assign(m_entries, withRestored(m_entries, returned), &ListToolViewModel::progressChanged);
}

void ListToolViewModel::measureAgain(const UrlSet& folders)
{
    m_changedFolders.insert(folders.begin(), folders.end());
    startMeasuring();
}

/// Apart, since a list may be long and a folder large; after a running scan, which may have measured it too
/// early.
void ListToolViewModel::startMeasuring()
{
    if (m_changedFolders.empty() || m_pump != nullptr) {
        return;
    }
    const auto measure = [entries = m_entries, folders = m_changedFolders] {
        Sizes sizes;
        EntryPlaces places;
        for (const Entry& entry : entries) {
            if (entry.isDirectory && folders.contains(FileUrl{std::string{places.of(entry)}})) {
                sizes[entry.url] = FileScanner::measure(entry.url);
            }
        }
        return sizes;
    };
    m_measuring = std::make_unique<StreamPump<Sizes>>(
        askApart<Sizes>(measure), [this](const Sizes& sizes) { showSizes(sizes); }, [] {});
}

void ListToolViewModel::showSizes(const Sizes& sizes)
{
    m_changedFolders.clear();
    if (sizes.empty()) {
        return;
    }
    const auto [folders, others] = m_entries.parted(
        [&sizes](const Entry& entry) { return entry.isDirectory && sizes.contains(entry.url); });
    std::vector<Entry> measured = folders.toVector();
    for (Entry& folder : measured) {
        const FolderSize& size = sizes.at(folder.url);
        size.applyTo(folder);
        noteMeasured(folder, size);
    }
    PropertyUpdate update{this};
    update.assign(m_entries, others.merged(EntryList{std::move(measured)}),
                  &ListToolViewModel::progressChanged);
}

} // namespace tallyroom
