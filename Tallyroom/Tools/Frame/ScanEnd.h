#pragma once

#include "FileSystem/UnreadPlaces.h"

#include <QString>

#include <optional>

namespace tallyroom {

/// How the scan that made a list ended. "Empty" and "none" may be said of a complete one only.
struct ScanEnd {
    enum class Kind { none, complete, stopped, unread };

    Kind kind = Kind::none;
    SystemError cause; ///< of `unread`: why the folder cannot be read
    SharedUnreadPlaces
        unreadPlaces{}; ///< what it could not read; null when all was, or the end was not reached

    [[nodiscard]] static ScanEnd stopped() { return {Kind::stopped, {}}; }

    /// The end of a scan that was not stopped.
    [[nodiscard]] static ScanEnd reached(const std::optional<SystemError>& unread,
                                         const SharedUnreadPlaces& places)
    {
        return unread ? ScanEnd{Kind::unread, *unread, places} : ScanEnd{Kind::complete, {}, places};
    }

    [[nodiscard]] bool isComplete() const { return kind == Kind::complete; }

    /// The words for a scan that found nothing; `none` are those for a complete one.
    [[nodiscard]] QString emptyText(const QString& none) const;

    /// The words above a list that is not the whole truth; empty for others.
    [[nodiscard]] QString notice() const;

    friend bool operator==(const ScanEnd&, const ScanEnd&) = default;
};

} // namespace tallyroom
