#include "FileSystem/FolderReader.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <optional>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace tallyroom {

namespace {

constexpr int listingFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK;
constexpr int throughFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

/// openat2(2); nothing where the kernel is too old or does not grant the call.
std::optional<SystemResult<FileDescriptor>> openResolving(int base, const char* path, int flags,
                                                          std::uint64_t resolve)
{
    open_how how = {};
    how.flags = static_cast<unsigned>(flags | O_NOFOLLOW);
    how.resolve = resolve;
    const long descriptor = ::syscall(SYS_openat2, base, path, &how, sizeof how);
    if (descriptor < 0) {
        return errno == ENOSYS || errno == EPERM
                   ? std::nullopt
                   : std::optional<SystemResult<FileDescriptor>>{std::unexpected(SystemError::last())};
    }
    return FileDescriptor{static_cast<int>(descriptor)};
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
        auto opened = openAt(reached.isOpen() ? reached.get() : base, step.c_str(),
                             (path.empty() ? flags : throughFlags) | O_NOFOLLOW);
        if (!opened || path.empty()) {
            return opened;
        }
        reached = std::move(*opened);
    }
}

SystemResult<FileDescriptor> openWithoutLinks(int base, const char* path, int flags)
{
    auto opened = openResolving(base, path, flags, RESOLVE_NO_SYMLINKS | RESOLVE_BENEATH);
    return opened ? std::move(*opened) : openEachStep(base, path, flags);
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

SystemResult<FileDescriptor> openAt(int folder, const char* path, int flags, unsigned mode)
{
    FileDescriptor opened{::openat(folder, path, flags, mode)};
    if (!opened.isOpen()) {
        return std::unexpected(SystemError::last());
    }
    return opened;
}

SystemResult<FileDescriptor> openFolder(const FileUrl& url, FolderAccess access)
{
    return openBySteps(AT_FDCWD, url.path(), flagsFor(access),
                       [](int base, const char* path, int flags) { return openAt(base, path, flags); });
}

SystemResult<FileDescriptor> openChildFolder(int parent, const char* name)
{
    return openAt(parent, name, listingFlags | O_NOFOLLOW);
}

SystemResult<FileDescriptor> openOwnChildFolder(int parent, const char* name)
{
    if (auto opened = openResolving(parent, name, listingFlags,
                                    RESOLVE_NO_SYMLINKS | RESOLVE_NO_XDEV | RESOLVE_BENEATH)) {
        return std::move(*opened);
    }
    auto opened = openChildFolder(parent, name);
    const auto around = opened ? mountOf(parent, "") : std::unexpected(opened.error());
    const auto inside = around ? mountOf(opened->get(), "") : around;
    if (!inside) {
        return std::unexpected(inside.error());
    }
    return *inside == *around ? std::move(opened) : std::unexpected(SystemError{EXDEV});
}

SystemResult<FileDescriptor> openDescendantFolder(int base, std::string_view path, FolderAccess access)
{
    return openBySteps(base, path, flagsFor(access), openWithoutLinks);
}

NameBuffer::NameBuffer() : m_bytes(std::make_unique_for_overwrite<std::byte[]>(capacity)) {}

bool NameBuffer::read(int folder)
{
    if (m_size < capacity) {
        *this = NameBuffer{};
    }
    long used = 0;
    do {
        used = ::syscall(SYS_getdents64, folder, m_bytes.get(), capacity);
    } while (used < 0 && errno == EINTR);
    m_used = used > 0 ? static_cast<std::size_t>(used) : 0;
    return m_used > 0;
}

void NameBuffer::parse(std::vector<ListedName>& names) const
{
    const std::size_t before = names.size();
    forEachRecord(m_bytes.get(), m_used, [&names, before](const dirent64& record) {
        names.push_back({record.d_name, record.d_ino, static_cast<std::uint32_t>(std::strlen(record.d_name)),
                         static_cast<std::uint32_t>(names.size() - before), typeOf(record.d_type)});
    });
}

std::size_t NameBuffer::count() const
{
    std::size_t names = 0;
    forEachRecord(m_bytes.get(), m_used, [&names](const dirent64&) { ++names; });
    return names;
}

void NameBuffer::shrink()
{
    auto bytes = std::make_unique_for_overwrite<std::byte[]>(m_used);
    std::copy_n(m_bytes.get(), m_used, bytes.get());
    m_bytes = std::move(bytes);
    m_size = m_used;
}

} // namespace tallyroom
