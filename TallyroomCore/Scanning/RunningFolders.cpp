#include "Scanning/RunningFolders.h"

#include <utility>

namespace tallyroom {

RunningFolders::Folder* RunningFolders::add(Entry entry)
{
    const std::scoped_lock lock{m_mutex};
    if (m_folders.size() == limit) {
        return nullptr;
    }
    Folder& folder = m_folders.emplace_back();
    folder.entry = std::move(entry);
    return &folder;
}

std::vector<Entry> RunningFolders::after(std::int64_t completed) const
{
    std::vector<Entry> running;
    const std::scoped_lock lock{m_mutex};
    for (const Folder& folder : m_folders) {
        if (folder.completed > completed) {
            running.push_back(folder.entry);
            running.back().sizeBytes = folder.bytes;
        }
    }
    return running;
}

} // namespace tallyroom
