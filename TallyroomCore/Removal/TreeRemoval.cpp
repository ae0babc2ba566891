#include "Removal/TreeRemoval.h"

#include "FileSystem/FileAttributes.h"
#include "FileSystem/FileDescriptor.h"
#include "FileSystem/FolderReader.h"
#include "Model/CheckedArithmetic.h"
#include "Removal/EmptiedFolder.h"
#include "Removal/LookAhead.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tallyroom {

namespace {

/// Unlinking waits for the disk's journal more than for the processor, so more threads than cores pay off.
constexpr std::size_t widestRemoval = 8;

/// Below this many names gone, starting threads costs more than they save.
constexpr std::size_t namesOfALargeTree = 400;

/// How many levels of folders stay open above the one that is being emptied.
constexpr unsigned levelsKeptOpen = 24;

/// How often a folder that is filled meanwhile is emptied again. Some file systems skip names when others are
/// removed while the folder is read, about half of what is left each time.
constexpr unsigned mostPasses = 16;

/// The disk space that removing a name frees.
std::int64_t bytesThatGo(const SystemResult<FileAttributes>& file)
{
    return file && file->links == 1 ? file->allocatedBytes : 0;
}

/// One removal of one tree. Folders are taken newest first, so that few are open at a time; the last one to
/// finish below a folder removes it and goes on with its parent.
class Removal {
    using Folder = EmptiedFolder;
    using SharedDescriptor = Folder::SharedDescriptor;

public:
    Removal(FileDescriptor base, const MeantItem& meant, const std::stop_token& stop, const DiskSense& sense)
        : m_base(std::make_shared<const FileDescriptor>(std::move(base))), m_meant(meant), m_stop(stop),
          m_sense(sense)
    {}

    TreeRemoval::Outcome run(const std::string& name)
    {
        m_waiting.push_back(std::make_shared<Folder>(nullptr, name));
        {
            std::vector<std::jthread> helpers;
            bool isLarge = false;
            work([&](std::size_t seenNames) {
                if (!isLarge && seenNames >= namesOfALargeTree) {
                    isLarge = true;
                    lookAhead(m_base->get(), name, m_stop, m_sense);
                    startHelpers(helpers);
                }
            });
        }
        m_outcome.removed += m_removedFolders;
        return std::move(m_outcome);
    }

private:
    enum class Outcome : unsigned char { gone, kept, filledAgain };

    /// A thread's storage for reading names.
    struct Reading {
        NameBuffer buffer;
        std::vector<ListedName> names;
        std::size_t seenNames = 0;
        std::size_t removedNames = 0;
        std::int64_t freedBytes = 0;
    };

    void startHelpers(std::vector<std::jthread>& helpers)
    {
        try {
            while (helpers.size() + 1 < widestRemoval) {
                helpers.emplace_back([this] { work([](std::size_t) {}); });
            }
        } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch): the threads there are will do
        }
    }

    /// Empties folders until the whole tree is gone.
    template <class AfterEach>
    void work(AfterEach afterEach)
    {
        Reading reading;
        while (auto folder = take()) {
            empty(folder, reading);
            finish(std::move(folder));
            afterEach(reading.seenNames);
        }
        const std::scoped_lock lock{m_mutex};
        m_outcome.removed += reading.removedNames;
        m_outcome.freedBytes = saturatedSum(m_outcome.freedBytes, reading.freedBytes);
    }

    std::shared_ptr<Folder> take()
    {
        std::unique_lock lock{m_mutex};
        m_wake.wait(lock, [this] { return m_done || !m_waiting.empty(); });
        if (m_done) {
            return nullptr;
        }
        auto folder = std::move(m_waiting.back());
        m_waiting.pop_back();
        return folder;
    }

    void add(std::vector<std::shared_ptr<Folder>>& folders)
    {
        {
            const std::scoped_lock lock{m_mutex};
            std::ranges::move(folders, std::back_inserter(m_waiting));
        }
        for (std::size_t i = 0; i < std::min(folders.size(), widestRemoval); ++i) {
            m_wake.notify_one();
        }
        folders.clear();
    }

    void end()
    {
        {
            const std::scoped_lock lock{m_mutex};
            m_done = true;
        }
        m_wake.notify_all();
    }

    /// Records a failure: of `name` in the folder, or of the folder itself.
    void note(const Folder& folder, const char* name, SystemError error)
    {
        std::string path = folder.pathBelow(folder.top());
        path.append(path.empty() || *name == '\0' ? "" : "/").append(name);
        const std::scoped_lock lock{m_mutex};
        ++m_outcome.kept;
        if (!m_outcome.error || path < m_outcome.firstKept) {
            m_outcome.error = error;
            m_outcome.firstKept = std::move(path);
        }
    }

    /// True after a stop: the rest of the folder stays.
    bool isStopped(Folder& folder)
    {
        if (!m_stop.stop_requested()) {
            return false;
        }
        folder.keepsSomething = true;
        const std::scoped_lock lock{m_mutex};
        m_outcome.isStopped = true;
        return true;
    }

    /// Removes the files of a folder and queues its folders.
    void empty(const std::shared_ptr<Folder>& folder, Reading& reading)
    {
        if (isStopped(*folder)) {
            return;
        }
        const auto opened = folder->passes++ == 0 ? openFirst(*folder) : rewound(*folder);
        if (!opened) {
            folder->unreadable = opened.error();
            return;
        }
        parkAncestor(*folder);
        std::vector<std::shared_ptr<Folder>> folders;
        // An error ends a listing like its end does, and only errno tells them apart.
        for (errno = 0; reading.buffer.read(opened->get()->get()); errno = 0) {
            reading.names.clear();
            reading.buffer.parse(reading.names);
            std::ranges::sort(reading.names, {}, &ListedName::inode); // as they lie on the disk
            for (const ListedName& name : reading.names) {
                if (isStopped(*folder)) {
                    break;
                }
                if (name.type == EntryType::folder ||
                    !removedFile(*folder, opened->get()->get(), name.name, reading)) {
                    folders.push_back(std::make_shared<Folder>(folder, std::string{name.view()}));
                }
            }
            reading.seenNames += reading.names.size();
            folder->pending += static_cast<std::uint32_t>(folders.size());
            add(folders);
        }
        if (errno != 0 && errno != EINTR && errno != ENOENT) {
            folder->unreadable = SystemError::last();
        }
    }

    /// False if it turns out to be a folder.
    bool removedFile(Folder& folder, int descriptor, const char* name, Reading& reading)
    {
        const std::int64_t bytes = bytesThatGo(fileAttributes(descriptor, name));
        if (::unlinkat(descriptor, name, 0) == 0) {
            reading.freedBytes = saturatedSum(reading.freedBytes, bytes);
            ++reading.removedNames;
        } else if (errno == EISDIR) {
            return false;
        } else if (errno != ENOENT) {
            note(folder, name, SystemError::last());
            folder.keepsSomething = true;
        }
        return true;
    }

    /// The work on a folder is done: removes it when nothing below it is pending, and so on upwards.
    void finish(std::shared_ptr<Folder> folder)
    {
        while (folder && --folder->pending == 0) {
            const Outcome outcome = removeEmptied(*folder);
            if (outcome == Outcome::filledAgain) {
                folder->pending = 1;
                std::vector<std::shared_ptr<Folder>> again{std::move(folder)};
                add(again);
                return;
            }
            auto parent = std::move(folder->parent);
            if (parent && outcome == Outcome::kept) {
                parent->keepsSomething = true;
            }
            if (!parent) {
                end();
            }
            folder = std::move(parent); // one at a time: a chain of destructors would recurse
        }
    }

    Outcome removeEmptied(Folder& folder)
    {
        if (folder.keepsSomething) {
            if (folder.unreadable) {
                note(folder, "", *folder.unreadable);
            }
            return Outcome::kept;
        }
        const auto parent = openParent(folder);
        if (!parent) {
            note(folder, "", parent.error());
            return Outcome::kept;
        }
        const char* const name = folder.name.c_str();
        if (::unlinkat(parent->get()->get(), name, AT_REMOVEDIR) == 0 || errno == ENOENT) {
            ++m_removedFolders;
            return Outcome::gone;
        }
        const SystemError error = SystemError::last();
        if (error.code == ENOTDIR && folder.parent && ::unlinkat(parent->get()->get(), name, 0) == 0) {
            return Outcome::gone; // swapped for a link, or for a file, in a folder that has to go
        }
        const bool isFilled = error.code == ENOTEMPTY || error.code == EEXIST;
        if (isFilled && !folder.unreadable && folder.passes < mostPasses) {
            return Outcome::filledAgain;
        }
        note(folder, "", folder.unreadable.value_or(error));
        return Outcome::kept;
    }

    SystemResult<SharedDescriptor> openFirst(Folder& folder)
    {
        const auto parent = folder.parent ? reopen(*folder.parent) : m_base;
        if (!parent) {
            return parent;
        }
        auto opened = openOwnChildFolder(parent->get()->get(), folder.name.c_str());
        if (!opened) {
            return std::unexpected(opened.error());
        }
        if (!folder.parent && !isMeant(fileAttributes(opened->get()))) {
            folder.keepsSomething = true;
            return std::unexpected(SystemError{ESTALE});
        }
        return folder.keepOpen(std::move(*opened));
    }

    [[nodiscard]] bool isMeant(const SystemResult<FileAttributes>& found) const
    {
        return found && m_meant.isThis(*found);
    }

    SystemResult<SharedDescriptor> rewound(Folder& folder)
    {
        auto opened = reopen(folder);
        if (opened && ::lseek(opened->get()->get(), 0, SEEK_SET) != 0) {
            return std::unexpected(SystemError::last());
        }
        return opened;
    }

    SystemResult<SharedDescriptor> openParent(Folder& folder)
    {
        if (!folder.parent) {
            return m_base;
        }
        const auto own = folder.descriptor();
        if (own && !folder.parent->descriptor()) {
            // One step up instead of the whole way down: this is what makes deep trees cheap.
            FileDescriptor above{::openat(own->get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK)};
            if (above.isOpen()) {
                if (auto opened = folder.parent->reopenAs(std::move(above))) {
                    return opened;
                }
            }
        }
        return reopen(*folder.parent);
    }

    /// The folder's descriptor; a parked one is opened from its nearest open ancestor.
    SystemResult<SharedDescriptor> reopen(Folder& folder)
    {
        if (auto descriptor = folder.descriptor()) {
            return descriptor;
        }
        const Folder* above = folder.parent.get();
        while (above != nullptr && !above->descriptor()) {
            above = above->parent.get();
        }
        const SharedDescriptor from = above != nullptr ? above->descriptor() : m_base;
        auto opened = openDescendantFolder(from->get(), folder.pathBelow(above));
        if (!opened) {
            return std::unexpected(opened.error());
        }
        return folder.reopenAs(std::move(*opened));
    }

    static void parkAncestor(const Folder& folder)
    {
        Folder* ancestor = folder.depth < levelsKeptOpen ? nullptr : folder.parent.get();
        for (unsigned level = 1; ancestor != nullptr && level < levelsKeptOpen; ++level) {
            ancestor = ancestor->parent.get();
        }
        if (ancestor != nullptr) {
            ancestor->park();
        }
    }

    const SharedDescriptor m_base;
    const MeantItem& m_meant;
    const std::stop_token& m_stop;
    const DiskSense& m_sense;
    std::atomic<std::size_t> m_removedFolders = 0;
    std::mutex m_mutex; // guards what follows
    std::condition_variable m_wake;
    std::vector<std::shared_ptr<Folder>> m_waiting;
    TreeRemoval::Outcome m_outcome;
    bool m_done = false;
};

} // namespace

TreeRemoval::Outcome TreeRemoval::removeItem(int parent, const std::string& name, const MeantItem& meant,
                                             const std::stop_token& stop, const DiskSense& sense)
{
    const auto failed = [](SystemError error) { return Outcome{.error = error, .firstKept = {}, .kept = 1}; };
    const auto found = fileAttributes(parent, name.c_str());
    if (!found) {
        return failed(found.error());
    }
    if (!meant.isThis(*found)) {
        return failed(SystemError{ESTALE});
    }
    if (found->type != EntryType::folder) {
        if (::unlinkat(parent, name.c_str(), 0) == 0) {
            return {.error = {}, .firstKept = {}, .removed = 1, .freedBytes = bytesThatGo(found)};
        }
        return failed(SystemError::last());
    }
    FileDescriptor base{::fcntl(parent, F_DUPFD_CLOEXEC, 0)};
    if (!base.isOpen()) {
        return failed(SystemError::last());
    }
    return Removal{std::move(base), meant, stop, sense}.run(name);
}

} // namespace tallyroom
