#include "Soak/Soak.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <thread>
#include <unistd.h>

namespace tallyroom {

Soak::Run Soak::begin(int argc, char** argv)
{
    Run run{.duration = {}, .seed = std::random_device{}()};
    run.duration = std::chrono::seconds{argc > 1 ? std::atol(argv[1]) : 60};
    if (argc > 2) {
        run.seed = std::strtoull(argv[2], nullptr, 10);
    }
    std::printf("%s %jd %ju\n", argv[0], std::intmax_t{run.duration.count()}, std::uintmax_t{run.seed});
    std::fflush(stdout);
    return run;
}

void Soak::require(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "Does not hold: %s\n", what);
        std::abort();
    }
}

std::int64_t Soak::residentBytes()
{
    std::ifstream file{"/proc/self/statm"};
    std::int64_t all = 0;
    std::int64_t resident = 0;
    file >> all >> resident;
    return resident * ::sysconf(_SC_PAGESIZE);
}

/// Without the account of its own that each worker keeps open.
std::ptrdiff_t Soak::openDescriptors()
{
    return std::ranges::count_if(
        std::filesystem::directory_iterator{"/proc/self/fd"}, [](const auto& descriptor) {
            std::error_code gone;
            return std::filesystem::read_symlink(descriptor.path(), gone).filename() != "schedstat";
        });
}

void Soak::waitForDescriptors(std::ptrdiff_t before)
{
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds{30};
    while (openDescriptors() > before && std::chrono::steady_clock::now() < limit) {
        std::this_thread::yield();
    }
    if (openDescriptors() > before) {
        for (const auto& descriptor : std::filesystem::directory_iterator{"/proc/self/fd"}) {
            std::error_code gone;
            std::fprintf(stderr, "%s\n", std::filesystem::read_symlink(descriptor.path(), gone).c_str());
        }
        require(false, "dropped scans close what they opened");
    }
}

} // namespace tallyroom
