#pragma once

#include "Model/Entry.h"

#include <span>

namespace tallyroom {

/// Looks closer at what a search finds, and says so in the marks of the entries. Its calls come from the
/// pool's workers and must not take long.
class FindInspector {
public:
    FindInspector() = default;
    FindInspector(const FindInspector&) = delete;
    FindInspector& operator=(const FindInspector&) = delete;
    virtual ~FindInspector() = default;

    /// A folder was found; `parent` is the open folder that holds it. From many workers at once.
    virtual void inspect(int /*parent*/, Entry& /*find*/) const {}

    /// All are found below `root`; once, before the first is measured.
    virtual void conclude(const FileUrl& /*root*/, std::span<Entry> /*finds*/) const {}
};

} // namespace tallyroom
