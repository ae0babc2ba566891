#pragma once

#include "Model/EntryList.h"
#include "Removal/FileRemover.h"

#include <QString>
#include <QUuid>

#include <optional>
#include <unordered_set>
#include <vector>

namespace tallyroom {

/// The locations that a selection or a request names.
using UrlSet = std::unordered_set<FileUrl>;

/// A request to delete that waits for the user's word.
struct PendingDeletion {
    QUuid id = QUuid::createUuid(); ///< a new request for the same rows is a new dialog
    std::vector<FileUrl> urls;      ///< in the order of the entries
    std::int64_t size = 0;          ///< bytes
    QString label;                  ///< "3 éléments"

    [[nodiscard]] static PendingDeletion many(const std::vector<Entry>& entries);

    friend bool operator==(const PendingDeletion&, const PendingDeletion&) = default;
};

/// What it takes to undo a deletion.
struct UndoableDeletion {
    std::vector<Entry> entries; ///< what was taken out of the list
    std::vector<FileRemover::TrashedItem> trashed;

    friend bool operator==(const UndoableDeletion&, const UndoableDeletion&) = default;
};

/// A tool's list after a deletion, and what to say of it.
struct DeletionOutcome {
    EntryList entries;
    QString message;
    std::optional<UndoableDeletion> undoable;

    friend bool operator==(const DeletionOutcome&, const DeletionOutcome&) = default;
};

/// A tool's list after an undo, and what to say of it.
struct RestoreOutcome {
    EntryList entries;
    QString message;

    friend bool operator==(const RestoreOutcome&, const RestoreOutcome&) = default;
};

// The removal itself runs elsewhere (DeletionRunner); these are the pure steps before and after it.

/// The entries that `urls` names, in list order; none when the list knows none of them any more.
[[nodiscard]] std::vector<Entry> deletionTargets(const EntryList& entries, const UrlSet& urls);

/// Takes what was removed out of `entries`; what failed stays. `targets` is what was asked for.
[[nodiscard]] DeletionOutcome applyDeletion(const FileRemover::RemovalResult& result,
                                            const std::vector<Entry>& targets, const EntryList& entries,
                                            bool permanently);

/// Puts what came back into `entries`, larger first, equal sizes after those already there. An entry that a
/// newer listing has found by itself is not listed twice.
[[nodiscard]] RestoreOutcome applyRestore(const FileRemover::RemovalResult& result,
                                          const UndoableDeletion& undoable, const EntryList& entries);

/// The one line that reports a removal; `freed` in bytes.
[[nodiscard]] QString removalMessage(const FileRemover::RemovalResult& result, std::int64_t freed,
                                     bool permanently);

/// The sum of the sizes in bytes.
[[nodiscard]] std::int64_t totalSize(const std::vector<Entry>& entries);

/// The same list without the entries that `urls` names.
[[nodiscard]] EntryList withoutUrls(const EntryList& entries, const UrlSet& urls);

} // namespace tallyroom
