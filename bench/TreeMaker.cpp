// Makes the trees that benchmarks and comparisons run on: the same tree from the same seed.

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace {

[[noreturn]] void fail(const std::string& what)
{
    std::perror(("tree-maker: " + what).c_str());
    std::exit(1); // NOLINT(concurrency-mt-unsafe): there is one thread
}

/// A folder that is being filled; everything happens relative to it, so paths may grow beyond PATH_MAX.
class Folder {
public:
    explicit Folder(const std::string& path) : m_descriptor(make(AT_FDCWD, path)) {}

    Folder(const Folder& parent, const std::string& name) : m_descriptor(make(parent.m_descriptor, name)) {}

    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    ~Folder() { ::close(m_descriptor); }

    /// Leaves this folder for a new one in it.
    void enter(const std::string& name)
    {
        const int child = make(m_descriptor, name);
        ::close(m_descriptor);
        m_descriptor = child;
    }

    void file(const std::string& name, std::string_view content) const
    {
        const int created =
            ::openat(m_descriptor, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
        if (created < 0 || ::write(created, content.data(), content.size()) != std::ssize(content)) {
            fail(name);
        }
        ::close(created);
    }

    void sparseFile(const std::string& name, off_t size) const
    {
        file(name, "");
        const int opened = ::openat(m_descriptor, name.c_str(), O_WRONLY | O_CLOEXEC);
        require(opened >= 0 && ::ftruncate(opened, size) == 0, name);
        ::close(opened);
    }

    void link(const std::string& name, const std::string& target) const
    {
        require(::symlinkat(target.c_str(), m_descriptor, name.c_str()) == 0, name);
    }

    void hardLink(const std::string& name, const std::string& existing) const
    {
        require(::linkat(m_descriptor, existing.c_str(), m_descriptor, name.c_str(), 0) == 0, name);
    }

    void remove(const std::string& name) const
    {
        require(::unlinkat(m_descriptor, name.c_str(), 0) == 0, name);
    }

    void fifo(const std::string& name) const
    {
        require(::mkfifoat(m_descriptor, name.c_str(), 0644) == 0, name);
    }

    void socket(const std::string& name) const
    {
        require(::mknodat(m_descriptor, name.c_str(), S_IFSOCK | 0644, 0) == 0, name);
    }

private:
    static void require(bool succeeded, const std::string& what)
    {
        if (!succeeded) {
            fail(what);
        }
    }

    static int make(int parent, const std::string& name)
    {
        require(::mkdirat(parent, name.c_str(), 0755) == 0, name);
        const int opened = ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        require(opened >= 0, name);
        return opened;
    }

    int m_descriptor;
};

/// What a seed decides. Not the standard distributions: those differ from library to library.
class Chance {
public:
    explicit Chance(std::uint64_t seed) : m_engine(seed) {}

    std::uint64_t below(std::uint64_t limit) { return m_engine() % limit; }

    /// Many small, few large: up to 256 bytes as often as up to 512, 1024 and so on to 64 KiB.
    std::string content()
    {
        std::string bytes(below(std::uint64_t{256} << below(9)), '\0');
        for (std::size_t index = 0; index < bytes.size(); index += 64) {
            bytes[index] = static_cast<char>('a' + below(26)); // enough to tell files apart
        }
        return bytes;
    }

    std::string name(std::string_view stem, std::uint64_t number)
    {
        static constexpr std::array<std::string_view, 8> endings{".js",  ".ts",  ".json", ".md",
                                                                 ".png", ".map", ".txt",  ""};
        return std::string{stem} + std::to_string(number) + std::string{endings.at(below(endings.size()))};
    }

private:
    std::mt19937_64 m_engine;
};

struct Wishes {
    std::string kind;
    std::string path;
    std::uint64_t files = 10'000;
    std::uint64_t seed = 1;
};

void fill(const Folder& folder, std::uint64_t files, Chance& chance)
{
    for (std::uint64_t number = 0; number < files; ++number) {
        folder.file(chance.name("file-", number), chance.content());
    }
}

/// Folders of up to 40 files, up to 12 folders wide, until the files are used up.
void grow(const Folder& folder, std::uint64_t files, Chance& chance)
{
    const std::uint64_t here = std::min<std::uint64_t>(files, chance.below(40));
    fill(folder, here, chance);
    files -= here;
    for (std::uint64_t number = 0; files > 0; ++number) {
        const std::uint64_t share = number == 11 ? files : 1 + chance.below(files);
        grow(Folder{folder, "folder-" + std::to_string(number)}, share, chance);
        files -= share;
    }
}

void makeWide(const Wishes& wishes)
{
    Chance chance{wishes.seed};
    fill(Folder{wishes.path}, wishes.files, chance);
}

void makeSkewed(const Wishes& wishes)
{
    Chance chance{wishes.seed};
    const Folder root{wishes.path};
    const std::uint64_t small = wishes.files / 20;
    grow(Folder{root, "nearly-everything"}, wishes.files - small, chance);
    for (std::uint64_t number = 0; number < 10; ++number) {
        grow(Folder{root, "small-" + std::to_string(number)}, small / 10 + (number < small % 10 ? 1 : 0),
             chance);
    }
}

/// 10 000 levels, the files spread evenly over them.
void makeDeep(const Wishes& wishes)
{
    constexpr std::uint64_t levels = 10'000;
    Chance chance{wishes.seed};
    Folder folder{wishes.path};
    for (std::uint64_t level = 0; level < levels; ++level) {
        fill(folder, wishes.files / levels + (level < wishes.files % levels ? 1 : 0), chance);
        folder.enter("level");
    }
}

void makePackages(const Folder& modules, std::uint64_t files, std::uint64_t depth, Chance& chance)
{
    for (std::uint64_t number = 0; files > 0; ++number) {
        std::uint64_t share = std::min<std::uint64_t>(files, 5 + chance.below(60));
        files -= share;
        const Folder package{modules, "package-" + std::to_string(number)};
        package.file("package.json", "{\"name\":\"package-" + std::to_string(number) + "\"}\n");
        --share;
        if (depth > 0 && chance.below(6) == 0) {
            makePackages(Folder{package, "node_modules"}, share / 2, depth - 1, chance);
            share -= share / 2;
        }
        const Folder library{package, "lib"};
        fill(library, share / 2, chance);
        fill(Folder{library, "internal"}, share - share / 2, chance);
    }
}

/// Projects with a node_modules folder of about 2 000 files each.
void makeNode(const Wishes& wishes)
{
    Chance chance{wishes.seed};
    const Folder root{wishes.path};
    std::uint64_t files = wishes.files;
    for (std::uint64_t number = 0; files > 0; ++number) {
        const std::uint64_t share = std::min<std::uint64_t>(files, 2'000);
        const Folder project{root, "project-" + std::to_string(number)};
        makePackages(Folder{project, "node_modules"}, share, 3, chance);
        files -= share;
    }
}

void makeCopies(const Wishes& wishes)
{
    const Folder root{wishes.path};
    for (const char* const name : {"original", "copy"}) {
        Chance chance{wishes.seed};
        grow(Folder{root, name}, wishes.files / 2, chance);
    }
}

/// As years leave a disk: files made at random over many folders, a third removed, others in their room, some
/// of them copies.
void makeAged(const Wishes& wishes)
{
    rlimit files = {}; // all folders stay open
    ::getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    if (::setrlimit(RLIMIT_NOFILE, &files) != 0) {
        fail("limit of open folders");
    }
    Chance chance{wishes.seed};
    const Folder root{wishes.path};
    std::vector<std::unique_ptr<Folder>> folders;
    for (std::uint64_t number = 0; number < wishes.files / 15 + 1; ++number) {
        const std::uint64_t above = folders.empty() ? 0 : chance.below(folders.size() + 1);
        const std::string name = number % 50 == 49 ? "node_modules-" : "folder-";
        folders.push_back(std::make_unique<Folder>(above == folders.size() ? root : *folders[above],
                                                   name + std::to_string(number)));
    }

    struct Place {
        Folder* folder = nullptr;
        std::string name;
    };

    std::vector<Place> places;
    std::string copied = chance.content();
    const auto add = [&](std::uint64_t number) {
        Folder& folder = *folders[chance.below(folders.size())];
        places.push_back({&folder, chance.name("file-", number)});
        folder.file(places.back().name, chance.below(8) == 0 ? copied : (copied = chance.content()));
    };
    for (std::uint64_t number = 0; number < wishes.files; ++number) {
        add(number);
    }
    for (std::uint64_t removed = 0; removed < wishes.files / 3; ++removed) {
        std::swap(places[chance.below(places.size())], places.back());
        places.back().folder->remove(places.back().name);
        places.pop_back();
    }
    ::sync(); // what comes now gets the room of what went
    for (std::uint64_t number = 0; number < wishes.files / 3; ++number) {
        add(wishes.files + number);
    }
}

void makeOddNames(const Folder& folder)
{
    for (const std::string& name :
         {std::string{"new\nline"}, std::string{"\xff\xfe"}, std::string{"-rf"}, std::string{"--help"},
          std::string{" "}, std::string{"*"}, std::string{"back\\slash"}, std::string{"quo\"te'd"},
          std::string{"\x1b[31mred"}, std::string(255, 'x'), std::string{"e\xcc\x81"},
          std::string{"\xc3\xa9"}}) {
        folder.file(name, "odd\n");
    }
}

void makeOdd(const Wishes& wishes)
{
    Chance chance{wishes.seed};
    const Folder root{wishes.path};
    makeOddNames(Folder{root, "names"});
    {
        const Folder kinds{root, "kinds"};
        kinds.fifo("fifo");
        kinds.socket("socket");
        kinds.sparseFile("sparse", off_t{1} << 40);
        kinds.file("file", "content\n");
        kinds.hardLink("hard-link", "file");
        kinds.link("link", "file");
        kinds.link("link-to-folder", "../names");
        kinds.link("broken-link", "missing");
        kinds.link("link-to-itself", "link-to-itself");
        kinds.link("link-to-parent", "..");
    }
    const Folder empty{root, "empty"};
    {
        Folder far{root, "far"};
        for (int level = 0; level < 40; ++level) { // 40 × 256 is more than twice PATH_MAX
            far.enter(std::string(255, static_cast<char>('a' + level % 26)));
        }
        far.file("beyond", "far away\n");
    }
    const std::string oddFolder = "folder\n\xff";
    grow(Folder{root, oddFolder}, wishes.files, chance);
}

using Maker = void (*)(const Wishes&);

const std::map<std::string_view, Maker>& makers()
{
    static const std::map<std::string_view, Maker> known{
        {"wide", makeWide},     {"skewed", makeSkewed}, {"deep", makeDeep}, {"node", makeNode},
        {"copies", makeCopies}, {"aged", makeAged},     {"odd", makeOdd}};
    return known;
}

bool readNumber(std::string_view text, std::uint64_t& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size();
}

std::optional<Wishes> parse(std::span<char*> arguments)
{
    if (arguments.size() < 3 || arguments.size() % 2 == 0 || !makers().contains(arguments[1])) {
        return std::nullopt;
    }
    Wishes wishes{arguments[1], arguments[2]};
    for (std::size_t index = 3; index < arguments.size(); index += 2) {
        const std::string_view option{arguments[index]};
        std::uint64_t* const target = option == "--files"  ? &wishes.files
                                      : option == "--seed" ? &wishes.seed
                                                           : nullptr;
        if (target == nullptr || !readNumber(arguments[index + 1], *target)) {
            return std::nullopt;
        }
    }
    return wishes;
}

} // namespace

int main(int argc, char** argv)
{
    const auto wishes = parse({argv, static_cast<std::size_t>(argc)});
    if (!wishes) {
        std::fputs("usage: tree-maker wide|skewed|deep|node|copies|aged|odd PATH [--files N] [--seed S]\n",
                   stderr);
        return 2;
    }
    makers().at(wishes->kind)(*wishes);
    return 0;
}
