#pragma once

#include <QString>

#include <utility>

namespace tallyroom {

/// The phase of a tool. Two states are equal when the phase is, and for an error its message too.
struct ToolState {
    enum class Phase { idle, scanning, loaded, error };

    Phase phase = Phase::idle;
    QString message; ///< for people; empty but in the phase `error`

    [[nodiscard]] static ToolState idle() { return {}; }

    [[nodiscard]] static ToolState scanning() { return {Phase::scanning, {}}; }

    [[nodiscard]] static ToolState loaded() { return {Phase::loaded, {}}; }

    [[nodiscard]] static ToolState error(QString message) { return {Phase::error, std::move(message)}; }

    friend bool operator==(const ToolState&, const ToolState&) = default;
};

} // namespace tallyroom
