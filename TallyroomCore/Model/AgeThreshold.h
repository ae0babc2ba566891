#pragma once

#include "Model/Entry.h"

#include <array>
#include <chrono>
#include <optional>
#include <string_view>

namespace tallyroom {

/// The age beyond which a folder counts as old. A month is 30 days and a year 365, without a calendar. Any
/// thread.
class AgeThreshold {
public:
    enum class Value : unsigned char { oneWeek, oneMonth, threeMonths, sixMonths, oneYear };
    using enum Value;

    /// Every threshold, the shortest first.
    static const std::array<AgeThreshold, 5> all;

    constexpr AgeThreshold(Value value) noexcept : m_value(value) {} // NOLINT: a threshold is its value

    constexpr operator Value() const noexcept { return m_value; } // NOLINT: so that switch sees the cases

    /// The threshold whose raw value is `text`, letter by letter; nothing for any other text.
    [[nodiscard]] static std::optional<AgeThreshold> fromRawValue(std::string_view text);

    /// The case's name.
    [[nodiscard]] std::string_view rawValue() const noexcept;

    /// The words for people, such as "3 mois".
    [[nodiscard]] std::string_view label() const noexcept;

    /// The moment that lies exactly the age before `reference`: what is older than that is old.
    [[nodiscard]] Timestamp before(Timestamp reference) const noexcept;

    /// True when `date` lies further back from `reference` than the age; exactly the age is not old yet, and
    /// an absent date is never old.
    [[nodiscard]] bool isOld(const std::optional<Timestamp>& date, Timestamp reference) const noexcept;

private:
    Value m_value;
};

} // namespace tallyroom
