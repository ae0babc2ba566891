#pragma once

#include "Model/AgeThreshold.h"
#include "Model/Entry.h"

#include <QString>

#include <optional>

namespace tallyroom {

/// How long ago something was, as people say it: "hier", "il y a 5 semaines". Weeks up to two months, months
/// up to two years. A date that is still to come is "dans le futur", none is "date inconnue".
[[nodiscard]] QString ageText(const std::optional<Timestamp>& date, Timestamp now);

/// "3 mois"
[[nodiscard]] QString thresholdText(AgeThreshold threshold);

/// The date to the second, in the user's time: "12 mars 2024 à 14:03:22"; "date inconnue".
[[nodiscard]] QString dateText(const std::optional<Timestamp>& date);

/// The day, in the user's time: "12 mars 2024", "3 févr. 2024".
[[nodiscard]] QString dayText(Timestamp date);

/// Seconds since 1970-01-01T00:00:00Z to sort by; 0 without a date, so that it counts as the oldest.
[[nodiscard]] double modifiedAtSortKey(const Entry& entry);

} // namespace tallyroom
