#include "Analysis/StableFile.h"

#include "FileSystem/FolderReader.h"

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

FileDescriptor openForReading(const FileUrl& url)
{
    if (url.path().size() < PATH_MAX) {
        return FileDescriptor{::open(url.path().c_str(), readingFlags)};
    }
    const auto folder = openFolder(url.parent(), FolderAccess::throughOnly);
    const std::string name{url.lastPathComponent()};
    return folder ? FileDescriptor{::openat(folder->get(), name.c_str(), readingFlags)} : FileDescriptor{};
}

/// The clock that file systems stamp with, which moves in steps of some milliseconds.
Timestamp tickingClock()
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return Timestamp{std::chrono::seconds{now.tv_sec} + std::chrono::nanoseconds{now.tv_nsec}};
}

/// Waits until any further change would bear a later time than `changedAt`. A time that is far ahead comes
/// from another machine's clock and is not waited for.
void outliveTick(Timestamp changedAt)
{
    constexpr std::chrono::milliseconds longestTick{10};
    for (Timestamp now = tickingClock(); now <= changedAt && changedAt - now < longestTick;
         now = tickingClock()) {
        std::this_thread::sleep_for(std::chrono::milliseconds{1});
    }
}

} // namespace

StableFile::StableFile(FileDescriptor descriptor, const FileIdentity& expected, std::int64_t expectedSize)
    : m_descriptor(std::move(descriptor)), m_expected(expected), m_expectedSize(expectedSize)
{}

std::optional<StableFile> StableFile::open(const FileUrl& url, const FileIdentity& expected,
                                           std::int64_t expectedSize)
{
    if (expected.changedAt) {
        outliveTick(*expected.changedAt);
    }
    StableFile file{openForReading(url), expected, expectedSize};
    if (!file.m_descriptor.isOpen() || !file.isUnchanged()) {
        return std::nullopt;
    }
    return file;
}

bool StableFile::isUnchanged() const
{
    const auto attributes = fileAttributes(m_descriptor.get());
    return attributes && attributes->isRegular && attributes->logicalBytes == m_expectedSize &&
           FileIdentity::of(*attributes) == m_expected;
}

} // namespace tallyroom
