#pragma once

#include <expected>
#include <string>

namespace tallyroom {

/// A failed system call: its errno, taken while it was fresh.
struct SystemError {
    int code = 0;

    /// A French sentence for what commonly happens; the platform's words (strerror(3)) for the rest.
    [[nodiscard]] std::string message() const;

    /// What errno says now.
    [[nodiscard]] static SystemError last() noexcept;

    friend bool operator==(const SystemError&, const SystemError&) = default;
};

template <class Value>
using SystemResult = std::expected<Value, SystemError>;

} // namespace tallyroom
