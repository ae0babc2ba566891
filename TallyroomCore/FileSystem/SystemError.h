#pragma once

#include <expected>
#include <string>

namespace tallyroom {

/// A failed system call: its errno, saved immediately.
struct SystemError {
    int code = 0;

    /// A French sentence for common errors, strerror(3) for the rest.
    [[nodiscard]] std::string message() const;

    /// The current errno.
    [[nodiscard]] static SystemError last() noexcept;

    friend bool operator==(const SystemError&, const SystemError&) = default;
};

template <class Value>
using SystemResult = std::expected<Value, SystemError>;

} // namespace tallyroom
