#pragma once

#include "Duplicates/CandidateWalk.h"
#include "Duplicates/DigestStage.h"
#include "Duplicates/DuplicateGroup.h"
#include "FileSystem/DiskSense.h"

#include <cstdint>
#include <functional>
#include <stop_token>
#include <vector>

namespace tallyroom {

/// The second half of the search for duplicates: candidates of one size are told apart by digests of their
/// first 64 KiB, their last 64 KiB, and all of their bytes, each only where the one before did not settle it.
/// A rotating disk is read from one end to the other in each stage (DiskPace).
namespace DigestSearch {

/// How far the digesting has come, in bytes. A file that drops out counts as done with all that it might
/// have cost, so `done` never falls and ends at `total`.
struct Progress {
    std::int64_t done = 0;
    std::int64_t total = 0;
};

/// The sets of files with identical content, largest waste first, equal waste by the first path. A file that
/// cannot be read, or has another size or modification time than the walk met, is in none. `onProgress` is
/// called on the caller's thread, at the beginning of each stage and about every 100 ms. The caller waits, so
/// it must not be one of the process's pool workers. After a stop the result is empty. At most one open file
/// a worker.
[[nodiscard]] std::vector<DuplicateGroup> run(CandidateWalk::Findings findings, const std::stop_token& stop,
                                              const std::function<void(Progress)>& onProgress,
                                              const DiskSense& sense = DiskSense::machine());

} // namespace DigestSearch

} // namespace tallyroom
