#include "Tools/Frame/TopListViewModel.h"

#include "Text/NumberText.h"

#include <utility>

namespace tallyroom {

TopListViewModel::TopListViewModel(DeletionRunner& deletions, CategoryOf categoryOf,
                                   StoredChoice<std::int64_t> limit, std::span<const std::int64_t> offered)
    : ListToolViewModel(deletions, std::move(categoryOf), Ages::offered),
      m_limit(*this, std::move(limit),
              {[](std::int64_t most) {
                   return QStringLiteral("Les %1 plus gros").arg(NumberText::grouped(most));
               },
               {offered.begin(), offered.end()},
               [](std::int64_t most) { return QString::number(most); }},
              [this] { scan(); })
{
    connect(this, &ScanToolViewModel::progressChanged, this, [this] {
        if (!m_scanned.category && !entries().empty()) {
            m_wideCounts = ListToolViewModel::categoryCounts();
        }
        m_isCut = m_isCut || static_cast<std::int64_t>(entries().size()) >= this->limit();
    });
    connect(this, &FolderTool::stateChanged, this, [this] {
        if (state() == ToolState::loaded()) {
            scanWhereNeeded();
        }
    });
}

CategoryCounts TopListViewModel::categoryCounts() const
{
    CategoryCounts counts = ListToolViewModel::categoryCounts();
    if (m_scanned.category) {
        counts.insert(m_wideCounts.begin(), m_wideCounts.end());
    }
    return counts;
}

ScanLine TopListViewModel::scanLine() const
{
    return {QStringLiteral("Analyse en cours… ") + NumberText::examinedFiles(scanCompleted()), std::nullopt};
}

void TopListViewModel::rootChosen(PropertyUpdate& update)
{
    m_wideCounts.clear();
    ListToolViewModel::rootChosen(update);
    m_toScan = narrowing();
}

void TopListViewModel::scanWhereNeeded()
{
    if (state() == ToolState::idle()) {
        return;
    }
    // Whether a running scan will lack some is known at its end; and one that the user stopped is no reason
    // for another as long as it may hold what is wanted.
    const bool lacksSome = m_isCut && scanEnd().isComplete();
    if (!m_scanned.contains(narrowing()) || (lacksSome && narrowing() != m_scanned)) {
        m_toScan = narrowing();
        scan();
    }
}

FileScanner::ScanStream TopListViewModel::startStream()
{
    m_scanned = m_toScan;
    m_isCut = false;
    return startSearch(m_scanned);
}

} // namespace tallyroom
