#include "Removal/FileRemover.h"

#include "FileSystem/FolderReader.h"
#include "FileSystem/MountTable.h"
#include "FileSystem/ScanRoots.h"
#include "Removal/AsideItem.h"
#include "Removal/ItemPlace.h"
#include "Removal/ProtectedLocations.h"
#include "Removal/Trash.h"
#include "Removal/TreeRemoval.h"

#include <cerrno>
#include <memory>
#include <optional>
#include <unordered_map>

namespace tallyroom {

namespace {

using FileRemover::RemovalError;
using FileRemover::RemovalExpected;
using FileRemover::RemovalFailure;

/// The words for an error of a location that was given, where the platform's own would puzzle.
std::string wordsFor(const FileUrl& url, SystemError error)
{
    if (!url.isEmpty() && url.path().find_first_not_of('/') == std::string::npos) {
        return "La racine du système ne peut pas être supprimée.";
    }
    return error.code == EINVAL ? "Cet emplacement ne désigne ni un fichier ni un dossier." : error.message();
}

/// A removal request: a location, or the item that a scan saw there.
struct Wanted {
    const FileUrl& url;
    const Entry* seen = nullptr;
};

/// How to remove it.
struct Going {
    FileRemover::SecondLook secondLook{};
    std::stop_token stop{};
};

/// The words for an item of which a part is gone.
std::string wordsForTheRest(const TreeRemoval::Outcome& outcome)
{
    std::string words = outcome.isStopped ? "Suppression arrêtée, en partie supprimé" : "En partie supprimé";
    if (outcome.kept > 0) {
        words += outcome.firstKept.empty() ? " : le dossier lui-même reste"
                                           : " : il reste « " + outcome.firstKept + " »";
        std::string reason = outcome.error->message();
        if (reason.ends_with('.')) {
            reason.pop_back(); // within a sentence of ours
        }
        words += " (" + reason + ")";
    }
    if (outcome.kept > 1) {
        words += outcome.kept == 2 ? " et un autre" : " et " + std::to_string(outcome.kept - 1) + " autres";
    }
    return words + ".";
}

/// The words for an item that is left whole.
std::string wordsFor(SystemError error)
{
    switch (error.code) {
    case EXDEV:
        return "Un autre volume est monté dans ce dossier.";
    case ESTALE:
        return hasChanged;
    default:
        return error.message();
    }
}

/// One batch: it reads the mounts and the protected locations once for all items.
class Batch {
public:
    enum class Removed : unsigned char { yes, no, notBegun };

    /// Moves an item to the trash, or says in `failure` why it stays.
    Removed moveToTrash(const Wanted& wanted, const Going& going, FileRemover::TrashedItem& trashed,
                        RemovalFailure& failure)
    {
        const auto place = removable(wanted);
        auto stored =
            place ? m_trash.moveIn(*place) : std::unexpected(Trash::Refusal{0, place.error().message});
        if (!stored) {
            failure = {wanted.url, std::move(stored.error().message)};
            return Removed::no;
        }
        trashed = {wanted.url, std::move(stored->inTrash), stored->item, stored->folder};
        auto refusal = going.secondLook ? going.secondLook() : std::nullopt;
        if (!refusal || !restore(trashed)) {
            return Removed::yes; // what cannot come back lies in the trash, and its undo is known
        }
        failure = {wanted.url, std::move(*refusal)};
        return going.stop.stop_requested() ? Removed::notBegun : Removed::no;
    }

    /// Removes an item for good, or describes the rest of it in `failure`.
    Removed deletePermanently(const Wanted& wanted, const Going& going, RemovalFailure& failure)
    {
        const auto place = removable(wanted);
        if (!place) {
            failure = {wanted.url, place.error().message};
            return Removed::no;
        }
        if (!going.secondLook) {
            return deleteAs(place->name, *place, wanted, going.stop, failure);
        }
        const auto aside = AsideItem::move(*place);
        if (!aside) {
            failure = {wanted.url, wordsFor(aside.error())};
            return Removed::no;
        }
        auto removed = Removed::no;
        if (auto refusal = going.secondLook()) {
            failure = {wanted.url, std::move(*refusal)};
            removed = going.stop.stop_requested() ? Removed::notBegun : Removed::no;
        } else {
            removed = deleteAs(aside->name(), *place, wanted, going.stop, failure);
        }
        if (removed != Removed::yes) {
            if (const std::string where = aside->putBack(); !where.empty()) {
                failure = {wanted.url, failure.message + where, failure.freedBytes};
                removed = Removed::no;
            }
        }
        return removed;
    }

    /// Moves an item back out of the trash.
    std::expected<void, Trash::Refusal> restore(const FileRemover::TrashedItem& item)
    {
        return m_trash.putBack(
            {item.inTrash, item.original, {item.item, volumes()}, {item.folder, volumes()}});
    }

private:
    /// Removes the item of a place under the name that it has now.
    Removed deleteAs(const std::string& name, const ItemPlace& place, const Wanted& wanted,
                     const std::stop_token& stop, RemovalFailure& failure)
    {
        const auto outcome = TreeRemoval::removeItem(place.parent.get(), name, place.meant, stop);
        if (outcome.isGone()) {
            m_trash.forget(place);
            return Removed::yes;
        }
        if (outcome.removed == 0 && outcome.isStopped) {
            return Removed::notBegun;
        }
        failure = {wanted.url, outcome.removed == 0 ? wordsFor(*outcome.error) : wordsForTheRest(outcome),
                   outcome.freedBytes};
        return Removed::no;
    }

    /// The place of an item that may be removed.
    RemovalExpected<ItemPlace> removable(const Wanted& wanted)
    {
        auto place =
            wanted.seen != nullptr ? ItemPlace::open(*wanted.seen, volumes()) : ItemPlace::open(wanted.url);
        if (!place) {
            return std::unexpected(RemovalError{
                wanted.seen != nullptr ? wordsFor(place.error()) : wordsFor(wanted.url, place.error())});
        }
        place->meant.volumes = volumes();
        if (!m_protected) {
            m_protected = ProtectedLocations::read(mounts());
        }
        if (!*m_protected) {
            return std::unexpected(RemovalError{m_protected->error().message()});
        }
        if (auto refusal = (*m_protected)->refusal(*place)) {
            return std::unexpected(RemovalError{std::move(*refusal)});
        }
        return std::move(*place);
    }

    const std::vector<Mount>& mounts()
    {
        if (!m_mounts) {
            m_mounts = MountTable::read();
        }
        return *m_mounts;
    }

    const std::shared_ptr<const VolumeMarks>& volumes()
    {
        if (m_volumes == nullptr) {
            m_volumes = std::make_shared<const VolumeMarks>(mounts());
        }
        return m_volumes;
    }

    std::optional<std::vector<Mount>> m_mounts;
    std::shared_ptr<const VolumeMarks> m_volumes;
    std::optional<SystemResult<ProtectedLocations>> m_protected;
    Trash m_trash;
};

void report(const FileRemover::BatchProgress& progress, std::size_t completed, std::size_t total)
{
    if (progress) {
        progress(completed, total);
    }
}

/// Removes one item and records the result.
void record(FileRemover::RemovalResult& result, const Wanted& wanted, Batch& batch, bool permanently,
            const Going& going)
{
    RemovalFailure failure;
    FileRemover::TrashedItem trashed;
    const auto removed = permanently ? batch.deletePermanently(wanted, going, failure)
                                     : batch.moveToTrash(wanted, going, trashed, failure);
    switch (removed) {
    case Batch::Removed::yes:
        result.removed.push_back(wanted.url);
        if (!permanently) {
            result.trashed.push_back(std::move(trashed));
        }
        break;
    case Batch::Removed::no:
        result.failures.push_back(std::move(failure));
        break;
    case Batch::Removed::notBegun:
        break;
    }
}

RemovalExpected<void> removeOne(const FileUrl& url, bool permanently)
{
    const auto result = FileRemover::remove(std::span{&url, 1}, permanently);
    if (!result.allSucceeded()) {
        return std::unexpected(RemovalError{result.failures.front().message});
    }
    return {};
}

} // namespace

RemovalExpected<void> FileRemover::moveToTrash(const FileUrl& url)
{
    return removeOne(url, false);
}

RemovalExpected<void> FileRemover::deletePermanently(const FileUrl& url)
{
    return removeOne(url, true);
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
        record(result, {url}, batch, permanently, {});
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
            break; // the refusal may only be due to the stop
        }
        if (screened.refusal) {
            result.failures.push_back({entry.url, std::move(*screened.refusal)});
        } else {
            record(result, {entry.url, &entry}, batch, permanently,
                   {std::move(screened.secondLook), options.stop});
        }
        report(options.progress, result.removed.size() + result.failures.size(), entries.size());
    }
    return result;
}

FileRemover::RemovalResult FileRemover::deleteTrashed(std::span<const TrashedItem> items,
                                                      const BatchOptions& options)
{
    RemovalResult result;
    Batch batch;
    std::unordered_map<FileUrl, std::uint32_t> bins; // as roots that the items are found below
    for (const TrashedItem& item : items) {
        if (options.stop.stop_requested()) {
            break;
        }
        const auto [bin, isNew] = bins.try_emplace(item.inTrash.parent(), 0);
        if (const auto folder =
                isNew ? openFolder(bin->first, FolderAccess::throughOnly) : std::unexpected(SystemError{0})) {
            bin->second = ScanRoots::add(bin->first, folder->get()).key;
        }
        Entry entry{.url = item.inTrash, .identity = item.item.value_or(ItemIdentity{})};
        entry.identity.root = bin->second;
        record(result, {entry.url, &entry}, batch, true, {{}, options.stop});
        report(options.progress, result.removed.size() + result.failures.size(), items.size());
    }
    return result;
}

FileRemover::RemovalResult FileRemover::restore(std::span<const TrashedItem> items,
                                                const BatchOptions& options)
{
    RemovalResult result;
    Batch batch;
    for (const TrashedItem& item : items) {
        if (options.stop.stop_requested()) {
            break;
        }
        if (const auto moved = batch.restore(item)) {
            result.removed.push_back(item.original);
        } else {
            result.failures.push_back({item.original, moved.error().message});
        }
        report(options.progress, result.removed.size() + result.failures.size(), items.size());
    }
    return result;
}

} // namespace tallyroom
