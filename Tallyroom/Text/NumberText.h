#pragma once

#include <QString>

#include <cstdint>

namespace tallyroom {

/// How numbers that are no sizes are written. Any thread.
namespace NumberText {

/// "12 345": the digits in groups of three.
[[nodiscard]] QString grouped(std::int64_t count);

/// "12,3 %" of `share` within [0, 1]; nothing for a share that would round to 0.
[[nodiscard]] QString percentage(double share);

/// "12 345 fichiers"
[[nodiscard]] QString files(std::int64_t count);

/// "12 345 fichiers examinés"
[[nodiscard]] QString examinedFiles(std::int64_t count);

} // namespace NumberText

} // namespace tallyroom
