#include "Support/TemporaryTree.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <ranges>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tallyroom {

namespace {

void require(bool succeeded, const std::string& what)
{
    if (!succeeded) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

std::vector<std::string> steps(std::string_view path)
{
    std::vector<std::string> result;
    for (const auto step : std::views::split(path, '/')) {
        if (!step.empty()) {
            result.emplace_back(step.begin(), step.end());
        }
    }
    return result;
}

FileDescriptor openFolderAt(int base, const std::string& name)
{
    return FileDescriptor{::openat(base, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
}

/// An item, as a name in the open folder that holds it: no path is ever too long.
struct Place {
    FileDescriptor parent;
    std::string name;
};

/// Closed parent when there is no such folder and none is to be made.
Place placeOf(int root, std::string_view relative, bool makeFolders)
{
    std::vector<std::string> names = steps(relative);
    Place place{openFolderAt(root, "."), names.empty() ? "." : names.back()};
    for (std::size_t i = 0; i + 1 < names.size() && place.parent.isOpen(); ++i) {
        require(!makeFolders || ::mkdirat(place.parent.get(), names[i].c_str(), 0755) == 0 || errno == EEXIST,
                names[i]);
        place.parent = openFolderAt(place.parent.get(), names[i]);
    }
    return place;
}

void write(int file, const std::string& bytes, std::int64_t size)
{
    std::int64_t written = 0;
    while (written < size) {
        const auto offset = static_cast<std::size_t>(written) % bytes.size();
        const auto rest = static_cast<std::size_t>(
            std::min<std::int64_t>(size - written, static_cast<std::int64_t>(bytes.size() - offset)));
        const ssize_t count = ::write(file, bytes.data() + offset, rest);
        require(count > 0, "write");
        written += count;
    }
}

void makeFile(const Place& place, const TreeItem& item)
{
    const FileDescriptor file{
        ::openat(place.parent.get(), place.name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)};
    require(file.isOpen(), item.path);
    if (item.kind == TreeItem::Kind::sparseFile) {
        require(::ftruncate(file.get(), item.size) == 0, item.path);
    } else if (!item.content.empty()) {
        write(file.get(), item.content, static_cast<std::int64_t>(item.content.size()));
    } else {
        static const std::string pattern(256UL * 1024, 'x');
        write(file.get(), pattern, item.size);
    }
}

void make(int root, const Place& place, const TreeItem& item)
{
    const char* const name = place.name.c_str();
    const int parent = place.parent.get();
    switch (item.kind) {
    case TreeItem::Kind::folder:
        require(::mkdirat(parent, name, 0755) == 0 || errno == EEXIST, item.path);
        break;
    case TreeItem::Kind::file:
    case TreeItem::Kind::sparseFile:
        makeFile(place, item);
        break;
    case TreeItem::Kind::link:
        require(::symlinkat(item.content.c_str(), parent, name) == 0, item.path);
        break;
    case TreeItem::Kind::hardLink: {
        const Place existing = placeOf(root, item.content, false);
        require(::linkat(existing.parent.get(), existing.name.c_str(), parent, name, 0) == 0, item.path);
        break;
    }
    case TreeItem::Kind::fifo:
        require(::mkfifoat(parent, name, 0644) == 0, item.path);
        break;
    case TreeItem::Kind::socket:
        require(::mknodat(parent, name, S_IFSOCK | 0644, 0) == 0, item.path);
        break;
    }
}

void setAttributes(const Place& place, const TreeItem& item)
{
    const char* const name = place.name.c_str();
    const int parent = place.parent.get();
    if (item.owner) {
        require(::fchownat(parent, name, *item.owner, static_cast<gid_t>(-1), AT_SYMLINK_NOFOLLOW) == 0,
                item.path);
    }
    if (item.modified) {
        const std::array<timespec, 2> times{timespec{*item.modified, 0}, timespec{*item.modified, 0}};
        require(::utimensat(parent, name, times.data(), AT_SYMLINK_NOFOLLOW) == 0, item.path);
    }
    if (item.mode) {
        require(::fchmodat(parent, name, *item.mode, 0) == 0, item.path);
    }
}

/// The sorted names in an open folder.
std::vector<std::string> namesIn(int folder)
{
    std::vector<std::string> names;
    const int listing = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR*)> stream{listing < 0 ? nullptr : ::fdopendir(listing),
                                                     ::closedir};
    while (const dirent* const entry = stream ? ::readdir(stream.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
    }
    std::ranges::sort(names);
    return names;
}

} // namespace

TreeItem TreeItem::withMode(mode_t permissions) &&
{
    mode = permissions;
    return std::move(*this);
}

TreeItem TreeItem::ownedBy(uid_t user) &&
{
    owner = user;
    return std::move(*this);
}

TreeItem TreeItem::modifiedAt(std::int64_t seconds) &&
{
    modified = seconds;
    return std::move(*this);
}

TreeItem folder(std::string path)
{
    return {.kind = TreeItem::Kind::folder, .path = std::move(path), .content = {}};
}

TreeItem file(std::string path, std::int64_t size)
{
    return {.kind = TreeItem::Kind::file, .path = std::move(path), .content = {}, .size = size};
}

TreeItem file(std::string path, std::string content)
{
    return {.kind = TreeItem::Kind::file, .path = std::move(path), .content = std::move(content)};
}

TreeItem sparseFile(std::string path, std::int64_t size)
{
    return {.kind = TreeItem::Kind::sparseFile, .path = std::move(path), .content = {}, .size = size};
}

TreeItem link(std::string path, std::string target)
{
    return {.kind = TreeItem::Kind::link, .path = std::move(path), .content = std::move(target)};
}

TreeItem hardLink(std::string path, std::string existing)
{
    return {.kind = TreeItem::Kind::hardLink, .path = std::move(path), .content = std::move(existing)};
}

TreeItem fifo(std::string path)
{
    return {.kind = TreeItem::Kind::fifo, .path = std::move(path), .content = {}};
}

TreeItem socket(std::string path)
{
    return {.kind = TreeItem::Kind::socket, .path = std::move(path), .content = {}};
}

std::string chain(std::string_view name, std::size_t depth)
{
    std::string path;
    for (std::size_t level = 0; level < depth; ++level) {
        path.append(level == 0 ? "" : "/").append(name);
    }
    return path;
}

std::int64_t allocated(const std::string& path)
{
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0) {
        throw std::system_error{errno, std::generic_category(), path};
    }
    return status.st_blocks * 512;
}

TemporaryTree::TemporaryTree(std::initializer_list<TreeItem> items)
{
    // The canonical path, so that a temporary folder behind a link does not disturb comparisons of locations.
    m_root = std::filesystem::canonical(std::filesystem::temp_directory_path()) / "tallyroom-XXXXXX";
    require(::mkdtemp(m_root.data()) != nullptr, m_root);
    m_folder = openFolderAt(AT_FDCWD, m_root);
    require(m_folder.isOpen(), m_root);
    try {
        add(items);
    } catch (...) {
        removeAll();
        throw;
    }
}

TemporaryTree::~TemporaryTree()
{
    removeAll();
}

void TemporaryTree::removeAll() noexcept
{
    for (const std::string& closed : m_closed) {
        const Place place = placeOf(m_folder.get(), closed, false);
        ::fchmodat(place.parent.get(), place.name.c_str(), 0700, 0);
    }
    std::error_code error;
    std::filesystem::remove_all(m_root, error);
    if (error) {
        std::fprintf(stderr, "%s is left: %s\n", m_root.c_str(), error.message().c_str());
    }
}

void TemporaryTree::add(std::initializer_list<TreeItem> items)
{
    for (const TreeItem& item : items) {
        add(item);
    }
}

void TemporaryTree::add(const TreeItem& item)
{
    const Place place = placeOf(m_folder.get(), item.path, true);
    require(place.parent.isOpen(), item.path);
    make(m_folder.get(), place, item);
    setAttributes(place, item);
    if (item.kind == TreeItem::Kind::folder && item.mode) {
        m_closed.push_back(item.path);
    }
}

void TemporaryTree::addEmptyFiles(const std::string& folderPath, const std::string& beginning, int count)
{
    const Place place = placeOf(m_folder.get(), folderPath + "/any", true);
    for (int number = 0; number < count; ++number) {
        const std::string name = beginning + std::to_string(number);
        require(::mknodat(place.parent.get(), name.c_str(), S_IFREG | 0644, 0) == 0, name);
    }
}

void TemporaryTree::remove(const std::string& relative) const
{
    require(std::remove(path(relative).c_str()) == 0, relative);
}

void TemporaryTree::rename(const std::string& from, const std::string& to) const
{
    require(std::rename(path(from).c_str(), path(to).c_str()) == 0, from);
}

void TemporaryTree::exchange(const std::string& one, const std::string& other) const
{
    require(::renameat2(AT_FDCWD, path(one).c_str(), AT_FDCWD, path(other).c_str(), RENAME_EXCHANGE) == 0,
            one);
}

void TemporaryTree::overwrite(const std::string& relative, std::string_view bytes, std::int64_t offset) const
{
    const FileDescriptor file{::open(path(relative).c_str(), O_WRONLY | O_CLOEXEC)};
    require(::pwrite(file.get(), bytes.data(), bytes.size(), offset) == std::ssize(bytes), relative);
}

void TemporaryTree::keepingItsTime(const std::string& relative, const std::function<void()>& change) const
{
    struct stat before = {};
    require(::stat(path(relative).c_str(), &before) == 0, relative);
    change();
    const std::array times{before.st_atim, before.st_mtim};
    require(::utimensat(AT_FDCWD, path(relative).c_str(), times.data(), 0) == 0, relative);
}

std::string TemporaryTree::path(std::string_view relative) const
{
    return relative.empty() ? m_root : std::string{m_root}.append("/").append(relative);
}

bool TemporaryTree::exists(std::string_view relative) const
{
    const Place place = placeOf(m_folder.get(), relative, false);
    struct stat status = {};
    return place.parent.isOpen() &&
           ::fstatat(place.parent.get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

std::string TemporaryTree::content(std::string_view relative) const
{
    const Place place = placeOf(m_folder.get(), relative, false);
    std::string bytes(PATH_MAX, '\0');
    if (const ssize_t length =
            ::readlinkat(place.parent.get(), place.name.c_str(), bytes.data(), bytes.size());
        length >= 0) {
        bytes.resize(static_cast<std::size_t>(length));
        return bytes;
    }
    bytes.clear();
    const FileDescriptor file{
        ::openat(place.parent.get(), place.name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    std::array<char, 4096> buffer = {};
    for (ssize_t count = 0; (count = ::read(file.get(), buffer.data(), buffer.size())) > 0;) {
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return bytes;
}

std::vector<std::string> TemporaryTree::names(std::string_view relative) const
{
    const Place place = placeOf(m_folder.get(), relative, false);
    const FileDescriptor folder = openFolderAt(place.parent.get(), place.name);
    return folder.isOpen() ? namesIn(folder.get()) : std::vector<std::string>{};
}

} // namespace tallyroom
