#pragma once

#include "Model/EntryList.h"
#include "Model/UrlSet.h"
#include "Rows/PositionSet.h"

#include <memory>
#include <mutex>
#include <string_view>
#include <unordered_map>

namespace tallyroom {

/// The checks of an earlier list, to be found again by location in a newer one. Never changes: to be shared,
/// any thread.
class AbsentChecks {
public:
    explicit AbsentChecks(const UrlSet& urls);

    /// The checks of `list`; `older` answers for the locations that `list` lacks.
    AbsentChecks(EntryList list, PositionSet checked, std::shared_ptr<const AbsentChecks> older);

    /// Whether the entry at `url` was checked. O(n) the first time.
    [[nodiscard]] bool contains(const FileUrl& url) const;

    /// The positions of those in `entries`.
    [[nodiscard]] PositionSet foundIn(const EntryList& entries) const;

private:
    const EntryList m_list;
    const PositionSet m_checked;
    const std::shared_ptr<const AbsentChecks> m_older;
    mutable std::once_flag m_indexed;
    mutable std::unordered_map<std::string_view, bool> m_isChecked; // by path; made once
};

/// What a search for absent checks has found, and for which.
struct FoundChecks {
    std::shared_ptr<const AbsentChecks> absent;
    PositionSet positions;
};

} // namespace tallyroom
