#include "Volumes/FreeSpace.h"

#include "FileSystem/FileAttributes.h"
#include "FileSystem/FolderReader.h"
#include "Model/CheckedArithmetic.h"
#include "Model/UrlSet.h"
#include "Volumes/VolumeFigures.h"

#include <utility>

namespace tallyroom {

void FreeSpace::note(const std::vector<Entry>& entries)
{
    UrlSet folders;
    for (const Entry& entry : entries) {
        folders.insert(entry.url.parent());
    }
    for (const FileUrl& url : folders) {
        auto folder = openFolder(url, FolderAccess::throughOnly);
        const auto attributes = folder ? fileAttributes(folder->get()) : std::unexpected(folder.error());
        if (attributes && !m_volumes.contains(attributes->device)) {
            const auto free = volumeFigures(folder->get()).free;
            m_volumes.emplace(attributes->device, Volume{std::move(*folder), free});
        }
    }
}

std::optional<std::int64_t> FreeSpace::gained() const
{
    std::int64_t sum = 0;
    for (const auto& [device, volume] : m_volumes) {
        const auto now = volumeFigures(volume.folder.get()).free;
        if (!now || !volume.free) {
            return std::nullopt;
        }
        sum = saturatedSum(sum, *now - *volume.free);
    }
    return m_volumes.empty() ? std::nullopt : std::optional{sum};
}

} // namespace tallyroom
