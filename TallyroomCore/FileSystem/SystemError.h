#pragma once

#include <expected>
#include <string>

namespace tallyroom {

/// A failed system call: its errno, saved immediately.
struct SystemError {
    /// Codes beside those of the system: a folder that a scan was told to leave out, by itself or because it
    /// lies on another file system.
    static constexpr int excluded = -1;
    static constexpr int otherFileSystem = -2;

    int code = 0;

    [[nodiscard]] bool isExclusion() const noexcept { return code == excluded || code == otherFileSystem; }

    /// Whether a name leads to nothing, or to something else, since it was read: no refusal.
    [[nodiscard]] bool isGone() const noexcept;

    /// A French sentence for common errors, strerror(3) for the rest.
    [[nodiscard]] std::string message() const;

    /// The current errno.
    [[nodiscard]] static SystemError last() noexcept;

    friend bool operator==(const SystemError&, const SystemError&) = default;
};

template <class Value>
using SystemResult = std::expected<Value, SystemError>;

} // namespace tallyroom
