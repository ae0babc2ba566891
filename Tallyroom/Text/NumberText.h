#pragma once

#include <QString>

#include <concepts>
#include <cstdint>

namespace tallyroom {

/// How numbers that are no sizes are written. Any thread.
namespace NumberText {

/// "12 345": the digits in groups of three.
[[nodiscard]] QString groupedDigits(std::int64_t count);

[[nodiscard]] QString grouped(std::integral auto count)
{
    return groupedDigits(static_cast<std::int64_t>(count));
}

/// "1 volume", "12 345 volumes": none and one take `one`.
[[nodiscard]] QString plural(std::integral auto count, const QString& one, const QString& many)
{
    return grouped(count) + QLatin1Char{' '} + (count < 2 ? one : many);
}

/// The same for a word that takes an "s".
[[nodiscard]] QString plural(std::integral auto count, const QString& one)
{
    return plural(count, one, one + QLatin1Char{'s'});
}

/// "12,3 %" of `share` within [0, 1]; nothing for a share that would round to 0.
[[nodiscard]] QString percentage(double share);

/// "12 345 fichiers"
[[nodiscard]] QString files(std::int64_t count);

/// "12 345 fichiers examinés"
[[nodiscard]] QString examinedFiles(std::int64_t count);

} // namespace NumberText

} // namespace tallyroom
