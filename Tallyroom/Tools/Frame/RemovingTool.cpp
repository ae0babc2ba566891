#include "Tools/Frame/RemovingTool.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tallyroom {

namespace {

/// What can still be undone of a deletion: `trashed` of its items; nothing without any.
std::optional<UndoableDeletion> reducedTo(std::vector<FileRemover::TrashedItem> trashed,
                                          const UndoableDeletion& deletion)
{
    if (trashed.empty()) {
        return std::nullopt;
    }
    const UrlSet places = urlsOf(trashed, &FileRemover::TrashedItem::original);
    UndoableDeletion left{{}, std::move(trashed)};
    std::ranges::copy_if(deletion.entries, std::back_inserter(left.entries),
                         [&places](const Entry& entry) { return places.contains(entry.url); });
    return left;
}

/// What a stopped batch has left in the trash; nothing when it went to its end, whatever failed.
std::optional<UndoableDeletion> remainder(const UndoableDeletion& deletion, const RemovalOutcome& outcome)
{
    return reducedTo(
        {deletion.trashed.end() - static_cast<std::ptrdiff_t>(outcome.notBegun), deletion.trashed.end()},
        deletion);
}

} // namespace

RemovingTool::RemovingTool(DeletionRunner& deletions) : m_deletions(deletions)
{
    connect(&deletions, &DeletionRunner::diskChanged, this, &RemovingTool::follow);
}

void RemovingTool::deleteSelected(const UrlSet& urls, bool permanently)
{
    std::vector<Entry> entries;
    forEachEntry([&](const Entry& entry) {
        if (urls.contains(entry.url)) {
            entries.push_back(entry);
        }
    });
    deleteEntries(entries, permanently, planRemoval(entries));
}

void RemovingTool::deleteEntries(const std::vector<Entry>& entries, bool permanently, const RemovalPlan& plan)
{
    if (entries.empty()) {
        return;
    }
    const auto finished = [this, permanently, freed = plan.freed,
                           folder = listedFolder()](PropertyUpdate& update, const RemovalOutcome& outcome) {
        reportRemoval(update, outcome, freed(outcome.done), permanently);
        m_removedFrom = folder;
        return outcome.result.canUndo()
                   ? std::optional{UndoableDeletion{outcome.done, outcome.result.trashed}}
                   : std::nullopt;
    };
    beginRemoval(m_deletions.remove(entries, permanently, listener(finished), plan.screening),
                 {.completed = 0, .total = entries.size()});
}

void RemovingTool::undoDeletion()
{
    if (!m_undoable) {
        return;
    }
    const auto finished = [this, undone = *m_undoable](PropertyUpdate& update,
                                                       const RemovalOutcome& outcome) {
        report(update, restoreReport(outcome), outcome.result);
        return remainder(undone, outcome);
    };
    beginRemoval(m_deletions.restore(*m_undoable, listener(finished)),
                 {.completed = 0, .total = m_undoable->trashed.size(), .isRestoring = true});
}

void RemovingTool::deleteTrashed()
{
    if (!m_undoable) {
        return;
    }
    const auto finished = [this, trashed = *m_undoable](PropertyUpdate& update,
                                                        const RemovalOutcome& outcome) {
        reportRemoval(update, outcome, totalSize(outcome.done), true);
        return remainder(trashed, outcome);
    };
    beginRemoval(m_deletions.deleteTrashed(*m_undoable, listener(finished)),
                 {.completed = 0, .total = m_undoable->trashed.size()});
}

void RemovingTool::stopRemoval()
{
    if (m_removal) {
        m_deletions.stop();
    }
}

QString RemovingTool::restoreReport(const RemovalOutcome& outcome) const
{
    return restoreMessage(outcome.result, outcome.notBegun);
}

void RemovingTool::forgetRemovals(PropertyUpdate& update)
{
    m_filling = std::make_shared<Filling>();
    update.assign(m_undoable, std::nullopt, &RemovingTool::undoableChanged);
}

/// This tool or another one has changed the disk since the scan.
void RemovingTool::follow(const DiskChange& change)
{
    if (!listedFolder()) {
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
void RemovingTool::forgetUndo(PropertyUpdate& update, const std::vector<Entry>& gone)
{
    if (!m_undoable) {
        return;
    }
    const UrlSet urls = urlsOf(gone, &Entry::url);
    const auto isLost = [&urls](const FileRemover::TrashedItem& item) { return urls.contains(item.inTrash); };
    if (std::ranges::none_of(m_undoable->trashed, isLost)) {
        return; // the usual case: a long list is not copied
    }
    std::vector<FileRemover::TrashedItem> left = m_undoable->trashed;
    std::erase_if(left, isLost);
    update.assign(m_undoable, reducedTo(std::move(left), *m_undoable), &RemovingTool::undoableChanged);
}

void RemovingTool::beginRemoval(bool isAccepted, const RemovalProgress& progress)
{
    if (isAccepted) {
        showRemoval(progress);
    } else {
        tell(removalIsBusyMessage(), ReportTone::failed);
    }
}

DeletionRunner::Listener RemovingTool::listener(Finished finished)
{
    return {.context = this,
            .progressed = [this](const RemovalProgress& progress) { showRemoval(progress); },
            .finished =
                [this, finished = std::move(finished),
                 filling = std::weak_ptr{m_filling}](const RemovalOutcome& outcome) {
                    PropertyUpdate update{this};
                    const auto undoable = finished(update, outcome);
                    if (!filling.expired()) {
                        update.assign(m_undoable, undoable, &RemovingTool::undoableChanged);
                    }
                }};
}

void RemovingTool::showRemoval(const std::optional<RemovalProgress>& progress)
{
    if (assignIfChanged(m_removal, progress)) {
        Q_EMIT removalChanged();
    }
}

void RemovingTool::reportRemoval(PropertyUpdate& update, const RemovalOutcome& outcome, std::int64_t freed,
                                 bool permanently)
{
    report(update, removalMessage(outcome.result, freed, permanently, outcome.notBegun), outcome.result,
           gainNote(outcome.result, freed, outcome.gained));
    m_tellsOfTrash = true;
}

void RemovingTool::report(PropertyUpdate& update, const QString& message,
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
    update.assign(m_statusMessage, std::optional{message}, &RemovingTool::statusMessageChanged);
    update.assign(m_removal, std::nullopt, &RemovingTool::removalChanged);
}

void RemovingTool::showStatus(const std::optional<QString>& message, ReportTone tone)
{
    m_failures.clear();
    m_removalNote.clear();
    m_statusTone = tone;
    m_tellsOfTrash = false;
    if (assignIfChanged(m_statusMessage, message)) {
        Q_EMIT statusMessageChanged();
    }
}

} // namespace tallyroom
