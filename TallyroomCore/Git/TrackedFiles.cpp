#include "Git/TrackedFiles.h"

#include "FileSystem/FileAttributes.h"
#include "Git/GitLibrary.h"

#include <climits>
#include <cstddef>

namespace tallyroom {

namespace {

bool holdsRepository(const FileUrl& folder)
{
    return fileAttributes(folder.appending(".git")).has_value();
}

git_index* openIndex(const FileUrl& workTree)
{
    startGitLibrary();
    git_index* index = nullptr;
    const FileUrl place = workTree.appending(".git");
    const auto attributes = fileAttributes(place);
    if (attributes && attributes->type == EntryType::folder) {
        // Without the repository, which Git may refuse to trust: the names of its files need no trust.
        ::git_index_open(&index, place.appending("index").path().c_str());
        if (index != nullptr && ::git_index_read(index, 1) != 0) {
            ::git_index_free(index);
            index = nullptr;
        }
        return index;
    }
    git_repository* opened = nullptr; // a further work tree or a submodule, whose index lies elsewhere
    ::git_repository_open_ext(&opened, workTree.path().c_str(), GIT_REPOSITORY_OPEN_NO_SEARCH, nullptr);
    const OpenRepository repository{opened};
    if (opened != nullptr) {
        ::git_repository_index(&index, opened);
    }
    return index;
}

} // namespace

class TrackedFiles::Index {
public:
    explicit Index(const FileUrl& workTree) : m_index(openIndex(workTree)) {}

    [[nodiscard]] std::optional<bool> names(const std::string& path) const
    {
        if (m_index == nullptr) {
            return std::nullopt;
        }
        std::size_t position = 0;
        return ::git_index_find(&position, m_index.get(), path.c_str()) == 0 ||
               ::git_index_find_prefix(&position, m_index.get(), (path + '/').c_str()) == 0;
    }

private:
    std::unique_ptr<git_index, GitRelease<git_index_free>> m_index;
};

TrackedFiles::TrackedFiles() = default;
TrackedFiles::~TrackedFiles() = default;

std::optional<bool> TrackedFiles::isAnyIn(const FileUrl& folder)
{
    if (folder.path().size() >= PATH_MAX) {
        return std::nullopt; // the library cannot name it
    }
    if (holdsRepository(folder)) {
        return true;
    }
    const std::string& workTree = workTreeOf(folder.parent());
    if (workTree.empty()) {
        return false;
    }
    if (m_index == nullptr || m_indexed != workTree) {
        m_index = std::make_unique<Index>(FileUrl{workTree});
        m_indexed = workTree;
    }
    return m_index->names(folder.path().substr(workTree == "/" ? 1 : workTree.size() + 1));
}

const std::string& TrackedFiles::workTreeOf(const FileUrl& folder)
{
    const auto known = m_workTrees.find(folder.path());
    if (known != m_workTrees.end()) {
        return known->second;
    }
    const std::string found = holdsRepository(folder) ? folder.path()
                              : folder.path() == "/"  ? std::string{}
                                                      : workTreeOf(folder.parent());
    return m_workTrees.emplace(folder.path(), found).first->second;
}

} // namespace tallyroom
