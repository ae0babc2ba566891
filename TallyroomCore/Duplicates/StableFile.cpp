#include "Duplicates/StableFile.h"

#include "FileSystem/FolderReader.h"

#include <cerrno>
#include <chrono>
#include <climits>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <thread>
#include <utility>

namespace tallyroom {

namespace {

constexpr int readingFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

/// The clock that file systems stamp with, which moves in steps of some milliseconds.
Timestamp tickingClock()
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return Timestamp{std::chrono::seconds{now.tv_sec} + std::chrono::nanoseconds{now.tv_nsec}};
}

/// Waits until any further change would bear a later time than `changedAt`; false when it did not need to. A
/// time that is far ahead comes from another machine's clock and is not waited for.
bool outliveTick(Timestamp changedAt)
{
    constexpr std::chrono::milliseconds longestTick{10};
    bool hasWaited = false;
    for (Timestamp now = tickingClock(); now <= changedAt && changedAt - now < longestTick;
         now = tickingClock()) {
        std::this_thread::sleep_for(std::chrono::milliseconds{1});
        hasWaited = true;
    }
    return hasWaited;
}

} // namespace

SystemResult<FileDescriptor> openForReading(const FileUrl& url)
{
    if (url.path().size() < PATH_MAX) {
        return openAt(AT_FDCWD, url.path().c_str(), readingFlags);
    }
    const auto folder = openFolder(url.parent(), FolderAccess::throughOnly);
    return folder ? openAt(folder->get(), std::string{url.lastPathComponent()}.c_str(), readingFlags)
                  : std::unexpected(folder.error());
}

StableFile::StableFile(FileDescriptor descriptor, const FileAttributes& attributes)
    : m_descriptor(std::move(descriptor)), m_attributes(attributes)
{}

SystemResult<StableFile> StableFile::open(const FileUrl& url, std::int64_t size,
                                          const std::optional<Timestamp>& modifiedAt)
{
    auto descriptor = openForReading(url);
    auto now = descriptor ? fileAttributes(descriptor->get()) : std::unexpected(descriptor.error());
    if (now && now->changedAt && outliveTick(*now->changedAt)) {
        now = fileAttributes(descriptor->get());
    }
    if (!now) {
        return std::unexpected(now.error());
    }
    if (!now->isRegular || now->logicalBytes != size || now->modifiedAt != modifiedAt) {
        return std::unexpected(SystemError{ESTALE});
    }
    return StableFile{std::move(*descriptor), *now};
}

bool StableFile::isUnchanged() const
{
    const auto now = fileAttributes(m_descriptor.get());
    return now && now->logicalBytes == size() && FileIdentity::of(*now) == identity();
}

} // namespace tallyroom
