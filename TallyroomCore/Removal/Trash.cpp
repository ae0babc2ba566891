#include "Removal/Trash.h"

#include "FileSystem/FolderReader.h"
#include "Removal/TrashFolders.h"
#include "Removal/TrashRecord.h"
#include "Removal/TrashSizes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <utility>

namespace tallyroom {

namespace {

constexpr int folderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

/// Names tried before giving up; the later ones are drawn from millions.
constexpr unsigned mostNames = 64;

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

/// The same for a trash folder on a volume, which others can write to: it has to be the person's own.
SystemResult<FileDescriptor> openOrMakeOwnFolder(int parent, const std::string& name)
{
    auto folder = TrashFolders::openOwn(parent, name);
    if (folder || folder.error().code != ENOENT) {
        return folder;
    }
    const auto made = openOrMakeFolder(parent, name, O_NOFOLLOW);
    return made ? TrashFolders::openOwn(parent, name) : std::unexpected(made.error());
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
        const auto mountAbove = mountOf(above->get(), "");
        if (!mountAbove) {
            return std::unexpected(mountAbove.error());
        }
        if (isRoot || *mountAbove != mount) {
            return top;
        }
        top = std::move(above);
    }
    return top;
}

/// An answer that will not change by asking again, unlike that of a disk or a server out of order.
bool isRefusal(SystemError error)
{
    constexpr std::array codes{ENOENT, EACCES, EPERM, ENOTDIR, EROFS, ELOOP, ENOSPC, EDQUOT};
    return std::ranges::find(codes, error.code) != codes.end();
}

/// True when the right item was moved: another may have taken its place at the last moment.
bool isStillThis(const MeantItem& meant, int folder, const std::string& name)
{
    if (!meant.identity) {
        return true;
    }
    const auto moved = fileAttributes(folder, name.c_str());
    return moved && meant.isThis(*moved);
}

std::optional<ItemIdentity> identityOf(const ItemPlace& place, const SystemResult<FileAttributes>& attributes)
{
    return attributes && place.meant.volumes != nullptr
               ? std::optional{place.meant.volumes->identify(*attributes)}
               : std::nullopt;
}

} // namespace

Trash::Result Trash::moveIn(const ItemPlace& place)
{
    const auto found = fileAttributes(place.parent.get(), place.name.c_str());
    if (!found || !place.meant.isThis(*found)) {
        return std::unexpected(found ? Refusal{ESTALE, hasChanged} : Refusal{found.error()});
    }
    const auto mount = mountOf(place.parent.get(), place.name.c_str());
    const auto realPath = mount ? place.realPath() : std::unexpected(mount.error());
    if (!realPath) {
        return std::unexpected(realPath.error());
    }
    findHomeBin();
    if (!m_homeMount) {
        return std::unexpected(m_home->error()); // a guess might make a trash where nobody looks for one
    }
    if (*mount == *m_homeMount) {
        auto stored = *m_home ? store(**m_home, place, *realPath) : std::unexpected(m_home->error());
        // A bind mount or a file system that divides itself may refuse: the volume's own trash is next.
        if (stored || stored.error().code != EXDEV) {
            return stored;
        }
    }
    const auto bin = volumeBin(place, *mount);
    return bin ? store(**bin, place, *realPath) : std::unexpected(bin.error());
}

std::expected<void, Trash::Refusal> Trash::putBack(const Return& wanted)
{
    const auto from = ItemPlace::open(wanted.inTrash);
    const auto to = ItemPlace::open(wanted.original);
    if (!from || !to) {
        return std::unexpected(from ? to.error() : from.error());
    }
    const auto folder = fileAttributes(to->parent.get());
    if (!folder || !wanted.folder.isThis(*folder)) {
        return std::unexpected(folder ? Refusal{ESTALE, "Le dossier d'origine a été remplacé par un autre."}
                                      : Refusal{folder.error()});
    }
    const auto found = fileAttributes(from->parent.get(), from->name.c_str());
    if (!found) {
        return std::unexpected(found.error().code == ENOENT
                                   ? Refusal{ENOENT, "Cet élément n'est plus dans la corbeille."}
                                   : Refusal{found.error()});
    }
    const Refusal stranger{ESTALE, "Un autre élément porte maintenant ce nom dans la corbeille."};
    const std::string record = std::string{from->name}.append(TrashRecord::suffix);
    const auto records = TrashRecord::openBeside(from->parent.get());
    const bool isOurs = wanted.item.identity
                            ? wanted.item.isThis(*found)
                            : records && TrashRecord::tellsPlace(records->get(), record, *to);
    if (!isOurs) {
        return std::unexpected(stranger);
    }
    if (const auto moved = moveWithoutReplacing(from->parent.get(), from->name, to->parent.get(), to->name);
        !moved) {
        return std::unexpected(moved.error());
    }
    if (!isStillThis(wanted.item, to->parent.get(), to->name) &&
        moveWithoutReplacing(to->parent.get(), to->name, from->parent.get(), from->name)) {
        return std::unexpected(stranger);
    }
    if (records) {
        ::unlinkat(records->get(), record.c_str(), 0);
    }
    noteDeparture(from->parent.get());
    return {};
}

void Trash::forget(const ItemPlace& place)
{
    const auto path = realPathOf(place.parent.get());
    const auto records = TrashRecord::openBeside(place.parent.get());
    const std::string record = std::string{place.name}.append(TrashRecord::suffix);
    if (path && path->ends_with("/files") && records && TrashRecord::isRecord(records->get(), record)) {
        ::unlinkat(records->get(), record.c_str(), 0);
        noteDeparture(place.parent.get());
    }
}

Trash::~Trash()
{
    for (const auto& [path, trash] : m_left) {
        TrashSizes::dropGone(trash.get());
    }
}

void Trash::noteDeparture(int files)
{
    const auto path = realPathOf(files);
    if (path && path->ends_with("/files") && !m_left.contains(*path)) {
        if (auto trash = openAt(files, "..", folderFlags)) {
            m_left.emplace(*path, std::move(*trash));
        }
    }
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
    const std::string content = TrashRecord::contentFor(shownPath);
    for (unsigned tried = 0; tried < mostNames; ++tried) {
        const std::string name =
            TrashRecord::itemName(place.name, tried, longest - TrashRecord::suffix.size());
        const std::string record = std::string{name}.append(TrashRecord::suffix);
        auto done = TrashRecord::write(bin.records.get(), record, content);
        if (done) {
            done = moveWithoutReplacing(place.parent.get(), place.name, bin.files.get(), name);
            if (done && !isStillThis(place.meant, bin.files.get(), name)) {
                // Nobody asked to trash this one: it goes back, or stays in the trash with its record.
                if (!moveWithoutReplacing(bin.files.get(), name, place.parent.get(), place.name)) {
                    return std::unexpected(Refusal{
                        ESTALE,
                        "Cet élément a été remplacé, et ce qui a pris sa place est dans la corbeille."});
                }
                ::unlinkat(bin.records.get(), record.c_str(), 0);
                return std::unexpected(Refusal{ESTALE, hasChanged});
            }
            if (done) {
                return Stored{FileUrl{bin.path + "/files/" + name},
                              identityOf(place, fileAttributes(bin.files.get(), name.c_str())),
                              identityOf(place, fileAttributes(place.parent.get()))};
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

void Trash::findHomeBin()
{
    if (m_home) {
        return;
    }
    const FileUrl trash = TrashFolders::home();
    if (trash.isEmpty()) {
        m_homeMount = 0; // nowhere
        m_home = std::unexpected(SystemError{ENOENT});
    } else {
        m_home = openHomeBin(trash);
    }
}

/// Opens the home trash, and makes what is missing of it, step by step from the root. On the way m_homeMount
/// is the mount reached so far: where a step is refused, the trash would have to be made there. After any
/// other error nobody knows where it would be.
SystemResult<Trash::Bin> Trash::openHomeBin(const FileUrl& trash)
{
    SystemResult<FileDescriptor> step = openAt(AT_FDCWD, "/", folderFlags);
    const auto reached = [&]() -> SystemResult<void> {
        const auto mount = step ? mountOf(step->get(), "") : std::unexpected(step.error());
        if (mount) {
            m_homeMount = *mount;
            return {};
        }
        if (step || !isRefusal(step.error())) {
            m_homeMount.reset();
        }
        return std::unexpected(mount.error());
    };
    auto known = reached();
    for (const std::string& name : trash.pathComponents()) {
        if (known && name != "/") {
            step = openOrMakeFolder(step->get(), name, 0);
            known = reached();
        }
    }
    return known ? openBin(std::move(*step), {}) : std::unexpected(known.error());
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
    if (const auto shared = TrashFolders::openShared(top->get())) {
        if (auto own = openOrMakeOwnFolder(shared->get(), user)) {
            if (auto bin = openBin(std::move(*own), *topPath)) {
                return bin;
            }
        }
    }
    auto own = openOrMakeOwnFolder(top->get(), ".Trash-" + user);
    if (!own) {
        return std::unexpected(own.error());
    }
    return openBin(std::move(*own), *topPath);
}

} // namespace tallyroom
