#include "FileSystem/TreeWalk.h"

#include <algorithm>

namespace tallyroom {

FileUrl TreeWalk::Folder::url() const
{
    return url({});
}

FileUrl TreeWalk::Folder::url(std::string_view child) const
{
    // From the leaf up: lengths first, then the names from the end of the text.
    std::size_t length = child.empty() ? 0 : child.size() + 1;
    const Folder* root = this;
    for (; root->m_parent != nullptr; root = root->m_parent) {
        length += root->m_name.size() + 1;
    }
    const std::string_view base = root->m_name == "/" ? std::string_view{} : root->m_name;
    if (base.empty() && length == 0) {
        return FileUrl{"/"};
    }
    std::string path(base.size() + length, '/');
    std::ranges::copy(base, path.begin());
    auto end = path.size();
    const auto place = [&path, &end](std::string_view name) {
        end -= name.size();
        std::ranges::copy(name, path.begin() + static_cast<std::ptrdiff_t>(end));
        --end; // the slash before it
    };
    if (!child.empty()) {
        place(child);
    }
    for (const Folder* folder = this; folder->m_parent != nullptr; folder = folder->m_parent) {
        place(folder->m_name);
    }
    return FileUrl{std::move(path)};
}

void TreeWalk::Folder::standBelow(Folder& parent, const Child& child)
{
    m_parent = &parent;
    m_name = child.name;
    m_position = parent.m_position.child(child.name);
    m_spindles = parent.m_spindles;
    m_inode = child.inode;
    m_exclusion = child.exclusion;
}

bool TreeWalk::Wish::asksFor(EntryType type) const noexcept
{
    switch (type) {
    case EntryType::unknown:
        return true;
    case EntryType::folder:
        return attributes == Attributes::everything;
    case EntryType::link:
        return attributes == Attributes::everything || attributes == Attributes::filesAndLinks;
    case EntryType::file:
        return attributes != Attributes::none;
    }
    return true;
}

const ScanRoot& TreeWalk::Folder::scanRoot() const
{
    const Folder* root = this;
    while (root->m_parent != nullptr) {
        root = root->m_parent;
    }
    const ScanRoot* known = root->m_scanRoot.load();
    if (known == nullptr) {
        known = &ScanRoots::add(FileUrl{root->m_name}, root->m_descriptor.get());
        root->m_scanRoot = known; // two workers find the same row
    }
    return *known;
}

SystemResult<FileDescriptor> TreeWalk::Folder::openFromRoot() const
{
    const Folder* root = this;
    while (!root->isRoot()) {
        root = root->m_parent;
    }
    const std::string path = url().path();
    std::string_view below = std::string_view{path}.substr(root->m_name.size());
    below.remove_prefix(std::min(below.find_first_not_of('/'), below.size()));
    return openDescendantFolder(root->m_descriptor.get(), below);
}

void TreeWalk::start(Root root, std::unique_ptr<Visitor> visitor, std::stop_token stop)
{
    std::vector<Root> roots;
    roots.push_back(std::move(root));
    start(WorkerPool::shared(), std::move(roots), std::move(visitor), std::move(stop));
}

} // namespace tallyroom
