#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace tallyroom {

/// What the programs share that do something at random for a while.
namespace Soak {

struct Run {
    std::chrono::seconds duration{60};
    std::uint64_t seed = 0;
};

/// Reads [SECONDS [SEED]], and prints a command line that repeats the run.
[[nodiscard]] Run begin(int argc, char** argv);

/// Ends the program when `what` does not hold.
void require(bool holds, const char* what);

[[nodiscard]] std::int64_t residentBytes();

[[nodiscard]] std::ptrdiff_t openDescriptors();

/// Lets the scans that were dropped come to their end, as what they hold open tells: no more than `before`.
void waitForDescriptors(std::ptrdiff_t before);

} // namespace Soak

} // namespace tallyroom
