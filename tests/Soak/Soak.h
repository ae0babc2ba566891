#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace tallyroom {

/// Shared by the programs that act at random for a while.
namespace Soak {

struct Run {
    std::chrono::seconds duration{60};
    std::uint64_t seed = 0;
};

/// Reads [SECONDS [SEED]], and prints a command line that repeats the run.
[[nodiscard]] Run begin(int argc, char** argv);

/// Aborts unless `holds`, and prints `what`.
void require(bool holds, const char* what);

[[nodiscard]] std::int64_t residentBytes();

[[nodiscard]] std::ptrdiff_t openDescriptors();

/// Waits until dropped scans have closed their descriptors: no more than `before` are open.
void waitForDescriptors(std::ptrdiff_t before);

} // namespace Soak

} // namespace tallyroom
