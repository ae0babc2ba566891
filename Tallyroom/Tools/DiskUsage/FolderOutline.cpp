#include "Tools/DiskUsage/FolderOutline.h"

#include "Deletion/RemovedPlaces.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tallyroom {

namespace {

/// The same outline without what lies at and below `gone`; nothing where it tells of none of it.
SharedOutline without(const SharedOutline& outline, const std::vector<Entry>& gone)
{
    const RemovedPlaces places{gone};
    std::shared_ptr<Outline> changed;
    for (std::uint32_t place = 1; place < outline->nodes.size(); ++place) {
        const Outline::Node& node = (changed ? *changed : *outline).nodes[place];
        if (node.entry.sizeBytes <= 0 || !places.covers(node.entry)) {
            continue;
        }
        if (changed == nullptr) {
            changed = std::make_shared<Outline>(*outline);
        }
        // Nodes keep their numbers; what has no size is not drawn. Folders come before what they hold, and
        // what lay below one went with it.
        Outline::Node& taken = changed->nodes[place];
        const std::int64_t bytes = std::exchange(taken.entry.sizeBytes, 0);
        taken.isExpanded = false;
        bool isCounted = changed->nodes[taken.parent].entry.sizeBytes <= 0;
        for (std::uint32_t above = taken.parent; !isCounted; above = changed->nodes[above].parent) {
            std::int64_t& size = changed->nodes[above].entry.sizeBytes;
            size = std::max<std::int64_t>(size - bytes, 0);
            isCounted = above == 0;
        }
    }
    return changed;
}

} // namespace

FolderOutline::FolderOutline(Read read) : m_read(std::move(read))
{
    m_again.setSingleShot(true);
    m_again.setInterval(std::chrono::milliseconds{700});
    connect(&m_again, &QTimer::timeout, this, &FolderOutline::update);
}

void FolderOutline::setWanted(bool isWanted)
{
    m_isWanted = isWanted;
    if (m_isWanted && m_isDue) {
        readFolder();
    }
}

void FolderOutline::open(const std::optional<FileUrl>& folder)
{
    m_reading.reset();
    m_readingCloser.reset();
    m_folder = folder;
    m_closer.reset();
    m_isFirst = true;
    m_newest.reset();
    m_isDue = false;
    m_isMeasuring = false;
    m_again.stop();
    if (!std::exchange(m_outlines, {}).empty()) {
        Q_EMIT changed();
    }
}

void FolderOutline::update()
{
    m_isDue = m_folder.has_value();
    if (m_isWanted && m_isDue) {
        readFolder();
    }
}

void FolderOutline::setMeasuring(bool isMeasuring)
{
    m_isMeasuring = isMeasuring;
    update();
}

void FolderOutline::readFolder()
{
    m_isDue = false;
    m_again.stop();
    TreeOutline::Detail detail;
    if (m_isMeasuring) {
        detail.unknown = TreeOutline::Unknown::pending;
    }
    m_reading = std::make_unique<StreamPump<TreeOutline::Progress>>(
        m_read(*m_folder, detail), [this](const TreeOutline::Progress& record) { receive(record); },
        [this] {
            showNewest();
            m_isFirst = false;
            if (m_isMeasuring) {
                m_again.start();
            }
        });
    if (const auto closer = std::exchange(m_closer, std::nullopt)) {
        lookCloser(*closer);
    }
}

/// Only the first reading shows level after level: a map that was read before does not fall back to two.
void FolderOutline::receive(const TreeOutline::Progress& record)
{
    m_newest = record.outline;
    if (m_isFirst) {
        showNewest();
    }
}

void FolderOutline::showNewest()
{
    if (m_newest != nullptr) {
        m_outlines.resize(std::max<std::size_t>(m_outlines.size(), 1));
        m_outlines.front() = std::exchange(m_newest, nullptr);
        Q_EMIT changed();
    }
}

void FolderOutline::lookCloser(const FileUrl& folder)
{
    if (m_closer == folder || folder == m_folder) {
        return;
    }
    m_closer = folder;
    m_readingCloser = std::make_unique<StreamPump<TreeOutline::Progress>>(
        m_read(folder, {}), [this](const TreeOutline::Progress& record) { receiveCloser(record); }, [] {});
}

void FolderOutline::receiveCloser(const TreeOutline::Progress& record)
{
    if (record.outline != nullptr && record.isComplete && !m_outlines.empty()) {
        m_outlines.resize(2);
        m_outlines.back() = record.outline;
        Q_EMIT changed();
    }
}

void FolderOutline::takeOut(const std::vector<Entry>& gone)
{
    bool isChanged = false;
    for (SharedOutline& outline : m_outlines) {
        if (SharedOutline left = without(outline, gone)) {
            outline = std::move(left);
            isChanged = true;
        }
    }
    if (isChanged) {
        Q_EMIT changed();
    }
}

} // namespace tallyroom
