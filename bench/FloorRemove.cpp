// The yardstick of permanent deletion: threads that take the children of one folder in turn and unlink what
// is below them, with no check of any kind. For trees that tree-maker made, and for nothing else.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr unsigned width = 8;

struct Child {
    std::string name;
    bool isFolder = false;
};

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

OpenFolder open(int parent, const char* name)
{
    const int descriptor = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    return OpenFolder{descriptor < 0 ? nullptr : ::fdopendir(descriptor)};
}

std::vector<Child> list(DIR* folder)
{
    std::vector<Child> children;
    while (const dirent* const record = ::readdir(folder)) { // NOLINT(concurrency-mt-unsafe): one a thread
        const std::string_view name{record->d_name};
        if (name != "." && name != "..") {
            children.push_back({std::string{name}, record->d_type == DT_DIR});
        }
    }
    return children;
}

/// Recursive: the trees of a benchmark of deletion are flat enough.
void remove(int parent, const Child& child)
{
    if (!child.isFolder) {
        ::unlinkat(parent, child.name.c_str(), 0);
        return;
    }
    if (const OpenFolder folder = open(parent, child.name.c_str())) {
        for (const Child& grandchild : list(folder.get())) {
            remove(::dirfd(folder.get()), grandchild);
        }
    }
    ::unlinkat(parent, child.name.c_str(), AT_REMOVEDIR);
}

} // namespace

int main(int argc, char** argv)
{
    const OpenFolder root = argc == 2 ? open(AT_FDCWD, argv[1]) : nullptr;
    if (!root) {
        std::fputs("usage: floor-remove FOLDER    (a folder that tree-maker made: everything goes)\n",
                   stderr);
        return 2;
    }
    const auto started = std::chrono::steady_clock::now();
    const std::vector<Child> children = list(root.get());
    {
        std::atomic<std::size_t> next{0};
        std::vector<std::jthread> threads;
        for (unsigned number = 0; number < width; ++number) {
            threads.emplace_back([&] {
                for (std::size_t index = 0; (index = next.fetch_add(1)) < children.size();) {
                    remove(::dirfd(root.get()), children[index]);
                }
            });
        }
    }
    const int failed = ::rmdir(argv[1]);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - started;
    std::printf("%.4f s\n", elapsed.count());
    return failed == 0 ? 0 : 1;
}
