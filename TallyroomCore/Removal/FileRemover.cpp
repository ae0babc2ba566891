#include "Removal/FileRemover.h"

#include "Removal/ItemPlace.h"
#include "Removal/ProtectedLocations.h"
#include "Removal/Trash.h"
#include "Removal/TreeRemoval.h"

#include <cerrno>
#include <optional>

namespace tallyroom {

namespace {

using FileRemover::RemovalError;
using FileRemover::RemovalExpected;

/// The words for an error of a location that was given, where the platform's own would puzzle.
std::string wordsFor(const FileUrl& url, SystemError error)
{
    if (!url.isEmpty() && url.path().find_first_not_of('/') == std::string::npos) {
        return "La racine du système ne peut pas être supprimée.";
    }
    return error.code == EINVAL ? "Cet emplacement ne désigne ni un fichier ni un dossier." : error.message();
}

/// One batch: what is read once for all of its items.
class Batch {
public:
    RemovalExpected<FileUrl> moveToTrash(const FileUrl& url)
    {
        const auto place = removable(url);
        if (!place) {
            return std::unexpected(place.error());
        }
        auto stored = m_trash.moveIn(*place);
        if (!stored) {
            return std::unexpected(RemovalError{std::move(stored.error().message)});
        }
        return std::move(*stored);
    }

    RemovalExpected<void> deletePermanently(const FileUrl& url)
    {
        const auto place = removable(url);
        if (!place) {
            return std::unexpected(place.error());
        }
        if (const auto removed = TreeRemoval::removeItem(place->parent.get(), place->name); !removed) {
            return std::unexpected(RemovalError{removed.error().code == EXDEV
                                                    ? "Un autre volume est monté dans ce dossier."
                                                    : removed.error().message()});
        }
        return {};
    }

private:
    /// The place of an item that may be removed.
    RemovalExpected<ItemPlace> removable(const FileUrl& url)
    {
        auto place = ItemPlace::open(url);
        if (!place) {
            return std::unexpected(RemovalError{wordsFor(url, place.error())});
        }
        if (!m_protected) {
            m_protected = ProtectedLocations::read();
        }
        if (!*m_protected) {
            return std::unexpected(RemovalError{m_protected->error().message()});
        }
        if (auto refusal = (*m_protected)->refusal(*place)) {
            return std::unexpected(RemovalError{std::move(*refusal)});
        }
        return std::move(*place);
    }

    std::optional<SystemResult<ProtectedLocations>> m_protected;
    Trash m_trash;
};

void report(const FileRemover::BatchProgress& progress, std::size_t completed, std::size_t total)
{
    if (progress) {
        progress(completed, total);
    }
}

/// Removes one item and writes down what became of it.
void record(FileRemover::RemovalResult& result, const FileUrl& url, Batch& batch, bool permanently)
{
    RemovalExpected<void> done;
    if (permanently) {
        done = batch.deletePermanently(url);
    } else if (auto inTrash = batch.moveToTrash(url)) {
        result.trashed.push_back({url, std::move(*inTrash)});
    } else {
        done = std::unexpected(std::move(inTrash.error()));
    }
    if (done) {
        result.removed.push_back(url);
    } else {
        result.failures.push_back({url, std::move(done.error().message)});
    }
}

} // namespace

RemovalExpected<void> FileRemover::moveToTrash(const FileUrl& url)
{
    const auto stored = Batch{}.moveToTrash(url);
    if (!stored) {
        return std::unexpected(stored.error());
    }
    return {};
}

RemovalExpected<void> FileRemover::deletePermanently(const FileUrl& url)
{
    return Batch{}.deletePermanently(url);
}

FileRemover::RemovalResult FileRemover::moveToTrash(std::span<const FileUrl> urls)
{
    return remove(urls, false);
}

FileRemover::RemovalResult FileRemover::remove(std::span<const FileUrl> urls, bool permanently,
                                               const BatchProgress& progress)
{
    RemovalResult result;
    Batch batch;
    for (const FileUrl& url : urls) {
        record(result, url, batch, permanently);
        report(progress, result.removed.size() + result.failures.size(), urls.size());
    }
    return result;
}

FileRemover::RemovalResult FileRemover::remove(std::span<const Entry> entries, bool permanently,
                                               const BatchOptions& options)
{
    RemovalResult result;
    Batch batch;
    for (const Entry& entry : entries) {
        if (options.stop.stop_requested()) {
            break;
        }
        auto screened = options.screening ? options.screening(entry, options.stop) : Screened{};
        if (options.stop.stop_requested()) {
            break; // what was said may be for want of time
        }
        if (screened.refusal) {
            result.failures.push_back({entry.url, std::move(*screened.refusal)});
        } else {
            record(result, entry.url, batch, permanently);
        }
        report(options.progress, result.removed.size() + result.failures.size(), entries.size());
    }
    return result;
}

FileRemover::RemovalResult FileRemover::restore(std::span<const TrashedItem> items,
                                                const BatchOptions& options)
{
    RemovalResult result;
    for (const TrashedItem& item : items) {
        if (options.stop.stop_requested()) {
            break;
        }
        if (const auto moved = Trash::putBack(item.inTrash, item.original)) {
            result.removed.push_back(item.original);
        } else {
            result.failures.push_back({item.original, moved.error().message});
        }
        report(options.progress, result.removed.size() + result.failures.size(), items.size());
    }
    return result;
}

} // namespace tallyroom
