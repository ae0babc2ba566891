#include "ScanCommand.h"

#include "Caches/FindInspectors.h"
#include "Concurrency/Locked.h"
#include "Concurrency/ParallelFor.h"
#include "EntryPrinter.h"
#include "FileSystem/DiskSense.h"
#include "FileSystem/FolderReader.h"
#include "FileSystem/ScanScope.h"
#include "Git/RepositoryState.h"
#include "Terminal.h"
#include "Text/SizeFormatter.h"

#include <cerrno>
#include <filesystem>
#include <unordered_map>

namespace tallyroom {

namespace {

std::string progressText(const ScanProgress& record)
{
    if (record.isDiscovering) {
        return "Recherche… " + std::to_string(record.total);
    }
    return "Analyse en cours… " + std::to_string(record.completed) + "/" + std::to_string(record.total) +
           " " + std::to_string(static_cast<int>(record.fraction() * 100)) + " %";
}

/// The usual reasons as half a sentence.
std::string reasonOf(const SystemError& error)
{
    switch (error.code) {
    case ENOENT:
        return "ce dossier n'existe pas";
    case ENOTDIR:
        return "ce n'est pas un dossier";
    case EACCES:
        return "accès refusé";
    default:
        return error.message();
    }
}

} // namespace

std::optional<FileUrl> ScanCommand::folder(const std::string& argument)
{
    if (argument.empty()) {
        Terminal::complain("le nom du dossier est vide.");
        return std::nullopt;
    }
    std::error_code failed;
    const std::filesystem::path path = std::filesystem::absolute(argument, failed);
    const FileUrl url = FileUrl{path.native()}.standardized();
    // Opened as named, since ".." after a link leads elsewhere than the text says; and for listing, since a
    // scan counts an unlistable folder as empty.
    const auto opened = failed ? std::unexpected(SystemError{failed.value()})
                               : openFolder(FileUrl{path.native()}, FolderAccess::listing);
    if (opened) {
        return FileUrl{path.native()} == url ? url
                                             : FileUrl{std::filesystem::canonical(path, failed).native()};
    }
    Terminal::complain(argument + " : " + reasonOf(opened.error()));
    return std::nullopt;
}

bool ScanCommand::applyScope(const ScanOptions& options)
{
    ScanScope::Rules rules;
    rules.staysOnFileSystem = options.staysOnFileSystem;
    for (const std::string& excluded : options.excluded) {
        if (excluded.empty()) {
            Terminal::complain("le dossier à exclure n'a pas de nom.");
            return false;
        }
        if (excluded.find('/') == std::string::npos) {
            rules.names.insert(excluded);
            continue;
        }
        std::error_code failed;
        const std::filesystem::path path = std::filesystem::weakly_canonical(excluded, failed);
        if (failed) {
            Terminal::complain(excluded + " : " + reasonOf({failed.value()}));
            return false;
        }
        rules.folders.push_back(FileUrl{path.native()}.standardized());
    }
    ScanScope::use(std::move(rules));
    return true;
}

void ScanCommand::tellUnread(const SharedUnreadPlaces& places)
{
    if (places == nullptr) {
        return;
    }
    const auto pluralOf = [](std::int64_t count) { return count > 1 ? "s" : ""; };
    if (const std::int64_t unread = places->count - places->excluded; unread > 0) {
        const std::string plural = pluralOf(unread);
        Terminal::complain(std::to_string(unread) + (places->hasItems ? " élément" : " dossier") + plural +
                           " illisible" + plural + " : total incomplet");
    }
    if (const std::int64_t excluded = places->excluded; excluded > 0) {
        const std::string plural = pluralOf(excluded);
        Terminal::complain(std::to_string(excluded) + " dossier" + plural + " exclu" + plural +
                           " : total incomplet");
    }
}

ExitCode ScanCommand::end(bool isWritten, const Interruption& interruption)
{
    if (!isWritten) {
        Terminal::complain("écriture impossible : " + SystemError::last().message());
        return ExitCode::failure;
    }
    return interruption.hasCome() ? ExitCode::interrupted : ExitCode::success;
}

namespace {

/// How a table names its entries, and what it says of them besides.
enum class Shown : unsigned char { names, paths, datesAndPaths };

/// Finds out more about the entries, and says how to add it to their objects.
using FindOut = std::function<EntryPrinter::AddMembers(const EntryList& entries)>;

/// Adds counted_again to the entries of a listing that have such a figure.
EntryPrinter::AddMembers countedAgain(const ScanProgress& found)
{
    if (found.countedAgain == nullptr) {
        return {};
    }
    return [again = found.countedAgain](const Entry& entry, JsonLine& line) {
        if (const auto part = again->children.find(entry.url); part != again->children.end()) {
            line.number("counted_again", part->second);
        }
    };
}

/// A whole command: checks the folder, follows the scan that `start` starts on it, prints the result.
template <class Start>
ExitCode run(const ScanOptions& options, Shown shown, const Interruption& interruption, Start start,
             const FindOut& findOut = {})
{
    const auto url = ScanCommand::folder(options.folder);
    if (!url) {
        return ExitCode::failure;
    }
    const ScanProgress found = ScanCommand::follow(start(*url), options.quiet, interruption, progressText);
    if (interruption.hasCome()) {
        Terminal::complain("analyse interrompue, la liste est incomplète.");
    }
    ScanCommand::tellUnread(found.unreadPlaces);
    const bool showsPaths = shown != Shown::names;
    const EntryList entries = showsPaths ? rankedByPath(found.entries) : found.entries;
    const TableStyle style{Terminal::columns(), Terminal::showsColours(), showsPaths,
                           shown == Shown::datesAndPaths};
    return ScanCommand::print(
        options.format, interruption,
        [&](OutputWriter& writer) { EntryPrinter::addTable(entries, style, writer); },
        [&](OutputWriter& writer) { EntryPrinter::addCsv(entries, writer); },
        [&](OutputWriter& writer) {
            EntryPrinter::addJson(entries, writer, findOut ? findOut(entries) : countedAgain(found));
        });
}

} // namespace

namespace {

/// What scans decide about disks, told on standard error at the end of its life.
class DiskReport {
public:
    explicit DiskReport(bool isWanted) : m_isWanted(isWanted)
    {
        if (isWanted) {
            DiskSense::listen([decisions = m_decisions](const DiskDecision& decision) {
                decisions->with([&](auto& known) { known.push_back(decision); });
            });
        }
    }

    DiskReport(const DiskReport&) = delete;
    DiskReport& operator=(const DiskReport&) = delete;

    ~DiskReport()
    {
        if (!m_isWanted) {
            return;
        }
        auto decisions = m_decisions->get();
        if (decisions.empty()) {
            decisions.emplace_back(); // nobody knows what holds the folder
        }
        std::vector<std::string> told;
        for (const DiskDecision& decision : decisions) {
            if (const std::string text = textOf(decision); std::ranges::find(told, text) == told.end()) {
                Terminal::complain(told.emplace_back(text));
            }
        }
    }

private:
    static std::string textOf(const DiskDecision& decision)
    {
        std::string disks;
        for (const std::string& name : decision.rotating) {
            disks += (disks.empty() ? "" : ", ") + name;
        }
        if (disks.empty()) {
            return "tous les lecteurs : pas de disque rotatif";
        }
        const std::size_t count = decision.rotating.size();
        const std::string plural = count > 1 ? "s" : "";
        return decision.isOrdered ? std::to_string(count) + " lecteur" + plural + " : disque" + plural +
                                        " rotatif" + plural + " (" + disks + ")"
                                  : "tous les lecteurs : répond sans attendre (" + disks + ")";
    }

    const bool m_isWanted;
    std::shared_ptr<Locked<std::vector<DiskDecision>>> m_decisions =
        std::make_shared<Locked<std::vector<DiskDecision>>>();
};

} // namespace

ExitCode runUsage(const ScanOptions& options, const Interruption& interruption)
{
    const DiskReport report{options.verbose};
    return run(options, Shown::names, interruption,
               [](const FileUrl& url) { return FileScanner::directEntriesStream(url, false); });
}

ExitCode runLargest(const ScanOptions& options, std::int64_t limit, const FileScanner::FileCriteria& criteria,
                    const Interruption& interruption)
{
    return run(options, Shown::datesAndPaths, interruption, [limit, &criteria](const FileUrl& url) {
        return FileScanner::findLargestFilesStream(url, limit, criteria);
    });
}

ExitCode runBuildCaches(const ScanOptions& options, const std::set<Ecosystem>& ecosystems,
                        const Interruption& interruption)
{
    return run(
        options, Shown::paths, interruption,
        [&ecosystems](const FileUrl& url) {
            return FileScanner::findDirectoriesStream(Ecosystem::ruleNames(ecosystems), url,
                                                      FindInspectors::ofCaches());
        },
        [](const EntryList&) {
            return [](const Entry& entry, JsonLine& line) {
                line.truth("proven", !entry.has(EntryMark::toVerify));
            };
        });
}

namespace {

using States = std::unordered_map<FileUrl, std::optional<RepositoryState>>;

/// Those that are known before an interruption.
States readStates(const EntryList& repositories, const Interruption& interruption)
{
    std::stop_source stop;
    const auto stopping = interruption.whenItComes([&stop] { stop.request_stop(); });
    Locked<States> states;
    ParallelForOptions options;
    options.lanes = WorkerPool::shared().width();
    options.stop = stop.get_token();
    parallelFor(
        WorkerPool::shared(), repositories.size(),
        [&](std::size_t number, unsigned) {
            const FileUrl& url = repositories[number].url;
            const auto state = RepositoryState::read(url);
            states.with([&](States& known) { known.emplace(url, state); });
        },
        options);
    return states.get();
}

void addState(const States& states, const Entry& repository, JsonLine& line)
{
    const auto found = states.find(repository.url);
    if (found == states.end() || !found->second) {
        line.null("remote").null("unpushed").null("stashes");
        return;
    }
    const RepositoryState& state = *found->second;
    line.truth("remote", state.hasRemote);
    state.unpushed ? line.number("unpushed", *state.unpushed) : line.null("unpushed");
    line.number("stashes", state.stashes);
}

} // namespace

ExitCode runGitRepos(const ScanOptions& options, const Interruption& interruption)
{
    return run(
        options, Shown::paths, interruption,
        [](const FileUrl& url) { return FileScanner::findDirectoriesStream({".git"}, url); },
        [&interruption](const EntryList& entries) {
            return [states = readStates(entries, interruption)](const Entry& entry, JsonLine& line) {
                addState(states, entry, line);
            };
        });
}

ExitCode runSearch(const ScanOptions& options, const FolderNames& names, const Interruption& interruption)
{
    return run(options, Shown::paths, interruption,
               [&names](const FileUrl& url) { return FileScanner::findDirectoriesStream(names, url); });
}

} // namespace tallyroom
