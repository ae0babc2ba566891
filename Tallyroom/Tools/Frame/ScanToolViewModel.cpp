#include "Tools/Frame/ScanToolViewModel.h"

#include "Scanning/FileScanner.h"
#include "Settings/RecentFolders.h"

#include <utility>

namespace tallyroom {

ScanToolViewModel::ScanToolViewModel(DeletionRunner& deletions) : RemovingTool(deletions)
{
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
    UrlSet urls = urlsOf(found.safe, &Entry::url);
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
    startScan(update);
    forgetRemovals(update);
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

void ScanToolViewModel::dismissError()
{
    if (m_state.phase == ToolState::Phase::error) {
        m_state = m_rootURL ? ToolState::loaded() : ToolState::idle();
        Q_EMIT stateChanged();
    }
}

} // namespace tallyroom
