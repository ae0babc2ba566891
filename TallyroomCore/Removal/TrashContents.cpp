#include "Removal/TrashContents.h"

#include "Concurrency/PatientCalls.h"
#include "FileSystem/FolderReader.h"
#include "FileSystem/MountTable.h"
#include "FileSystem/RealPath.h"
#include "Model/CheckedArithmetic.h"
#include "Removal/TrashFolders.h"
#include "Removal/TrashMeasure.h"
#include "Removal/TrashRecord.h"
#include "Volumes/VolumeMounts.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <iterator>
#include <memory>
#include <string_view>
#include <unistd.h>
#include <unordered_set>
#include <utility>

namespace tallyroom {

namespace {

/// A volume that has been silent for so long is not asked again before it answers.
constexpr std::chrono::seconds patience{30};
constexpr unsigned mostAsked = 8;

/// The questions of this process; threads that hang may outlive main().
PatientCalls& calls()
{
    static PatientCalls& shared = *new PatientCalls{mostAsked, patience}; // NOLINT: see above
    return shared;
}

/// One open trash folder.
struct OpenTrash {
    FileUrl files;
    FileUrl records;
    FileUrl topFolder;              ///< that relative paths in its records start from
    FileDescriptor filesFolder;     ///< a step only
    FileDescriptor recordsFolder{}; ///< "info"; closed when there is none
    std::uint32_t filesRoot = 0;    ///< ScanRoots' key
    FileId id;
};

/// Takes a trash folder apart, unless it is known already: a mount may show it a second time.
void addTrash(std::vector<OpenTrash>& all, const SystemResult<FileDescriptor>& trash,
              const FileUrl& topFolder)
{
    auto files = trash ? TrashFolders::openOwn(trash->get(), "files") : std::unexpected(trash.error());
    const auto path = files ? realPathOf(trash->get()) : std::unexpected(files.error());
    const auto attributes = path ? fileAttributes(trash->get()) : std::unexpected(path.error());
    if (!attributes || std::ranges::find(all, attributes->id(), &OpenTrash::id) != all.end()) {
        return;
    }
    OpenTrash& added = all.emplace_back(OpenTrash{.files = FileUrl{*path}.appending("files"),
                                                  .records = FileUrl{*path}.appending("info"),
                                                  .topFolder = topFolder,
                                                  .filesFolder = std::move(*files),
                                                  .id = attributes->id()});
    added.filesRoot = ScanRoots::add(added.files, added.filesFolder.get()).key;
    if (auto records = TrashFolders::openOwn(trash->get(), "info")) {
        added.recordsFolder = std::move(*records);
    }
}

/// Where the home trash really lies; empty when there is none. Waits for its disk.
FileUrl findHomeTrash()
{
    const FileUrl trash = TrashFolders::home();
    const auto parent = trash.isEmpty() ? std::unexpected(SystemError{ENOENT})
                                        : openFolder(trash.parent(), FolderAccess::throughOnly);
    const auto path = parent ? realPathOf(parent->get()) : std::unexpected(parent.error());
    return path ? FileUrl{*path}.appending(trash.lastPathComponent()) : FileUrl{};
}

/// The person's trash folders on the volume mounted there, at all the places where it is mounted.
std::vector<OpenTrash> openTrashes(const FileUrl& mountPoint, const FileUrl& homeTrash)
{
    std::vector<OpenTrash> all;
    const std::vector<Mount> mounts = MountTable::reachable(MountTable::read());
    const auto volume = std::ranges::find(mounts, mountPoint.path(), &Mount::mountPoint);
    if (volume == mounts.end()) {
        return all;
    }
    const auto home = homeTrash.isEmpty() ? std::nullopt : MountTable::holding(homeTrash, mounts);
    if (home && VolumeMounts::isSameVolume(*home, *volume)) {
        const auto parent = openFolder(homeTrash.parent(), FolderAccess::throughOnly);
        addTrash(all,
                 parent ? TrashFolders::openOwn(parent->get(), std::string{homeTrash.lastPathComponent()})
                        : std::unexpected(parent.error()),
                 FileUrl{"/"});
    }
    const std::string user = std::to_string(::getuid());
    for (const Mount& mount : mounts) {
        if (!VolumeMounts::isSameVolume(mount, *volume)) {
            continue;
        }
        const FileUrl topFolder{mount.mountPoint};
        const auto top = openFolder(topFolder, FolderAccess::throughOnly);
        if (!top) {
            continue;
        }
        if (const auto shared = TrashFolders::openShared(top->get())) {
            addTrash(all, TrashFolders::openOwn(shared->get(), user), topFolder);
        }
        addTrash(all, TrashFolders::openOwn(top->get(), ".Trash-" + user), topFolder);
    }
    return all;
}

/// Where an item was, as its record tells.
FileUrl originOf(const OpenTrash& trash, const std::string& name)
{
    const auto told =
        trash.recordsFolder.isOpen()
            ? TrashRecord::origin(trash.recordsFolder.get(), std::string{name}.append(TrashRecord::suffix))
            : std::nullopt;
    if (!told) {
        return {};
    }
    return told->starts_with('/') ? FileUrl{*told} : trash.topFolder.appending(*told);
}

/// True when it is sure that the item of a record is not there.
bool isItemGone(int files, std::string_view record)
{
    const std::string item{record.substr(0, record.size() - TrashRecord::suffix.size())};
    const auto found = fileAttributes(files, item.c_str());
    return !found && found.error().code == ENOENT;
}

/// Calls `visit` with the name of every record.
template <class Visit>
void forEachRecord(const OpenTrash& trash, Visit visit)
{
    const auto folder = trash.recordsFolder.isOpen()
                            ? openAt(trash.recordsFolder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)
                            : std::unexpected(SystemError{ENOENT});
    NameBuffer buffer;
    std::vector<ListedName> names;
    while (folder && buffer.read(folder->get())) {
        names.clear();
        buffer.parse(names);
        for (const ListedName& name : names) {
            if (name.length > TrashRecord::suffix.size() && name.view().ends_with(TrashRecord::suffix)) {
                visit(std::string{name.view()});
            }
        }
    }
}

/// The records whose items are gone.
void findLeftRecords(TrashContents& contents, const OpenTrash& trash,
                     const std::unordered_set<std::string>& items)
{
    const ScanRoot& root = ScanRoots::add(trash.records, trash.recordsFolder.get());
    forEachRecord(trash, [&](const std::string& name) {
        if (items.contains(name.substr(0, name.size() - TrashRecord::suffix.size())) ||
            !isItemGone(trash.filesFolder.get(), name)) {
            return;
        }
        const auto attributes = fileAttributes(trash.recordsFolder.get(), name.c_str());
        if (attributes && attributes->isRegular && TrashRecord::isRecord(trash.recordsFolder.get(), name)) {
            contents.leftRecords.push_back({.url = trash.records.appending(name),
                                            .name = name,
                                            .sizeBytes = attributes->allocatedBytes,
                                            .identity = root.identify(*attributes)});
        }
    });
}

std::optional<TrashContents> readWith(const FileUrl& mountPoint, const FileUrl& homeTrash,
                                      const std::stop_token& stop)
{
    const std::vector<OpenTrash> trashes = openTrashes(mountPoint, homeTrash);
    std::vector<FileUrl> folders;
    std::ranges::transform(trashes, std::back_inserter(folders), &OpenTrash::files);
    auto measured = TrashMeasure::measure(folders, stop);
    if (!measured) {
        return std::nullopt;
    }
    TrashContents contents;
    contents.unread = measured->unread;
    std::vector<std::unordered_set<std::string>> names(trashes.size());
    for (TrashMeasure::Item& item : measured->items) {
        const OpenTrash& trash = trashes[item.folder];
        // Another folder may have taken the place of the one that was examined.
        if (stop.stop_requested() || item.entry.identity.root != trash.filesRoot) {
            continue;
        }
        contents.totalBytes = saturatedSum(contents.totalBytes, item.entry.sizeBytes);
        contents.unread += item.entry.unread;
        names[item.folder].insert(item.entry.name);
        FileUrl original = originOf(trash, item.entry.name);
        contents.items.push_back({std::move(item.entry), std::move(original)});
    }
    for (std::size_t place = 0; place < trashes.size() && !stop.stop_requested(); ++place) {
        if (trashes[place].recordsFolder.isOpen()) {
            findLeftRecords(contents, trashes[place], names[place]);
        }
    }
    std::ranges::sort(contents.items, [](const TrashContents::Item& left, const TrashContents::Item& right) {
        return left.entry.sizeBytes != right.entry.sizeBytes ? left.entry.sizeBytes > right.entry.sizeBytes
                                                             : left.entry.url < right.entry.url;
    });
    return stop.stop_requested() ? std::nullopt : std::optional{std::move(contents)};
}

} // namespace

std::optional<TrashContents> TrashContents::read(const FileUrl& mountPoint, const std::stop_token& stop)
{
    return readWith(mountPoint, findHomeTrash(), stop);
}

ProgressStream<TrashContents> TrashContents::stream(const FileUrl& mountPoint)
{
    auto [sender, stream] = makeProgressStream<TrashContents>();
    const auto askVolume = [mountPoint, telling = std::make_shared<ProgressSender<TrashContents>>(
                                            std::move(sender))](const FileUrl& homeTrash) {
        static_cast<void>(calls().ask(mountPoint.path(), [mountPoint, telling, homeTrash] {
            if (auto contents = readWith(mountPoint, homeTrash, telling->stopToken())) {
                telling->send(std::move(*contents));
            }
        }));
    };
    // The home folder may be on a dead server: only a thread that asks it waits, and later volumes do not.
    if (!calls().ask("home", [askVolume] { askVolume(findHomeTrash()); })) {
        askVolume({});
    }
    return std::move(stream);
}

FileRemover::RemovalResult TrashContents::empty(const FileRemover::BatchOptions& options) const
{
    auto result = FileRemover::remove(entries(), true, options);
    FileRemover::BatchOptions forRecords;
    forRecords.stop = options.stop;
    forRecords.screening = [](const Entry& record, const std::stop_token& /*stop*/) {
        const auto files =
            openFolder(record.url.parent().parent().appending("files"), FolderAccess::throughOnly);
        // The record is written before its item comes.
        return files && isItemGone(files->get(), record.name)
                   ? FileRemover::Screened{}
                   : FileRemover::Screened{.refusal = "Un élément a pris ce nom.", .secondLook = {}};
    };
    static_cast<void>(FileRemover::remove(leftRecords, true, forRecords));
    return result;
}

std::vector<Entry> TrashContents::entries() const
{
    std::vector<Entry> all;
    std::ranges::transform(items, std::back_inserter(all), &Item::entry);
    return all;
}

} // namespace tallyroom
