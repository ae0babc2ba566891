#include "FileSystem/FolderReader.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

namespace tallyroom {

namespace {

constexpr int listingFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK;
constexpr int throughFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

SystemResult<FileDescriptor> open(int base, const char* path, int flags)
{
    const int descriptor = ::openat(base, path, flags);
    if (descriptor < 0) {
        return std::unexpected(SystemError::last());
    }
    return FileDescriptor{descriptor};
}

/// One component at a time, none of them a link.
SystemResult<FileDescriptor> openEachStep(int base, std::string_view path, int flags)
{
    FileDescriptor reached;
    while (true) {
        const std::string step{path.substr(0, path.find('/'))};
        path.remove_prefix(std::min(path.find_first_not_of('/', step.size()), path.size()));
        if (step == "..") {
            return std::unexpected(SystemError{EXDEV});
        }
        auto opened = open(reached.isOpen() ? reached.get() : base, step.c_str(),
                           (path.empty() ? flags : throughFlags) | O_NOFOLLOW);
        if (!opened || path.empty()) {
            return opened;
        }
        reached = std::move(*opened);
    }
}

SystemResult<FileDescriptor> openWithoutLinks(int base, const char* path, int flags)
{
    open_how how = {};
    how.flags = static_cast<unsigned>(flags | O_NOFOLLOW);
    how.resolve = RESOLVE_NO_SYMLINKS | RESOLVE_BENEATH;
    const long descriptor = ::syscall(SYS_openat2, base, path, &how, sizeof how);
    if (descriptor < 0 && (errno == ENOSYS || errno == EPERM)) { // an old kernel, or one held back
        return openEachStep(base, path, flags);
    }
    if (descriptor < 0) {
        return std::unexpected(SystemError::last());
    }
    return FileDescriptor{static_cast<int>(descriptor)};
}

/// Takes the longest run of whole components that the kernel accepts in one call off the front of `path`.
std::string takeSteps(std::string_view& path)
{
    std::size_t length = path.size();
    if (length >= PATH_MAX) {
        const std::size_t slash = path.rfind('/', PATH_MAX - 2);
        length = slash == std::string_view::npos || slash == 0 ? PATH_MAX - 1 : slash;
    }
    std::string steps{path.substr(0, length)};
    path.remove_prefix(length);
    path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
    return steps;
}

template <class Open>
SystemResult<FileDescriptor> openBySteps(int base, std::string_view path, int lastFlags, Open openOne)
{
    FileDescriptor reached;
    while (true) {
        const std::string steps = takeSteps(path);
        auto opened = openOne(reached.isOpen() ? reached.get() : base, steps.c_str(),
                              path.empty() ? lastFlags : throughFlags);
        if (!opened || path.empty()) {
            return opened;
        }
        reached = std::move(*opened);
    }
}

int flagsFor(FolderAccess access)
{
    switch (access) {
    case FolderAccess::listing:
        return listingFlags;
    case FolderAccess::listingNoLink:
        return listingFlags | O_NOFOLLOW;
    case FolderAccess::throughOnly:
        return throughFlags;
    }
    return listingFlags;
}

EntryType typeOf(unsigned char kernelType)
{
    switch (kernelType) {
    case DT_UNKNOWN:
        return EntryType::unknown;
    case DT_DIR:
        return EntryType::folder;
    case DT_LNK:
        return EntryType::link;
    default:
        return EntryType::file;
    }
}

/// Calls `visit(record)` for every record but "." and "..".
template <class Visit>
void forEachRecord(const std::byte* bytes, std::size_t used, Visit visit)
{
    for (std::size_t offset = 0; offset < used;) {
        const auto* const record = reinterpret_cast<const dirent64*>(bytes + offset);
        const char* const name = record->d_name;
        const bool isDot = name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
        if (!isDot) {
            visit(*record);
        }
        offset += record->d_reclen;
    }
}

} // namespace

SystemResult<FileDescriptor> openFolder(const FileUrl& url, FolderAccess access)
{
    return openBySteps(AT_FDCWD, url.path(), flagsFor(access), open);
}

SystemResult<FileDescriptor> openChildFolder(int parent, const char* name)
{
    return open(parent, name, listingFlags | O_NOFOLLOW);
}

SystemResult<FileDescriptor> openDescendantFolder(int base, std::string_view path, FolderAccess access)
{
    return openBySteps(base, path, flagsFor(access), openWithoutLinks);
}

NameBuffer::NameBuffer() : m_bytes(capacity) {}

bool NameBuffer::read(int folder)
{
    m_bytes.resize(capacity);
    long used = 0;
    do {
        used = ::syscall(SYS_getdents64, folder, m_bytes.data(), m_bytes.size());
    } while (used < 0 && errno == EINTR);
    m_used = used > 0 ? static_cast<std::size_t>(used) : 0;
    return m_used > 0;
}

void NameBuffer::parse(std::vector<ListedName>& names) const
{
    forEachRecord(m_bytes.data(), m_used, [&names](const dirent64& record) {
        names.push_back({record.d_name, std::strlen(record.d_name), typeOf(record.d_type)});
    });
}

std::size_t NameBuffer::count() const
{
    std::size_t names = 0;
    forEachRecord(m_bytes.data(), m_used, [&names](const dirent64&) { ++names; });
    return names;
}

void NameBuffer::shrink()
{
    m_bytes.resize(m_used);
    m_bytes.shrink_to_fit();
}

} // namespace tallyroom
