#include "Scanning/FolderContents.h"

namespace tallyroom {

void FolderContents::Growing::add(const FolderSize& part)
{
    m_counted.fetch_add(part.bytes, std::memory_order_relaxed);
    m_files.fetch_add(part.files, std::memory_order_relaxed);
    raise(m_newest, part.newest);
}

FolderContents::Growing& FolderContents::of(const std::string& name)
{
    const std::scoped_lock lock{m_mutex};
    return m_folders.try_emplace(name, m_counted).first->second;
}

void FolderContents::set(const std::string& name, const FolderSize& size)
{
    Growing& folder = of(name);
    folder.m_files = size.files;
    folder.m_newest = size.newest;
}

std::optional<FolderContents::Content> FolderContents::find(const std::string& name) const
{
    const std::scoped_lock lock{m_mutex};
    const auto found = m_folders.find(name);
    return found != m_folders.end() ? std::optional{found->second.content()} : std::nullopt;
}

} // namespace tallyroom
