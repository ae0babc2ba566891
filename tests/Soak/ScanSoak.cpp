// Scans a tree in every way and drops the scans at random, while the tree changes: scan-soak [SECONDS [SEED]]
#include "Duplicates/DuplicateFinder.h"
#include "Kinds/FolderAnalyzer.h"
#include "Scanning/FileScanner.h"
#include "Soak/Soak.h"
#include "Soak/TreeChurn.h"
#include "Support/TemporaryTree.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyroom {

namespace {

/// Far above what the caches of such a tree need, with the sanitizers' own share; far below what a scan that
/// is not forgotten takes when there are thousands.
constexpr std::int64_t mostResidentBytes = 700_MiB;

constexpr std::string_view wholeName = "scanned";
constexpr std::string_view forbiddenName = "forbidden.bin";

/// As the disk tells it, by other means than the scanner's.
std::int64_t usedBytes(const std::filesystem::path& folder)
{
    std::int64_t sum = 0;
    for (const auto& item : std::filesystem::recursive_directory_iterator{folder}) {
        struct stat status = {};
        if (::lstat(item.path().c_str(), &status) == 0 && !S_ISDIR(status.st_mode)) {
            sum += std::int64_t{status.st_blocks} * 512;
        }
    }
    return sum;
}

void check(const ScanProgress& record, const FileUrl& folder)
{
    Soak::require(record.completed >= 0 && record.total >= 0, "counts are no less than none");
    Soak::require(record.isDiscovering || record.completed <= record.total, "no more is done than there is");
    std::int64_t before = std::numeric_limits<std::int64_t>::max();
    for (const Entry& entry : record.entries) {
        Soak::require(entry.url != folder && entry.url.isInside(folder), "an entry lies in the folder");
        // The scanned folder may be a link itself, unless it is the whole tree.
        const bool isWhole = folder.lastPathComponent() == wholeName;
        Soak::require(!isWhole || entry.name != forbiddenName, "no link is followed");
        Soak::require(entry.name == entry.url.lastPathComponent(), "an entry has its name");
        Soak::require(entry.sizeBytes >= 0 && entry.sizeBytes <= before, "entries rank by their size");
        before = entry.sizeBytes;
    }
}

void check(const DuplicateFinder::DuplicateProgress& record, const FileUrl& folder)
{
    Soak::require(record.hashedBytes <= record.bytesToHash, "no more is read than there is");
    Soak::require(record.groups.empty() || record.phase == DuplicateFinder::Phase::done,
                  "groups come at the end");
    std::int64_t before = std::numeric_limits<std::int64_t>::max();
    for (const DuplicateGroup& group : record.groups) {
        Soak::require(group.entries.size() > 1 && group.entries.size() == group.identities.size(),
                      "groups have twins");
        Soak::require(group.wastedBytes() >= 0 && group.wastedBytes() <= before,
                      "groups rank by their waste");
        Soak::require(
            std::ranges::all_of(group.entries, [&](const Entry& e) { return e.url.isInside(folder); }),
            "a duplicate lies in the folder");
        before = group.wastedBytes();
    }
}

void check(const FolderAnalyzer::Progress& record, const FileUrl& /*folder*/)
{
    Soak::require(record.summary.has_value() == (record.phase == FolderAnalyzer::Progress::Phase::done),
                  "the summary comes at the end");
    const FolderSummary summary = record.summary.value_or(FolderSummary{});
    std::int64_t files = 0;
    std::int64_t bytes = 0;
    for (const CategorySize& kind : summary.categories) {
        files += kind.fileCount;
        bytes += kind.totalBytes;
    }
    Soak::require(files == summary.totalFiles && bytes == summary.totalBytes, "kinds make the sum");
}

/// How many scans were read to the end, and how many were not.
std::atomic<std::uint64_t> finished = 0;
std::atomic<std::uint64_t> dropped = 0;

/// One consumer, which does a scan after another until it is time to end.
class Consumer {
public:
    Consumer(std::filesystem::path folder, std::uint64_t seed) : m_folder(std::move(folder)), m_random(seed)
    {}

    void scanUntil(std::chrono::steady_clock::time_point end)
    {
        while (std::chrono::steady_clock::now() < end) {
            const FileUrl folder{TreeChurn::folderBelow(m_folder, m_random).string()};
            scan(folder);
            Soak::require(Soak::residentBytes() < mostResidentBytes, "memory is bounded");
        }
    }

private:
    void scan(const FileUrl& folder)
    {
        switch (draw(9)) {
        case 0:
        case 1:
            return read(FileScanner::directEntriesStream(folder, draw(1) == 0), folder);
        case 2:
            return read(FileScanner::findLargestFilesStream(folder, draw(20)), folder);
        case 3:
            return read(FileScanner::findDirectoriesStream({"node_modules", ".git"}, FileUrl{m_folder}),
                        FileUrl{m_folder});
        case 4:
            return read(DuplicateFinder::stream(folder, 1), folder);
        case 5:
            return read(FolderAnalyzer::stream(folder), folder);
        case 6:
            return Soak::require(FileScanner::directorySize(folder) >= 0, "a size is no less than none");
        case 7:
            return FileScanner::invalidateCache(folder);
        case 8:
            return FileScanner::clearCache();
        default:
            (void)FileScanner::directEntries(folder, true); // nobody waits for it
        }
    }

    /// Takes some records and drops the stream, or takes all of them.
    template <class Record>
    void read(ProgressStream<Record>&& stream, const FileUrl& folder)
    {
        const bool isDropped = draw(2) > 0;
        for (std::int64_t left = draw(6); !isDropped || left > 0; --left) {
            const auto record = stream.next();
            if (!record) {
                ++finished;
                return;
            }
            check(*record, folder);
        }
        ++dropped;
    }

    std::int64_t draw(std::int64_t most)
    {
        return std::uniform_int_distribution<std::int64_t>{0, most}(m_random);
    }

    std::filesystem::path m_folder;
    std::mt19937_64 m_random;
};

void soak(std::chrono::seconds duration, std::uint64_t seed)
{
    // A scan that follows a link which has just replaced a folder gets to the forbidden files. The churn does
    // not know their names: it would otherwise carry them into the tree through the link.
    const TemporaryTree tree{folder(std::string{wholeName}),
                             file("forbidden/" + std::string{forbiddenName}, 4_MiB),
                             file("forbidden/kept/" + std::string{forbiddenName}, 4_MiB), folder("outside")};
    const std::filesystem::path scanned = tree.path(wholeName);
    (void)FileScanner::directorySize(tree.url()); // what is made on first use is there
    const std::ptrdiff_t descriptors = Soak::openDescriptors();

    std::vector<Consumer> consumers{{scanned, seed + 1}, {scanned, seed + 2}, {scanned, seed + 3}};
    std::uint64_t changes = 0;
    {
        const TreeChurn::Folders folders{scanned, tree.path("outside"), tree.path("forbidden")};
        const TreeChurn churn{folders, seed};
        const TreeChurn other{folders, seed + 4};
        const auto end = std::chrono::steady_clock::now() + duration;
        std::vector<std::jthread> threads;
        threads.reserve(consumers.size());
        for (Consumer& consumer : consumers) {
            threads.emplace_back([&consumer, end] { consumer.scanUntil(end); });
        }
        threads.clear();
        changes = churn.changes() + other.changes();
    }
    Soak::waitForDescriptors(descriptors);

    FileScanner::clearCache();
    Soak::require(FileScanner::directorySize(FileUrl{scanned.string()}) == usedBytes(scanned),
                  "once the tree rests, its size is true");
    Soak::require(changes > 0 && finished > 0 && dropped > 0, "there was something to try");
    std::printf("%ju changes, %ju scans read to the end, %ju dropped, %jd MB resident\n",
                std::uintmax_t{changes}, std::uintmax_t{finished.load()}, std::uintmax_t{dropped.load()},
                std::intmax_t{Soak::residentBytes() / 1'000'000});
}

} // namespace

} // namespace tallyroom

int main(int argc, char** argv)
{
    const auto [duration, seed] = tallyroom::Soak::begin(argc, argv);
    tallyroom::soak(duration, seed);
}
