#include "Model/AgeThreshold.h"

#include <algorithm>
#include <utility>

namespace tallyroom {

namespace {

struct ThresholdRow {
    std::string_view rawValue;
    std::string_view label;
    std::chrono::days age;
};

using std::chrono::days;

/// In the order of the cases.
constexpr std::array<ThresholdRow, 5> thresholdRows{{
    {"oneWeek", "1 semaine", days{7}},
    {"oneMonth", "1 mois", days{30}},
    {"threeMonths", "3 mois", days{90}},
    {"sixMonths", "6 mois", days{180}},
    {"oneYear", "1 an", days{365}},
}};

const ThresholdRow& thresholdRowOf(AgeThreshold::Value value)
{
    return thresholdRows[std::to_underlying(value)];
}

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
    return thresholdRowOf(m_value).rawValue;
}

std::string_view AgeThreshold::label() const noexcept
{
    return thresholdRowOf(m_value).label;
}

Timestamp AgeThreshold::before(Timestamp reference) const noexcept
{
    return reference - thresholdRowOf(m_value).age;
}

bool AgeThreshold::isOld(const std::optional<Timestamp>& date, Timestamp reference) const noexcept
{
    // Two dates may lie further apart than 64 bits can count in nanoseconds.
    using Nanoseconds = std::chrono::duration<long double, std::nano>;
    return date && Nanoseconds{reference.time_since_epoch()} - Nanoseconds{date->time_since_epoch()} >
                       Nanoseconds{thresholdRowOf(m_value).age};
}

} // namespace tallyroom
