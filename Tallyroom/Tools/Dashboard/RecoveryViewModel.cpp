#include "Tools/Dashboard/RecoveryViewModel.h"

#include "Recovery/SafeRemoval.h"
#include "Text/SizeText.h"
#include "Text/UnreadText.h"

#include <QScopedValueRollback>

#include <algorithm>
#include <chrono>
#include <utility>

namespace tallyroom {

namespace {

constexpr std::chrono::milliseconds tellingPace{250};

RecoveryRow::Phase phaseOf(const ScanToolViewModel& tool)
{
    if (tool.isScanning()) {
        return RecoveryRow::Phase::running;
    }
    switch (tool.scanEnd().kind) {
    case ScanEnd::Kind::complete:
        return RecoveryRow::Phase::complete;
    case ScanEnd::Kind::unread:
        return RecoveryRow::Phase::unread;
    case ScanEnd::Kind::none:
    case ScanEnd::Kind::stopped:
        break;
    }
    return RecoveryRow::Phase::stopped;
}

/// What a tool says of its finds, and whether they are all.
QString wordsOf(const ScanToolViewModel& tool, const Recovery& recovery, RecoveryRow::Phase phase)
{
    if (phase == RecoveryRow::Phase::running) {
        return tool.hasProgress() ? tool.scanLine().text : QStringLiteral("Analyse en cours…");
    }
    const ScanEnd& end = tool.scanEnd();
    if (tool.entryCount() == 0) {
        return end.emptyText(QStringLiteral("rien trouvé"));
    }
    if (!recovery.isKnown && phase == RecoveryRow::Phase::complete) {
        return QStringLiteral("Vérification en cours…");
    }
    QStringList parts{recovery.words, end.notice(), UnreadText::count(end.unreadPlaces)};
    if (recovery.otherBytes > 0) {
        parts.insert(1, sizeText(recovery.otherBytes) + QStringLiteral(" à regarder"));
    }
    parts.removeAll(QString{});
    return parts.join(QStringLiteral(" · "));
}

} // namespace

RecoveryViewModel::RecoveryViewModel(VolumeOf volumeOf) : m_volumeOf(std::move(volumeOf))
{
    m_pace.setSingleShot(true);
    m_pace.setInterval(tellingPace);
    connect(&m_pace, &QTimer::timeout, this, &RecoveryViewModel::show);
}

void RecoveryViewModel::setTools(std::vector<RecoveryTool> tools)
{
    m_tools = std::move(tools);
    for (std::size_t place = 0; place < m_tools.size(); ++place) {
        ScanToolViewModel* const tool = m_tools[place].tool;
        const auto soon = [this] {
            if (m_folder && !m_pace.isActive()) {
                m_pace.start();
            }
        };
        m_gains.push_back(std::make_unique<RecoveryGain>(soon));
        connect(tool, &FolderTool::stateChanged, this, [this, place] { follow(place); });
        connect(tool, &ScanToolViewModel::rootURLChanged, this, soon);
        connect(tool, &ScanToolViewModel::progressChanged, this, soon);
        connect(tool, &ScanToolViewModel::remarksChanged, this, soon);
        const auto tell = [this, tool] {
            if (tool == m_remover) {
                Q_EMIT removalChanged();
            }
        };
        connect(tool, &ScanToolViewModel::statusMessageChanged, this, tell);
        connect(tool, &ScanToolViewModel::undoableChanged, this, tell);
        connect(tool, &ScanToolViewModel::removalChanged, this, tell);
    }
}

/// Whether the tool at `place` shows the searched folder.
bool RecoveryViewModel::isOurs(std::size_t place) const
{
    return place < m_next && m_tools[place].tool->rootURL() == m_folder;
}

bool RecoveryViewModel::isSearching() const
{
    return std::ranges::any_of(m_rows, [](const RecoveryRow& row) {
        return row.phase == RecoveryRow::Phase::waiting || row.phase == RecoveryRow::Phase::running;
    });
}

void RecoveryViewModel::handleImport(const FolderChoice& choice)
{
    if (!choice) {
        m_error = QStringLiteral("Sélection impossible : ") + choice.error();
        Q_EMIT changed();
    } else if (!choice->empty()) {
        search(choice->front());
    }
}

void RecoveryViewModel::examine(const FileUrl& folder)
{
    Desktop::examine(this, folder, [this](const FolderChoice& choice) { handleImport(choice); });
}

void RecoveryViewModel::search(FileUrl folder)
{
    stop();
    m_folder = std::move(folder);
    m_isRepeating = false;
    begin();
    Q_EMIT searchBegan();
}

void RecoveryViewModel::followScanRules()
{
    if (m_folder && m_scanScope != ScanScope::current()) {
        stop();
        m_isRepeating = true;
        begin();
    }
}

void RecoveryViewModel::begin()
{
    m_scanScope = ScanScope::current();
    m_error.clear();
    m_next = 0;
    m_isStopped = false;
    m_remover = nullptr;
    m_before.reset();
    for (const auto& gain : m_gains) {
        gain->forget();
    }
    startNext();
    show();
    Q_EMIT removalChanged();
}

void RecoveryViewModel::stop()
{
    if (!isSearching()) {
        return;
    }
    m_isStopped = true;
    for (std::size_t place = 0; place < m_next; ++place) {
        if (isOurs(place)) {
            m_tools[place].tool->cancelScan();
        }
    }
    show();
}

/// Lets the next tools begin, as many as may search at once.
void RecoveryViewModel::startNext()
{
    if (m_isStarting) {
        return; // a tool that ends at once calls from within
    }
    const QScopedValueRollback guard{m_isStarting, true};
    const auto running = [this] {
        std::size_t count = 0;
        for (std::size_t place = 0; place < m_next; ++place) {
            count += isOurs(place) && m_tools[place].tool->isScanning() ? 1 : 0;
        }
        return count;
    };
    while (m_folder && !m_isStopped && m_next < m_tools.size() && running() < mostAtOnce) {
        ScanToolViewModel& tool = *m_tools[m_next++].tool;
        if (!m_isRepeating || tool.rootURL() == m_folder) {
            tool.open(*m_folder);
        }
    }
}

void RecoveryViewModel::follow(std::size_t place)
{
    if (!m_folder) {
        return;
    }
    startNext();
    if (place < m_next && !m_tools[place].tool->isScanning()) {
        show();
    } else if (!m_pace.isActive()) {
        m_pace.start();
    }
}

void RecoveryViewModel::show()
{
    m_pace.stop();
    if (!m_folder) {
        return;
    }
    std::vector<RecoveryRow> rows;
    for (std::size_t place = 0; place < m_tools.size(); ++place) {
        RecoveryRow& row = rows.emplace_back(rowOf(place));
        if (row.proposes()) {
            row.reclaim = m_gains[place]->of(row.recovery.safe);
        } else {
            m_gains[place]->forget();
        }
    }
    if (assignIfChanged(m_rows, std::move(rows))) {
        Q_EMIT changed();
    }
}

RecoveryRow RecoveryViewModel::rowOf(std::size_t place) const
{
    if (place >= m_next) {
        return m_isStopped ? RecoveryRow{RecoveryRow::Phase::stopped,
                                         {},
                                         QStringLiteral("Pas analysé : recherche arrêtée"),
                                         {}}
                           : RecoveryRow{RecoveryRow::Phase::waiting, {}, QStringLiteral("En attente…"), {}};
    }
    if (!isOurs(place)) {
        return {RecoveryRow::Phase::elsewhere,
                {},
                QStringLiteral("Un autre dossier est ouvert dans cet outil"),
                {}};
    }
    const ScanToolViewModel& tool = *m_tools[place].tool;
    const RecoveryRow::Phase phase = phaseOf(tool);
    Recovery recovery = tool.recovery();
    QString words = wordsOf(tool, recovery, phase);
    return {phase, std::move(recovery), std::move(words), {}};
}

void RecoveryViewModel::remove(std::size_t place, const std::vector<Entry>& entries, bool permanently,
                               ScanToolViewModel::RemovalPlan plan)
{
    if (!plan.screening) {
        plan.screening = SafeRemoval::refuseInUse(); // nobody has looked at each of them
    }
    keepBefore();
    m_remover = m_tools[place].tool;
    m_remover->dismissStatus(); // what it says is about something else
    m_remover->deleteEntries(entries, permanently, plan);
    Q_EMIT removalChanged();
}

bool RecoveryViewModel::stopRemoval()
{
    const bool isRunning = m_remover != nullptr && m_remover->removal().has_value();
    if (isRunning) {
        m_remover->stopRemoval();
    }
    return isRunning;
}

void RecoveryViewModel::undoRemoval()
{
    if (m_remover != nullptr) {
        m_remover->undoDeletion();
    }
}

void RecoveryViewModel::keepBefore()
{
    if (m_folder && !m_before) {
        m_before = m_volumeOf(*m_folder);
    }
}

} // namespace tallyroom
