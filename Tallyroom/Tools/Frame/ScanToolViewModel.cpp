#include "Tools/Frame/ScanToolViewModel.h"

#include "Scanning/FileScanner.h"
#include "Settings/RecentFolders.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tallyroom {

namespace {

/// What a stopped undo has left in the trash; nothing when it went to its end, whatever failed.
std::optional<UndoableDeletion> remainder(const UndoableDeletion& undone, const RemovalOutcome& outcome)
{
    if (outcome.notBegun == 0) {
        return std::nullopt;
    }
    UndoableDeletion left;
    left.trashed.assign(undone.trashed.end() - static_cast<std::ptrdiff_t>(outcome.notBegun),
                        undone.trashed.end());
    UrlSet places;
    std::ranges::transform(left.trashed, std::inserter(places, places.end()),
                           &FileRemover::TrashedItem::original);
    std::ranges::copy_if(undone.entries, std::back_inserter(left.entries),
                         [&places](const Entry& entry) { return places.contains(entry.url); });
    return left;
}

} // namespace

ScanToolViewModel::ScanToolViewModel(DeletionRunner& deletions) : m_deletions(deletions)
{
    connect(&deletions, &DeletionRunner::diskChanged, this, &ScanToolViewModel::follow);
    connect(this, &ScanToolViewModel::progressChanged, this, &ScanToolViewModel::followProposed);
    connect(this, &ScanToolViewModel::remarksChanged, this, &ScanToolViewModel::followProposed);
}

void ScanToolViewModel::refresh()
{
    if (m_rootURL) {
        FileScanner::invalidateCache(*m_rootURL);
        scan();
    }
}

void ScanToolViewModel::followScanRules()
{
    if (m_rootURL && m_scanScope != ScanScope::current()) {
        scanAgain();
    }
}

void ScanToolViewModel::setSearchText(const QString& text)
{
    if (assignIfChanged(m_searchText, text)) {
        filterChosen();
        Q_EMIT searchTextChanged();
    }
}

void ScanToolViewModel::showProposed(bool isOnly)
{
    if (isOnly == isShowingProposed()) {
        return;
    }
    m_proposed = isOnly ? std::make_shared<const UrlSet>() : nullptr;
    followProposed();
    filterChosen();
    Q_EMIT filterChanged();
}

void ScanToolViewModel::clearFilter()
{
    setSearchText({});
    showProposed(false);
}

/// What is being found out does not hide what was proposed before.
void ScanToolViewModel::followProposed()
{
    if (!isShowingProposed()) {
        return;
    }
    const Recovery found = recovery();
    UrlSet urls;
    std::ranges::transform(found.safe, std::inserter(urls, urls.end()), &Entry::url);
    if (found.isKnown && urls != *m_proposed) {
        m_proposed = std::make_shared<const UrlSet>(std::move(urls));
        filterChosen();
        Q_EMIT filterChanged();
    }
}

void ScanToolViewModel::handleImport(const FolderChoice& choice)
{
    if (choice && !choice->empty()) {
        open(choice->front());
        return;
    }
    // What an earlier scan found stays, but nothing may pull the message away from under the reader.
    PropertyUpdate update{this};
    if (isScanning()) {
        m_scanEnd = ScanEnd::stopped();
    }
    dropScan(update);
    update.assign(m_state,
                  ToolState::error(choice ? QStringLiteral("Aucun dossier sélectionné.")
                                          : QStringLiteral("Sélection impossible : ") + choice.error()),
                  &ScanToolViewModel::stateChanged);
}

void ScanToolViewModel::open(FileUrl root)
{
    m_scope.reset();
    m_scope = SecurityScope::take(root);
    RecentFolders::shared().add(root);
    PropertyUpdate update{this};
    update.assign(m_rootURL, std::move(root), &ScanToolViewModel::rootURLChanged);
    update.assign(m_proposed, nullptr, &ScanToolViewModel::filterChanged);
    rootChosen(update);
    beginScan(update);
}

void ScanToolViewModel::scan()
{
    PropertyUpdate update{this};
    beginScan(update);
}

void ScanToolViewModel::beginScan(PropertyUpdate& update)
{
    if (!m_rootURL) {
        return;
    }
    dropScan(update);
    m_scanEnd = {};
    m_scanScope = ScanScope::current();
    update.assign(m_state, ToolState::scanning(), &ScanToolViewModel::stateChanged);
    m_filling = std::make_shared<Filling>();
    startScan(update);
    update.assign(m_undoable, std::nullopt, &ScanToolViewModel::undoableChanged);
}

void ScanToolViewModel::endScan(const ScanEnd& end)
{
    PropertyUpdate update{this};
    dropScan(update);
    m_scanEnd = end;
    update.assign(m_state, ToolState::loaded(), &ScanToolViewModel::stateChanged);
}

void ScanToolViewModel::cancelScan()
{
    if (isScanning()) {
        endScan(ScanEnd::stopped());
    }
}

void ScanToolViewModel::resumeScan()
{
    if (m_state.phase == ToolState::Phase::loaded && m_scanEnd.kind == ScanEnd::Kind::stopped) {
        scan();
    }
}

void ScanToolViewModel::deleteSelected(const UrlSet& urls, bool permanently)
{
    std::vector<Entry> entries;
    forEachEntry([&](const Entry& entry) {
        if (urls.contains(entry.url)) {
            entries.push_back(entry);
        }
    });
    deleteEntries(entries, permanently, planRemoval(entries));
}

void ScanToolViewModel::deleteEntries(const std::vector<Entry>& entries, bool permanently,
                                      const RemovalPlan& plan)
{
    if (entries.empty()) {
        return;
    }
    const auto finished = [this, permanently, freed = plan.freed, folder = listedFolder(),
                           filling = std::weak_ptr{m_filling}](PropertyUpdate& update,
                                                               const RemovalOutcome& outcome) {
        const std::int64_t bytes = freed(outcome.done);
        report(update, removalMessage(outcome.result, bytes, permanently, outcome.notBegun), outcome.result,
               gainNote(outcome.result, bytes, outcome.gained));
        m_tellsOfTrash = true;
        // Undoing puts entries into the list on screen: once another list stands there, that is over.
        if (!filling.expired()) {
            update.assign(m_undoable,
                          outcome.result.canUndo()
                              ? std::optional{UndoableDeletion{outcome.done, outcome.result.trashed}}
                              : std::nullopt,
                          &ScanToolViewModel::undoableChanged);
            m_removedFrom = folder;
        }
    };
    beginRemoval(m_deletions.remove(entries, permanently, listener(finished), plan.screening),
                 {.completed = 0, .total = entries.size()});
}

void ScanToolViewModel::undoDeletion()
{
    if (!m_undoable) {
        return;
    }
    const auto finished = [this, undone = *m_undoable, filling = std::weak_ptr{m_filling}](
                              PropertyUpdate& update, const RemovalOutcome& outcome) {
        report(update, restoreReport(outcome), outcome.result);
        if (!filling.expired()) {
            update.assign(m_undoable, remainder(undone, outcome), &ScanToolViewModel::undoableChanged);
        }
    };
    beginRemoval(m_deletions.restore(*m_undoable, listener(finished)),
                 {.completed = 0, .total = m_undoable->trashed.size(), .isRestoring = true});
}

void ScanToolViewModel::deleteTrashed()
{
    if (!m_undoable) {
        return;
    }
    const auto finished = [this, trashed = *m_undoable, filling = std::weak_ptr{m_filling}](
                              PropertyUpdate& update, const RemovalOutcome& outcome) {
        const std::int64_t bytes = totalSize(outcome.done);
        report(update, removalMessage(outcome.result, bytes, true, outcome.notBegun), outcome.result,
               gainNote(outcome.result, bytes, outcome.gained));
        m_tellsOfTrash = true;
        if (!filling.expired()) {
            update.assign(m_undoable, remainder(trashed, outcome), &ScanToolViewModel::undoableChanged);
        }
    };
    beginRemoval(m_deletions.deleteTrashed(*m_undoable, listener(finished)),
                 {.completed = 0, .total = m_undoable->trashed.size()});
}

void ScanToolViewModel::stopRemoval()
{
    if (m_removal) {
        m_deletions.stop();
    }
}

QString ScanToolViewModel::restoreReport(const RemovalOutcome& outcome) const
{
    return restoreMessage(outcome.result, outcome.notBegun);
}

/// This tool or another one has changed the disk since the scan.
void ScanToolViewModel::follow(const DiskChange& change)
{
    if (!m_rootURL) {
        return;
    }
    {
        PropertyUpdate update{this};
        if (!change.gone.empty()) {
            takeOut(update, change.gone);
            forgetUndo(update, change.gone);
        }
        if (!change.back.empty()) {
            putBack(update, change.back, change.asker == this && m_removedFrom == listedFolder());
        }
    }
    measureAgain(change.folders);
}

/// What has left the trash meanwhile cannot be put back: it may have been emptied.
void ScanToolViewModel::forgetUndo(PropertyUpdate& update, const std::vector<Entry>& gone)
{
    if (!m_undoable) {
        return;
    }
    UrlSet urls;
    std::ranges::transform(gone, std::inserter(urls, urls.end()), &Entry::url);
    const auto isLost = [&](const FileRemover::TrashedItem& item) { return urls.contains(item.inTrash); };
    if (std::ranges::none_of(m_undoable->trashed, isLost)) {
        return; // the usual case: a long list is not copied
    }
    UndoableDeletion left = *m_undoable;
    UrlSet lost;
    for (const FileRemover::TrashedItem& item : left.trashed) {
        if (isLost(item)) {
            lost.insert(item.original);
        }
    }
    std::erase_if(left.trashed, isLost);
    std::erase_if(left.entries, [&lost](const Entry& entry) { return lost.contains(entry.url); });
    update.assign(m_undoable, left.trashed.empty() ? std::nullopt : std::optional{std::move(left)},
                  &ScanToolViewModel::undoableChanged);
}

void ScanToolViewModel::beginRemoval(bool isAccepted, const RemovalProgress& progress)
{
    if (isAccepted) {
        showRemoval(progress);
    } else {
        tell(removalIsBusyMessage(), ReportTone::failed);
    }
}

DeletionRunner::Listener ScanToolViewModel::listener(Finished finished)
{
    return {.context = this,
            .progressed = [this](const RemovalProgress& progress) { showRemoval(progress); },
            .finished =
                [this, finished = std::move(finished)](const RemovalOutcome& outcome) {
                    PropertyUpdate update{this};
                    finished(update, outcome);
                }};
}

void ScanToolViewModel::showRemoval(const std::optional<RemovalProgress>& progress)
{
    if (assignIfChanged(m_removal, progress)) {
        Q_EMIT removalChanged();
    }
}

void ScanToolViewModel::report(PropertyUpdate& update, const QString& message,
                               const FileRemover::RemovalResult& result, const QString& note)
{
    if (assignIfChanged(m_removalNote, note)) {
        m_statusMessage.reset();
    }
    if (assignIfChanged(m_failures, result.failures)) {
        m_statusMessage.reset(); // the same words about other items are news
    }
    m_tellsOfTrash = false;
    m_statusTone = result.allSucceeded() ? ReportTone::done : ReportTone::failed;
    update.assign(m_statusMessage, std::optional{message}, &ScanToolViewModel::statusMessageChanged);
    update.assign(m_removal, std::nullopt, &ScanToolViewModel::removalChanged);
}

void ScanToolViewModel::tell(const QString& message, ReportTone tone)
{
    m_failures.clear();
    m_removalNote.clear();
    showStatus(message, tone);
}

void ScanToolViewModel::dismissStatus()
{
    m_failures.clear();
    m_removalNote.clear();
    showStatus(std::nullopt, ReportTone::done);
}

void ScanToolViewModel::showStatus(const std::optional<QString>& message, ReportTone tone)
{
    m_statusTone = tone;
    m_tellsOfTrash = false;
    if (assignIfChanged(m_statusMessage, message)) {
        Q_EMIT statusMessageChanged();
    }
}

void ScanToolViewModel::dismissError()
{
    if (m_state.phase == ToolState::Phase::error) {
        m_state = m_rootURL ? ToolState::loaded() : ToolState::idle();
        Q_EMIT stateChanged();
    }
}

} // namespace tallyroom
