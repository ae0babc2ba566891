#include "Removal/Trash.h"

#include "FileSystem/FileContent.h"
#include "FileSystem/FolderReader.h"
#include "Removal/TrashFolders.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <utility>

namespace tallyroom {

namespace {

constexpr int folderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
constexpr std::string_view recordSuffix = ".trashinfo";

/// Names tried before giving up; the later ones are drawn from millions.
constexpr unsigned mostNames = 64;

/// What rename(2) does not cross: the mount, or the device where the kernel does not tell mounts apart
/// (< 5.8).
SystemResult<std::uint64_t> mountOf(int folder, const char* name)
{
    struct statx stat = {};
    const int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_EMPTY_PATH;
    if (::statx(folder, name, flags, STATX_TYPE | STATX_MNT_ID, &stat) != 0) {
        return std::unexpected(SystemError::last());
    }
    return (stat.stx_mask & STATX_MNT_ID) != 0
               ? stat.stx_mnt_id
               : (std::uint64_t{stat.stx_dev_major} << 32U) | stat.stx_dev_minor;
}

SystemResult<FileDescriptor> openAt(int folder, const char* name, int flags)
{
    FileDescriptor opened{::openat(folder, name, flags, 0600)};
    if (!opened.isOpen()) {
        return std::unexpected(SystemError::last());
    }
    return opened;
}

/// Opens a folder; a missing one is made, for the person alone.
SystemResult<FileDescriptor> openOrMakeFolder(int parent, const std::string& name, int extraFlags)
{
    auto folder = openAt(parent, name.c_str(), folderFlags | extraFlags);
    if (folder || folder.error().code != ENOENT) {
        return folder;
    }
    if (::mkdirat(parent, name.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        return std::unexpected(SystemError::last());
    }
    return openAt(parent, name.c_str(), folderFlags | extraFlags);
}

/// The same, refused with EPERM unless it is the person's own and no link: others could put one there.
SystemResult<FileDescriptor> openOwnFolder(int parent, const std::string& name)
{
    auto folder = openOrMakeFolder(parent, name, O_NOFOLLOW);
    struct stat status = {};
    if (folder && (::fstat(folder->get(), &status) != 0 || status.st_uid != ::getuid())) {
        return std::unexpected(SystemError{EPERM});
    }
    return folder;
}

/// The folder of the trash that an administrator has made for everybody: ".Trash", sticky, no link.
SystemResult<FileDescriptor> openSharedTrash(int topFolder)
{
    auto folder = openAt(topFolder, ".Trash", folderFlags | O_NOFOLLOW);
    struct stat status = {};
    if (folder && (::fstat(folder->get(), &status) != 0 || (status.st_mode & S_ISVTX) == 0)) {
        return std::unexpected(SystemError{EPERM});
    }
    return folder;
}

/// Climbs to the highest folder of a mount.
SystemResult<FileDescriptor> openTopFolder(int folder, std::uint64_t mount)
{
    auto top = openAt(folder, ".", folderFlags);
    while (top) {
        auto above = openAt(top->get(), "..", folderFlags);
        struct stat own = {};
        struct stat other = {};
        if (!above || ::fstat(top->get(), &own) != 0 || ::fstat(above->get(), &other) != 0) {
            return above ? std::unexpected(SystemError::last()) : std::move(above);
        }
        const bool isRoot = own.st_dev == other.st_dev && own.st_ino == other.st_ino;
        if (isRoot || mountOf(above->get(), "") != mount) {
            return top;
        }
        top = std::move(above);
    }
    return top;
}

std::string localTime()
{
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    ::localtime_r(&now, &local);
    std::array<char, 32> text = {};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &local)};
}

/// The first bytes of a name, at most `length` of them, not cut within a UTF-8 sequence.
std::string_view shortened(std::string_view name, std::size_t length)
{
    if (name.size() <= length) {
        return name;
    }
    const auto isContinuation = [&name](std::size_t i) {
        return (static_cast<unsigned char>(name[i]) & 0xC0U) == 0x80U;
    };
    std::size_t end = length;
    while (end > 0 && length - end < 3 && isContinuation(end)) {
        --end;
    }
    return name.substr(0, isContinuation(end) ? length : end);
}

/// "notes.txt", then "notes.2.txt" to "notes.9.txt", then numbers drawn from an ever larger range: a hundred
/// folders of the same name in the trash do not cost a hundred tries.
std::string nameInTrash(const std::string& name, unsigned tried, std::size_t longest)
{
    const std::size_t dot = name.rfind('.');
    const bool hasExtension = dot != std::string::npos && dot > 0 && name.size() - dot <= 32;
    const std::string_view stem = std::string_view{name}.substr(0, hasExtension ? dot : name.size());
    std::string ending = hasExtension ? name.substr(dot) : "";
    if (tried > 0) {
        std::uint32_t number = tried + 1;
        if (number > 9) {
            std::random_device source;
            const std::uint32_t range = 100U << std::min(tried - 9, 20U);
            number = std::uniform_int_distribution<std::uint32_t>{10, range}(source);
        }
        ending.insert(0, "." + std::to_string(number));
    }
    return std::string{shortened(stem, longest - ending.size())} + ending;
}

bool writeAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

/// Makes the record `name`; EEXIST when another item has taken it. Leaves nothing behind on a failure.
SystemResult<void> writeRecord(int records, const std::string& name, const std::string& content)
{
    auto record = openAt(records, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC);
    if (!record) {
        return std::unexpected(record.error());
    }
    if (!writeAll(record->get(), content)) {
        const SystemError error = SystemError::last();
        ::unlinkat(records, name.c_str(), 0);
        return std::unexpected(error);
    }
    return {};
}

/// True when the record `name` tells that its item lay at `path`, or at the end of it, when it tells the
/// place on its volume.
bool recordsPath(int records, const std::string& name, const std::string& path)
{
    const auto record = openAt(records, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    const auto content = record ? contentOf(record->get()) : std::unexpected(record.error());
    constexpr std::string_view key = "\nPath=";
    const std::size_t start = content ? content->find(key) : std::string::npos;
    if (start == std::string::npos) {
        return false;
    }
    const std::size_t value = start + key.size();
    const std::string told = content->substr(value, content->find('\n', value) - value);
    const std::string encoded = percentEncodedPath(path);
    return told == encoded || (!told.starts_with('/') && encoded.ends_with("/" + told));
}

SystemResult<void> moveWithoutReplacing(int from, const std::string& name, int to, const std::string& newName)
{
    if (::renameat2(from, name.c_str(), to, newName.c_str(), RENAME_NOREPLACE) == 0) {
        return {};
    }
    if (errno == EINVAL || errno == ENOSYS) {
        // The file system does not know the flag. Looking first leaves an instant in which somebody may take
        // the name; in a trash the record, made with O_EXCL, has reserved it.
        struct stat status = {};
        if (::fstatat(to, newName.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
            return std::unexpected(SystemError{EEXIST});
        }
        if (errno == ENOENT && ::renameat(from, name.c_str(), to, newName.c_str()) == 0) {
            return {};
        }
    }
    return std::unexpected(SystemError::last());
}

} // namespace

Trash::Result Trash::moveIn(const ItemPlace& place)
{
    const auto mount = mountOf(place.parent.get(), place.name.c_str());
    const auto realPath = mount ? place.realPath() : std::unexpected(mount.error());
    if (!realPath) {
        return std::unexpected(realPath.error());
    }
    findHomeBin();
    if (*mount == m_homeMount) {
        auto stored = *m_home ? store(**m_home, place, *realPath) : std::unexpected(m_home->error());
        // A bind mount or a file system that divides itself may refuse: the volume's own trash is next.
        if (stored || stored.error().code != EXDEV) {
            return stored;
        }
    }
    const auto bin = volumeBin(place, *mount);
    return bin ? store(**bin, place, *realPath) : std::unexpected(bin.error());
}

std::expected<void, Trash::Refusal> Trash::putBack(const FileUrl& inTrash, const FileUrl& original)
{
    const auto from = ItemPlace::open(inTrash);
    const auto to = ItemPlace::open(original);
    if (!from || !to) {
        return std::unexpected(from ? to.error() : from.error());
    }
    const auto path = to->realPath();
    if (!path) {
        return std::unexpected(path.error());
    }
    const FileUrl trash = inTrash.parent().parent();
    const auto records = openFolder(trash.appending("info"), FolderAccess::throughOnly);
    const std::string record = std::string{from->name}.append(recordSuffix);
    if (!records || !recordsPath(records->get(), record, *path)) {
        return std::unexpected(Refusal{ENOENT, "Cet élément n'est plus dans la corbeille."});
    }
    const auto moved = moveWithoutReplacing(from->parent.get(), from->name, to->parent.get(), to->name);
    if (!moved) {
        return std::unexpected(moved.error());
    }
    ::unlinkat(records->get(), record.c_str(), 0);
    return {};
}

/// Puts an item into a trash of its own mount: the record first, which reserves the name, then the item.
Trash::Result Trash::store(const Bin& bin, const ItemPlace& place, const std::string& realPath)
{
    struct statvfs volume = {};
    const bool isKnown = ::fstatvfs(bin.records.get(), &volume) == 0 && volume.f_namemax > 64;
    const std::size_t longest = std::min<std::size_t>(isKnown ? volume.f_namemax : NAME_MAX, NAME_MAX);
    if (isWithin(bin.path, realPath) || isWithin(realPath, bin.path)) {
        return std::unexpected(Refusal{EINVAL, isWithin(bin.path, realPath)
                                                   ? "Ce dossier contient la corbeille."
                                                   : "Cet élément est déjà dans la corbeille."});
    }
    const std::string shownPath =
        bin.topFolder.empty() || !isWithin(realPath, bin.topFolder)
            ? realPath
            : realPath.substr(bin.topFolder.size() + (bin.topFolder.ends_with('/') ? 0 : 1));
    const std::string content =
        "[Trash Info]\nPath=" + percentEncodedPath(shownPath) + "\nDeletionDate=" + localTime() + "\n";
    for (unsigned tried = 0; tried < mostNames; ++tried) {
        const std::string name = nameInTrash(place.name, tried, longest - recordSuffix.size());
        const std::string record = std::string{name}.append(recordSuffix);
        auto done = writeRecord(bin.records.get(), record, content);
        if (done) {
            done = moveWithoutReplacing(place.parent.get(), place.name, bin.files.get(), name);
            if (done) {
                return FileUrl{bin.path + "/files/" + name};
            }
            ::unlinkat(bin.records.get(), record.c_str(), 0);
        }
        if (done.error().code != EEXIST) {
            return std::unexpected(done.error());
        }
    }
    return std::unexpected(SystemError{EEXIST});
}

SystemResult<Trash::Bin> Trash::openBin(FileDescriptor folder, std::string topFolder)
{
    auto files = openOrMakeFolder(folder.get(), "files", O_NOFOLLOW);
    if (!files) {
        return std::unexpected(files.error());
    }
    auto records = openOrMakeFolder(folder.get(), "info", O_NOFOLLOW);
    if (!records) {
        return std::unexpected(records.error());
    }
    const auto path = realPathOf(folder.get());
    const auto mount = mountOf(folder.get(), "");
    if (!path || !mount) {
        return std::unexpected(path ? mount.error() : path.error());
    }
    return Bin{std::move(*files), std::move(*records), *path, std::move(topFolder), *mount};
}

/// Opens the home trash, and makes what is missing of it, step by step from the root.
void Trash::findHomeBin()
{
    if (m_home) {
        return;
    }
    const FileUrl trash = TrashFolders::home();
    SystemResult<FileDescriptor> step = openAt(AT_FDCWD, trash.isEmpty() ? "" : "/", folderFlags);
    for (const std::string& name : trash.pathComponents()) {
        if (step && name != "/") {
            m_homeMount = mountOf(step->get(), "").value_or(0);
            step = openOrMakeFolder(step->get(), name, 0);
        }
    }
    m_home = step ? openBin(std::move(*step), {}) : std::unexpected(step.error());
    if (*m_home) {
        m_homeMount = (*m_home)->mount;
    }
}

SystemResult<const Trash::Bin*> Trash::volumeBin(const ItemPlace& place, std::uint64_t mount)
{
    if (!m_volume || m_volume->mount != mount) {
        auto opened = openVolumeBin(place, mount);
        if (!opened) {
            return std::unexpected(opened.error());
        }
        m_volume = std::move(*opened);
    }
    return &*m_volume;
}

SystemResult<Trash::Bin> Trash::openVolumeBin(const ItemPlace& place, std::uint64_t mount)
{
    const auto top = openTopFolder(place.parent.get(), mount);
    const auto topPath = top ? realPathOf(top->get()) : std::unexpected(top.error());
    if (!topPath) {
        return std::unexpected(topPath.error());
    }
    const std::string user = std::to_string(::getuid());
    if (const auto shared = openSharedTrash(top->get())) {
        if (auto own = openOwnFolder(shared->get(), user)) {
            if (auto bin = openBin(std::move(*own), *topPath)) {
                return bin;
            }
        }
    }
    auto own = openOwnFolder(top->get(), ".Trash-" + user);
    if (!own) {
        return std::unexpected(own.error());
    }
    return openBin(std::move(*own), *topPath);
}

} // namespace tallyroom
