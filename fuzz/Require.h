#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

/// What libFuzzer calls with every input; returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace tallyroom {

/// Ends the run, which keeps the input, unless `holds`.
inline void require(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "Does not hold: %s\n", what);
        std::abort();
    }
}

[[nodiscard]] inline std::string bytes(const std::uint8_t* data, std::size_t size)
{
    return {data, data + size};
}

} // namespace tallyroom
