#include "Caches/OpenFiles.h"

#include "FileSystem/FileContent.h"
#include "FileSystem/FolderReader.h"

#include <algorithm>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <vector>

namespace tallyroom {

namespace {

using Paths = std::set<std::string, std::less<>>;

class Patience {
public:
    [[nodiscard]] bool isOver() const { return std::chrono::steady_clock::now() >= m_end; }

private:
    std::chrono::steady_clock::time_point m_end = std::chrono::steady_clock::now() + OpenFiles::patience;
};

std::vector<std::string> namesIn(int folder)
{
    NameBuffer buffer;
    std::vector<ListedName> listed;
    std::vector<std::string> names;
    while (buffer.read(folder)) {
        listed.clear();
        buffer.parse(listed);
        std::ranges::transform(listed, std::back_inserter(names),
                               [](const ListedName& name) { return std::string{name.view()}; });
    }
    return names;
}

void addLink(int folder, const char* name, Paths& paths)
{
    std::string target(PATH_MAX, '\0');
    const ssize_t length = ::readlinkat(folder, name, target.data(), target.size());
    if (length > 0 && target.front() == '/') {
        target.resize(static_cast<std::size_t>(length));
        paths.insert(std::move(target));
    }
}

/// The files in the last column of `maps`: libraries, and modules that a program has loaded.
void addMapped(int process, Paths& paths)
{
    const auto file = openAt(process, "maps", O_RDONLY | O_CLOEXEC);
    const auto text = file ? contentOf(file->get()) : std::unexpected(file.error());
    if (!text) {
        return;
    }
    for (std::size_t start = 0; start < text->size();) {
        const std::size_t end = std::min(text->find('\n', start), text->size());
        const std::string_view line = std::string_view{*text}.substr(start, end - start);
        if (const std::size_t path = line.find('/'); path != std::string_view::npos) {
            paths.emplace(line.substr(path));
        }
        start = end + 1;
    }
}

bool isOwn(int process)
{
    struct stat status = {};
    return ::fstat(process, &status) == 0 && status.st_uid == ::geteuid();
}

/// The numbers of this user's processes, but of this one.
std::vector<std::string> ownProcesses(int table)
{
    const std::string itself = std::to_string(::getpid());
    std::vector<std::string> numbers = namesIn(table);
    std::erase_if(numbers, [&](const std::string& name) {
        if (name.find_first_not_of("0123456789") != std::string::npos || name == itself) {
            return true;
        }
        const auto process = openChildFolder(table, name.c_str());
        return !process || !isOwn(process->get());
    });
    return numbers;
}

void addOpen(int process, const Patience& patience, Paths& paths)
{
    addLink(process, "exe", paths);
    addLink(process, "cwd", paths);
    const auto open = openChildFolder(process, "fd");
    for (const std::string& name : open ? namesIn(open->get()) : std::vector<std::string>{}) {
        if (patience.isOver()) {
            return;
        }
        addLink(open->get(), name.c_str(), paths);
    }
}

} // namespace

OpenFiles OpenFiles::look()
{
    const Patience patience;
    OpenFiles files;
    const auto table = openFolder(FileUrl{"/proc"}, FolderAccess::listing);
    const auto numbers = table ? ownProcesses(table->get()) : std::vector<std::string>{};
    const auto forEachProcess = [&](const auto& act) {
        for (const std::string& number : numbers) {
            if (patience.isOver()) {
                return;
            }
            if (const auto process = openChildFolder(table->get(), number.c_str())) {
                act(process->get());
            }
        }
    };
    forEachProcess([&](int process) { addOpen(process, patience, files.m_paths); });
    forEachProcess([&](int process) { addMapped(process, files.m_paths); }); // the costly part last
    return files;
}

bool OpenFiles::isAnyIn(const FileUrl& folder) const
{
    if (m_paths.contains(folder.path())) {
        return true;
    }
    const auto first = m_paths.lower_bound(folder.path() + '/');
    return first != m_paths.end() && first->starts_with(folder.path() + '/');
}

} // namespace tallyroom
