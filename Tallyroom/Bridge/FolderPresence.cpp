#include "Bridge/FolderPresence.h"

#include "FileSystem/FolderReader.h"

#include <cerrno>

namespace tallyroom {

namespace {

constexpr unsigned threads = 8; // as many as there are recent folders: none waits behind a dead mount
constexpr std::chrono::milliseconds patience{2000};

bool isMissingNow(const FileUrl& folder)
{
    const auto opened = openFolder(folder, FolderAccess::throughOnly);
    return !opened && (opened.error().code == ENOENT || opened.error().code == ENOTDIR);
}

} // namespace

FolderPresence& FolderPresence::shared()
{
    static FolderPresence presence;
    return presence;
}

FolderPresence::FolderPresence() : m_calls(threads, patience) {}

void FolderPresence::look(const std::vector<FileUrl>& folders)
{
    for (const FileUrl& folder : folders) {
        auto [sender, stream] = makeProgressStream<bool>();
        m_asked[folder] = std::make_unique<StreamPump<bool>>(
            std::move(stream), [this, folder](bool isMissing) { receive(folder, isMissing); }, [] {});
        m_calls.ask(folder.path(),
                    [folder, sender = std::move(sender)] { sender.send(isMissingNow(folder)); });
    }
}

void FolderPresence::receive(const FileUrl& folder, bool isMissing)
{
    const bool wasMissing = m_missing.contains(folder);
    if (isMissing) {
        m_missing.insert(folder);
    } else {
        m_missing.erase(folder);
    }
    if (isMissing != wasMissing) {
        Q_EMIT changed();
    }
}

} // namespace tallyroom
