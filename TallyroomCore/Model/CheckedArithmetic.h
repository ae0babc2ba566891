#pragma once

#include <cstdint>

namespace tallyroom {

/// left + right; an overflow ends the process with a message, since every total built on it would be a lie.
[[nodiscard]] std::int64_t checkedSum(std::int64_t left, std::int64_t right);

/// left − right, likewise.
[[nodiscard]] std::int64_t checkedDifference(std::int64_t left, std::int64_t right);

/// left × right, likewise.
[[nodiscard]] std::int64_t checkedProduct(std::int64_t left, std::int64_t right);

/// left + right, at most the greatest number: for estimates. Neither is negative.
[[nodiscard]] std::int64_t saturatedSum(std::int64_t left, std::int64_t right) noexcept;

/// left × right, likewise.
[[nodiscard]] std::int64_t saturatedProduct(std::int64_t left, std::int64_t right) noexcept;

} // namespace tallyroom
