#pragma once

#include "Model/Entry.h"

namespace tallyroom {

/// What a bounded look at the dates below a folder tells: the folders next to it before deeper ones, and no
/// link followed. Any thread.
namespace RecentWrites {

/// How many items one look examines at most.
inline constexpr std::size_t mostItems = 1000;

/// Whether the folder `name` in the open folder `parent`, or something in it, changed between `from` and
/// `until`.
[[nodiscard]] bool isAnyBetween(int parent, const char* name, Timestamp from, Timestamp until);

/// When the newest file below `project` changed, folders that tools fill left out: those of version control
/// and those called as `Ecosystem` knows them. Nothing without a file.
[[nodiscard]] std::optional<Timestamp> newestOwnFile(const FileUrl& project);

} // namespace RecentWrites

} // namespace tallyroom
