#include "Tools/ScanToolViewModel.h"

#include "Scanning/FileScanner.h"
#include "Settings/RecentFolders.h"

#include <utility>

namespace tallyroom {

void ScanToolViewModel::refresh()
{
    if (m_rootURL) {
        FileScanner::invalidateCache(*m_rootURL);
        scan();
    }
}

void ScanToolViewModel::setSearchText(const QString& text)
{
    if (assignIfChanged(m_searchText, text)) {
        searchTextChosen();
        Q_EMIT searchTextChanged();
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
    update.assign(m_state, ToolState::scanning(), &ScanToolViewModel::stateChanged);
    startScan(update);
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

void ScanToolViewModel::remove(std::vector<FileUrl> urls, bool permanently, Finished finished,
                               DeletionRunner::Screening screening)
{
    const RemovalProgress start{0, urls.size(), false};
    beginRemoval(
        m_deletions.remove(std::move(urls), permanently, listener(std::move(finished)), std::move(screening)),
        start);
}

void ScanToolViewModel::restore(std::vector<FileRemover::TrashedItem> items, Finished finished)
{
    const RemovalProgress start{0, items.size(), true};
    beginRemoval(m_deletions.restore(std::move(items), listener(std::move(finished))), start);
}

void ScanToolViewModel::beginRemoval(bool isAccepted, const RemovalProgress& progress)
{
    if (isAccepted) {
        showRemoval(progress);
    } else {
        m_failures.clear();
        showStatus(QStringLiteral("Une suppression est déjà en cours : réessayez quand elle sera terminée."));
    }
}

DeletionRunner::Listener ScanToolViewModel::listener(Finished finished)
{
    return {.context = this,
            .progressed = [this](const RemovalProgress& progress) { showRemoval(progress); },
            .finished = std::move(finished)};
}

void ScanToolViewModel::showRemoval(const std::optional<RemovalProgress>& progress)
{
    if (assignIfChanged(m_removal, progress)) {
        Q_EMIT removalChanged();
    }
}

void ScanToolViewModel::report(PropertyUpdate& update, const QString& message,
                               const FileRemover::RemovalResult& result)
{
    if (assignIfChanged(m_failures, result.failures)) {
        m_statusMessage.reset(); // the same words about other items are news
    }
    update.assign(m_statusMessage, std::optional{message}, &ScanToolViewModel::statusMessageChanged);
    update.assign(m_removal, std::nullopt, &ScanToolViewModel::removalChanged);
}

void ScanToolViewModel::dismissStatus()
{
    m_failures.clear();
    showStatus(std::nullopt);
}

void ScanToolViewModel::showStatus(const std::optional<QString>& message)
{
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
