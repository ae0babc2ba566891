#include "Model/AgeThreshold.h"

#include <algorithm>

namespace tallyroom {

namespace {

struct ThresholdRow {
    std::string_view rawValue;
    std::string_view label;
    int days;
};

constexpr std::array<ThresholdRow, 5> thresholdRows{{
    {"oneWeek", "1 semaine", 7},
    {"oneMonth", "1 mois", 30},
    {"threeMonths", "3 mois", 90},
    {"sixMonths", "6 mois", 180},
    {"oneYear", "1 an", 365},
}};

} // namespace

constinit const std::array<AgeThreshold, 5> AgeThreshold::all{oneWeek, oneMonth, threeMonths, sixMonths,
                                                              oneYear};

std::optional<AgeThreshold> AgeThreshold::fromRawValue(std::string_view text)
{
    const auto* const found = std::ranges::find(all, text, &AgeThreshold::rawValue);
    return found != all.end() ? std::optional{*found} : std::nullopt;
}

std::string_view AgeThreshold::rawValue() const noexcept
{
    return thresholdRows[m_value].rawValue;
}

std::string_view AgeThreshold::label() const noexcept
{
    return thresholdRows[m_value].label;
}

std::chrono::days AgeThreshold::age() const noexcept
{
    return std::chrono::days{thresholdRows[m_value].days};
}

bool AgeThreshold::isOld(const std::optional<Timestamp>& date, Timestamp reference) const noexcept
{
    // Two dates may lie further apart than 64 bits can count in nanoseconds.
    using Nanoseconds = std::chrono::duration<long double, std::nano>;
    return date && Nanoseconds{reference.time_since_epoch()} - Nanoseconds{date->time_since_epoch()} >
                       Nanoseconds{age()};
}

} // namespace tallyroom
