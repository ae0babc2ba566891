#pragma once

#include "Model/EntryList.h"
#include "Model/UrlSet.h"
#include "Removal/FileRemover.h"

#include <QString>
#include <QUuid>

#include <cstdint>
#include <optional>
#include <vector>

namespace tallyroom {

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
    std::vector<Entry> entries; ///< the removed items
    std::vector<FileRemover::TrashedItem> trashed;

    friend bool operator==(const UndoableDeletion&, const UndoableDeletion&) = default;
};

/// Whether a message says what was done, or what could not be done.
enum class ReportTone { done, failed };

/// The deleted items where they lie in the trash now, under their own names.
[[nodiscard]] std::vector<Entry> trashedEntries(const UndoableDeletion& deletion);

/// Puts `restored` into `entries`, larger first, equal sizes after those already there. What is listed
/// already is not listed twice.
[[nodiscard]] EntryList withRestored(const EntryList& entries, const EntryList& restored);

/// The one line that reports a removal; `freed` in bytes. `notBegun` items were left because it was stopped.
[[nodiscard]] QString removalMessage(const FileRemover::RemovalResult& result, std::int64_t freed,
                                     bool permanently, std::size_t notBegun = 0);

/// What the volumes gained by a removal for good, where that is not about what its report says, `freed` bytes
/// and those of items that are gone in part: off by more than a tenth, and by more than what other programs
/// write meanwhile. Else empty.
[[nodiscard]] QString gainNote(const FileRemover::RemovalResult& result, std::int64_t freed,
                               std::optional<std::int64_t> gained);

/// The one line that reports an undo.
[[nodiscard]] QString restoreMessage(const FileRemover::RemovalResult& result, std::size_t notBegun = 0);

/// Said instead of a removal while another one runs.
[[nodiscard]] QString removalIsBusyMessage();

/// The sum of the sizes in bytes. An overflow ends the process.
[[nodiscard]] std::int64_t totalSize(const std::vector<Entry>& entries);

} // namespace tallyroom
