// The yardstick of every scan: as many threads as are asked for list every folder, stat every file, and keep
// nothing. What a scan takes beyond this is ours.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t bufferSize = 64 * 1024;

/// A folder that was met. It stays open until the folders in it are opened, relative to it.
struct Folder {
    Folder* parent = nullptr;
    std::string name;
    int descriptor = -1;
    std::atomic<std::uint32_t> uses{1};
};

/// A folder to open and list or, for a large one, a further buffer of its names: so all threads share a
/// single huge folder too.
struct Work {
    Folder* folder = nullptr;
    std::unique_ptr<char[]> names;
    std::size_t used = 0;
};

struct Totals {
    std::uint64_t files = 0;
    std::uint64_t folders = 0;
    std::uint64_t bytes = 0;
    std::uint64_t errors = 0;
};

/// Each thread takes its own newest piece, an idle one takes the oldest of another.
class Stacks {
public:
    explicit Stacks(unsigned width) : m_stacks(width) {}

    void push(unsigned worker, std::span<Work> pieces)
    {
        if (pieces.empty()) {
            return;
        }
        m_pending.fetch_add(pieces.size());
        {
            const std::scoped_lock lock{m_stacks[worker].mutex};
            std::ranges::move(pieces, std::back_inserter(m_stacks[worker].pieces));
        }
        m_available.fetch_add(static_cast<std::int64_t>(pieces.size()));
        if (m_sleepers.load() > 0) {
            const std::scoped_lock lock{m_sleep};
            pieces.size() == 1 ? m_woken.notify_one() : m_woken.notify_all();
        }
    }

    /// Nothing at the end of the walk.
    std::optional<Work> take(unsigned worker)
    {
        for (;;) {
            for (unsigned step = 0; step < m_stacks.size(); ++step) {
                if (auto piece = takeFrom((worker + step) % m_stacks.size(), step == 0)) {
                    m_available.fetch_sub(1);
                    return piece;
                }
            }
            std::unique_lock lock{m_sleep};
            m_sleepers.fetch_add(1);
            m_woken.wait(lock, [this] { return m_available.load() > 0 || m_pending.load() == 0; });
            m_sleepers.fetch_sub(1);
            if (m_pending.load() == 0) {
                return std::nullopt;
            }
        }
    }

    void done()
    {
        if (m_pending.fetch_sub(1) == 1) {
            const std::scoped_lock lock{m_sleep};
            m_woken.notify_all();
        }
    }

private:
    struct alignas(64) Stack {
        std::mutex mutex;
        std::deque<Work> pieces;
    };

    std::optional<Work> takeFrom(std::size_t index, bool newest)
    {
        Stack& stack = m_stacks[index];
        const std::scoped_lock lock{stack.mutex};
        if (stack.pieces.empty()) {
            return std::nullopt;
        }
        Work piece = std::move(newest ? stack.pieces.back() : stack.pieces.front());
        newest ? stack.pieces.pop_back() : stack.pieces.pop_front();
        return piece;
    }

    std::vector<Stack> m_stacks;
    std::atomic<std::uint64_t> m_pending{0};
    std::atomic<std::int64_t> m_available{0};
    std::atomic<unsigned> m_sleepers{0};
    std::mutex m_sleep;
    std::condition_variable m_woken;
};

void release(Folder* folder)
{
    if (folder->uses.fetch_sub(1) == 1) {
        if (folder->descriptor >= 0) {
            ::close(folder->descriptor);
        }
        delete folder;
    }
}

class Worker {
public:
    Worker(Stacks& stacks, unsigned number, bool stats) : m_stacks(stacks), m_number(number), m_stats(stats)
    {}

    Totals run()
    {
        while (auto work = m_stacks.take(m_number)) {
            if (work->names) {
                readNames(*work->folder, work->names.get(), work->used);
            } else {
                list(*work->folder);
            }
            m_stacks.push(m_number, m_found);
            m_found.clear();
            release(work->folder);
            m_stacks.done();
        }
        return m_totals;
    }

private:
    void list(Folder& folder)
    {
        ++m_totals.folders;
        const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (folder.parent != nullptr ? O_NOFOLLOW : 0);
        const int parent = folder.parent != nullptr ? folder.parent->descriptor : AT_FDCWD;
        folder.descriptor = ::openat(parent, folder.name.c_str(), flags);
        if (folder.parent != nullptr) {
            release(folder.parent);
        }
        if (folder.descriptor < 0) {
            ++m_totals.errors;
            return;
        }
        std::size_t used = read(folder, m_buffer);
        while (used > 0) {
            const std::size_t further = read(folder, m_nextBuffer);
            if (further == 0) {
                readNames(folder, m_buffer.get(), used);
                return;
            }
            handOver(folder, std::move(m_buffer), used);
            m_buffer = std::exchange(m_nextBuffer, nullptr);
            used = further;
        }
    }

    std::size_t read(const Folder& folder, std::unique_ptr<char[]>& buffer)
    {
        if (!buffer) {
            buffer = std::make_unique_for_overwrite<char[]>(bufferSize);
        }
        const long got = ::syscall(SYS_getdents64, folder.descriptor, buffer.get(), bufferSize);
        m_totals.errors += got < 0 ? 1U : 0U;
        return got < 0 ? 0 : static_cast<std::size_t>(got);
    }

    void handOver(Folder& folder, std::unique_ptr<char[]> names, std::size_t used)
    {
        folder.uses.fetch_add(1);
        Work work{&folder, std::move(names), used};
        m_stacks.push(m_number, {&work, 1});
    }

    void readNames(Folder& folder, const char* names, std::size_t used)
    {
        for (std::size_t offset = 0; offset < used;) {
            const auto* const record = reinterpret_cast<const dirent64*>(names + offset);
            offset += record->d_reclen;
            const std::string_view name{record->d_name};
            if (name != "." && name != "..") {
                meet(folder, record->d_name, record->d_type);
            }
        }
    }

    void meet(Folder& folder, const char* name, unsigned char type)
    {
        if (type != DT_DIR && (m_stats || type == DT_UNKNOWN)) {
            struct statx attributes {};

            if (::statx(folder.descriptor, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
                        STATX_TYPE | STATX_BLOCKS, &attributes) != 0) {
                ++m_totals.errors;
            } else if (S_ISDIR(attributes.stx_mode)) {
                type = DT_DIR;
            } else {
                m_totals.bytes += attributes.stx_blocks * 512;
            }
        }
        if (type != DT_DIR) {
            ++m_totals.files;
            return;
        }
        folder.uses.fetch_add(1);
        m_found.push_back({new Folder{&folder, name}, nullptr, 0});
    }

    Stacks& m_stacks;
    unsigned m_number;
    bool m_stats;
    Totals m_totals;
    std::vector<Work> m_found;
    std::unique_ptr<char[]> m_buffer;
    std::unique_ptr<char[]> m_nextBuffer;
};

Totals walk(const char* path, unsigned width, bool stats)
{
    Stacks stacks{width};
    Work root{new Folder{nullptr, path}, nullptr, 0};
    stacks.push(0, {&root, 1});
    std::mutex mutex;
    Totals sum;
    {
        std::vector<std::jthread> threads;
        for (unsigned number = 0; number < width; ++number) {
            threads.emplace_back([&, number] {
                const Totals own = Worker{stacks, number, stats}.run();
                const std::scoped_lock lock{mutex};
                sum.files += own.files;
                sum.folders += own.folders;
                sum.bytes += own.bytes;
                sum.errors += own.errors;
            });
        }
    }
    return sum;
}

/// Open folders are few, but one for every level of a deep tree may be many.
void allowManyDescriptors()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

struct Wishes {
    const char* path = nullptr;
    unsigned threads = std::max(1U, std::thread::hardware_concurrency());
    bool stats = true;
};

std::optional<Wishes> parse(std::span<char*> arguments)
{
    Wishes wishes;
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        const std::string_view argument{arguments[index]};
        if (argument == "--no-stat") {
            wishes.stats = false;
        } else if (argument == "--threads" && index + 1 < arguments.size()) {
            const std::string_view number{arguments[++index]};
            const auto parsed = std::from_chars(number.data(), number.data() + number.size(), wishes.threads);
            if (parsed.ec != std::errc{} || wishes.threads == 0) {
                return std::nullopt;
            }
        } else if (wishes.path == nullptr) {
            wishes.path = arguments[index];
        } else {
            return std::nullopt;
        }
    }
    return wishes.path == nullptr ? std::nullopt : std::optional{wishes};
}

} // namespace

int main(int argc, char** argv)
{
    const auto wishes = parse({argv, static_cast<std::size_t>(argc)});
    if (!wishes) {
        std::fputs("usage: floor [--threads N] [--no-stat] FOLDER\n", stderr);
        return 2;
    }
    allowManyDescriptors();
    const auto started = std::chrono::steady_clock::now();
    const Totals totals = walk(wishes->path, wishes->threads, wishes->stats);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - started;
    std::printf("%llu files, %llu folders, %llu bytes, %llu errors, %.4f s\n",
                static_cast<unsigned long long>(totals.files),
                static_cast<unsigned long long>(totals.folders),
                static_cast<unsigned long long>(totals.bytes), static_cast<unsigned long long>(totals.errors),
                elapsed.count());
    return 0;
}
