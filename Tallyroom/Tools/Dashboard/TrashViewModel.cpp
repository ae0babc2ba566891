#include "Tools/Dashboard/TrashViewModel.h"

#include <algorithm>
#include <utility>

namespace tallyroom {

TrashViewModel::TrashViewModel(DeletionRunner& deletions, Source source)
    : m_deletions(deletions), m_source(std::move(source))
{}

TrashViewModel::Contents TrashViewModel::of(const FileUrl& mountPoint) const
{
    const auto known = m_contents.find(mountPoint);
    return known == m_contents.end() ? nullptr : known->second;
}

void TrashViewModel::beginRound()
{
    m_round.clear();
}

void TrashViewModel::look(const FileUrl& mountPoint)
{
    if (m_round.insert(mountPoint).second) {
        start(mountPoint);
    }
}

void TrashViewModel::endRound()
{
    const auto isGone = [this](const auto& volume) { return !m_round.contains(volume.first); };
    std::erase_if(m_looks, isGone);
    if (std::erase_if(m_contents, isGone) > 0) {
        Q_EMIT contentsChanged();
    }
    if (m_awaited && !m_round.contains(*m_awaited)) {
        end(FileUrl{*m_awaited}); // a volume that comes back later asks nothing
    }
}

void TrashViewModel::start(const FileUrl& mountPoint)
{
    auto& look = m_looks[mountPoint];
    look.reset(); // the disk is asked by one look at a time
    look = std::make_unique<StreamPump<TrashContents>>(
        m_source(mountPoint),
        [this, mountPoint](TrashContents contents) { receive(mountPoint, std::move(contents)); },
        [this, mountPoint] { end(mountPoint); });
}

void TrashViewModel::receive(const FileUrl& mountPoint, TrashContents contents)
{
    const bool isEmpty = contents.items.empty();
    const bool isUnread = isEmpty && contents.unread > 0;
    if (isEmpty) {
        m_contents.erase(mountPoint);
    } else {
        m_contents[mountPoint] = std::make_shared<const TrashContents>(std::move(contents));
    }
    Q_EMIT contentsChanged();
    if (m_awaited != mountPoint || isUnread) {
        return;
    }
    m_awaited.reset();
    if (isEmpty) {
        tell(QStringLiteral("La corbeille de ce volume est déjà vide."));
    } else {
        Q_EMIT emptyingReady(mountPoint);
    }
}

void TrashViewModel::end(const FileUrl& mountPoint)
{
    m_looks.erase(mountPoint);
    if (m_awaited == mountPoint) {
        m_awaited.reset();
        tell(QStringLiteral("La corbeille de ce volume n’a pas pu être lue."), ReportTone::failed);
    }
}

void TrashViewModel::prepareEmptying(const FileUrl& mountPoint)
{
    m_awaited = mountPoint;
    start(mountPoint);
}

void TrashViewModel::empty(const Contents& contents)
{
    const bool isAccepted = m_deletions.empty(
        contents,
        {.context = this,
         .progressed = [this](const RemovalProgress& progress) { showRemoval(progress); },
         .finished = [this, contents](const RemovalOutcome& outcome) { report(*contents, outcome); }});
    if (isAccepted) {
        showRemoval(m_deletions.progress());
    } else {
        tell(removalIsBusyMessage(), ReportTone::failed);
    }
}

void TrashViewModel::report(const TrashContents& contents, const RemovalOutcome& outcome)
{
    Failures failures = outcome.result.failures;
    for (FileRemover::RemovalFailure& failure : failures) {
        const auto item = std::ranges::find(contents.items, failure.url,
                                            [](const TrashContents::Item& one) { return one.entry.url; });
        if (item != contents.items.end() && !item->original.isEmpty()) {
            failure.url = item->original;
        }
    }
    tell(removalMessage(outcome.result, totalSize(outcome.done), true, outcome.notBegun),
         outcome.result.allSucceeded() ? ReportTone::done : ReportTone::failed, std::move(failures));
    showRemoval(std::nullopt);
}

void TrashViewModel::stop()
{
    if (m_removal) {
        m_deletions.stop();
    }
}

void TrashViewModel::dismissStatus()
{
    tell(std::nullopt);
}

void TrashViewModel::tell(const std::optional<QString>& message, ReportTone tone, Failures failures)
{
    m_statusTone = tone;
    m_failures = std::move(failures);
    m_statusMessage = message;
    Q_EMIT statusMessageChanged();
}

void TrashViewModel::showRemoval(const std::optional<RemovalProgress>& progress)
{
    if (m_removal != progress) {
        m_removal = progress;
        Q_EMIT removalChanged();
    }
}

} // namespace tallyroom
