#pragma once

#include "Model/Entry.h"
#include "Model/FileUrl.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

namespace tallyroom {

/// Measures what lies in trash folders, always anew: what caches know of a name in a trash may be of another
/// item that bore it before.
namespace TrashMeasure {

struct Item {
    Entry entry; ///< with its size on disk, and how much could not be read below it
    std::size_t folder = 0;
};

struct Result {
    std::vector<Item> items;  ///< in no order
    std::uint32_t unread = 0; ///< folders of `folders` that could not be listed
};

/// The items in these folders, none of which may be a link. Nothing after a stop. Waits for the process's
/// WorkerPool: not to be called by its workers.
[[nodiscard]] std::optional<Result> measure(const std::vector<FileUrl>& folders, const std::stop_token& stop);

} // namespace TrashMeasure

} // namespace tallyroom
